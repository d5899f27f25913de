// XN_General::URLDownload against real HTTP servers on 127.0.0.1, on libuv's default loop turned by
// the test as the host turns it.
#include "FaultServer.hpp"
#include "TempFolder.hpp"
#include "XN_General.hpp"

#include <uv.h>

#include <regex>

namespace {

const char kBody[] = "MoravelLibrary 19.0.5.2400 (AC190) 15/01/2019\n";

// An answer to Opened that first turns the run loop for a while, then lets the transfer go on.
const int kTurnTheLoop = -1;

// What a callback was told, one letter per event: O opened, P progress, C completed, F failed.
struct Events {
    std::string seen;
    int answerToOpened = 0;
    double lastProgress = 0;

    static int Record(XN_URL_Message message, double progress, void* userData) {
        Events& events = *static_cast<Events*>(userData);
        events.seen += message >= XN_URL_Opened && message <= XN_URL_Completed ? "OFPC"[message] : '?';
        if (message == XN_URL_Progress)
            events.lastProgress = progress;
        if (message == XN_URL_Opened && events.answerToOpened == kTurnTheLoop) { // as a modal dialog would
            const uint64_t until = uv_now(uv_default_loop()) + 300;
            while (uv_now(uv_default_loop()) < until)
                uv_run(uv_default_loop(), UV_RUN_NOWAIT), uv_update_time(uv_default_loop());
            return 0;
        }
        return message == XN_URL_Opened ? events.answerToOpened : 0;
    }
};

class URLDownloadTest : public xn_test::TempFolderTest {
protected:
    // Runs one download to its end; false when it did not start.
    bool Download(const std::string& url, Events* events) {
        const bool started =
            XN_General::URLDownload(XN_String(url.c_str(), XN_String::Encoding_UTF8),
                                    XN_Location(XN_String(destination.c_str())), Events::Record, events);
        uv_run(uv_default_loop(), UV_RUN_DEFAULT); // returns once the transfer has let go of the loop
        EXPECT_EQ(0, uv_loop_alive(uv_default_loop()));
        return started;
    }

    std::string destination = temp.PathOf("__updxn__.tmp");
    xn_test::FaultServer server;
};

// Each row: what the server does, the events in order (progress events counted apart as "*"), the
// least number of progress events (blocks of at most 16 KiB), and what is on disk afterwards.
TEST_F(URLDownloadTest, EachServerBehaviourEndsInItsEvents) {
    const std::string big(5 << 20, 'x');
    const char* kNoFile = "(no file)";
    const struct {
        const char* name;
        xn_test::Reply reply;
        std::string shape;
        long blocks;
        std::string written;
        int answerToOpened = 0;
        bool refused = false;
        const char* destination = "__updxn__.tmp";
    } cases[] = {
        {"a small body", {200, kBody}, "O*C", 1, kBody},
        {"an empty body leaves an empty file", {200, ""}, "OC", 0, ""},
        {"a 404 page is a body like any other", {404, "<h1>Not Found</h1>"}, "O*C", 1, "<h1>Not Found</h1>"},
        {"a body cut off stays as it came", {200, big, "", 100000}, "O*F", 1, big.substr(0, 100000)},
        {"a 5 MiB body", {200, big}, "O*C", 320, big},
        {"a slow trickle", {200, std::string(640, 't'), "", 0, 20}, "O*C", 1, std::string(640, 't')},
        {"a redirection, followed without a word", {302, "", "/moved.txt"}, "O*C", 1, kBody},
        {"a refused connection never opens", {200, kBody}, "F", 0, kNoFile, 0, true},
        {"cancel at open creates no file", {200, kBody}, "O", 0, kNoFile, 1},
        {"a body that comes while Opened turns the loop", {200, big}, "O*C", 320, big, kTurnTheLoop},
        {"a destination that cannot be made", {200, kBody}, "OF", 0, kNoFile, 0, false, "none/f.tmp"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        xn_test::FaultServer one;
        ASSERT_TRUE(one.Start([&](const std::string& path) {
            return path == "/moved.txt" ? xn_test::Reply{200, kBody} : c.reply;
        }));
        if (c.refused)
            one.Stop();
        destination = temp.PathOf(c.destination);
        Events events;
        events.answerToOpened = c.answerToOpened;
        ASSERT_TRUE(Download(one.Address() + "/update_plugins/versions16.txt", &events));
        EXPECT_EQ(c.shape, std::regex_replace(events.seen, std::regex("P+"), "*"));
        EXPECT_GE(std::count(events.seen.begin(), events.seen.end(), 'P'), c.blocks);
        const std::string onDisk = std::filesystem::exists(destination) ? temp.Read(destination) : kNoFile;
        EXPECT_TRUE(c.written == onDisk) << onDisk.size() << " bytes on disk"; // not printed: up to 5 MiB
        EXPECT_EQ(events.seen.find('P') != std::string::npos ? 0.5 : 0.0, events.lastProgress);
        std::filesystem::remove(destination);
    }
}

// Escapes are undone and made again uniformly in UTF-8; the request names the add-on and its version.
TEST_F(URLDownloadTest, RequestsTheAddressUniformlyEscapedWithTheAddonsUserAgentOrNothing) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, kBody}; }));
    Events events;
    ASSERT_TRUE(Download(server.Address() + "/update plugins/a%20b%2Fc\xC3\xA9%C3%A9.txt", &events));
    EXPECT_EQ((std::vector<std::string>{"/update%20plugins/a%20b/c%C3%A9%C3%A9.txt"}), server.Paths());
    EXPECT_EQ((std::vector<std::string>{"MoravelLibrary/19.0.4.2200"}), server.UserAgents());
    std::filesystem::remove(destination);
    // An address that cannot be fetched starts nothing.
    for (const char* url : {"", "ftp://127.0.0.1/versions16.txt", "no address", "http://127.0.0.1/%FF%FE"}) {
        SCOPED_TRACE(url);
        Events none;
        EXPECT_FALSE(Download(url, &none));
        EXPECT_EQ("", none.seen);
    }
    EXPECT_FALSE(std::filesystem::exists(destination));
}

} // namespace
