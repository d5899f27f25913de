// XN_General::URLDownload against real HTTP servers on 127.0.0.1, on libuv's default loop turned by
// the test as the host turns it.
#include "FaultServer.hpp"
#include "TempFolder.hpp"
#include "XN_General.hpp"

#include <gtest/gtest.h>
#include <uv.h>

#include <cstdlib>
#include <filesystem>

namespace {

const char kBody[] = "MoravelLibrary 19.0.5.2400 (AC190) 15/01/2019\n";

// What a callback was told, one letter per event: O opened, P progress, C completed, F failed.
struct Events {
    std::string seen;
    int answerToOpened = 0;
    double lastProgress = 0;

    static int Record(XN_URL_Message message, double progress, void* userData) {
        Events& events = *static_cast<Events*>(userData);
        events.seen += "FOPC?"[message == XN_URL_Failed      ? 0
                               : message == XN_URL_Opened    ? 1
                               : message == XN_URL_Progress  ? 2
                               : message == XN_URL_Completed ? 3
                                                             : 4];
        if (message == XN_URL_Progress)
            events.lastProgress = progress;
        return message == XN_URL_Opened ? events.answerToOpened : 0;
    }
};

// "OPPPC" as "OP*C": the progress events of a body counted apart.
std::string Shape(const std::string& seen) {
    std::string shape;
    for (char c : seen)
        if (c != 'P' || shape.empty() || shape.back() != '*')
            shape += c == 'P' ? '*' : c;
    return shape;
}

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
    bool Exists() const { return std::filesystem::exists(destination); }
    std::string Written() const { return xn_test::TempFolder::Read(destination); }

    std::string destination = temp.PathOf("__updxn__.tmp");
    xn_test::FaultServer server;
};

TEST_F(URLDownloadTest, EachServerBehaviourEndsInItsEvents) {
    const std::string big(5 * 1024 * 1024, 'x');
    const struct {
        const char* name;
        xn_test::Reply reply;
        std::string shape;
        std::string written;
    } cases[] = {
        {"a small body", {200, kBody}, "O*C", kBody},
        {"an empty body leaves an empty file", {200, ""}, "OC", ""},
        {"a 404 page is a body like any other", {404, "<h1>Not Found</h1>"}, "O*C", "<h1>Not Found</h1>"},
        {"a body cut off midway", {200, big, "", 100000}, "O*F", big.substr(0, 100000)},
        {"a 5 MiB body", {200, big}, "O*C", big},
        {"a slow trickle", {200, std::string(640, 't'), "", 0, 20}, "O*C", std::string(640, 't')},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        xn_test::FaultServer one;
        ASSERT_TRUE(one.Start([&](const std::string&) { return c.reply; }));
        Events events;
        ASSERT_TRUE(Download(one.Address() + "/update_plugins/versions16.txt", &events));
        EXPECT_EQ(c.shape, Shape(events.seen));
        EXPECT_EQ(c.written.size(), Written().size());
        EXPECT_TRUE(c.written == Written());
        if (events.seen.find('P') != std::string::npos) {
            EXPECT_EQ(0.5, events.lastProgress);
        }
    }
}

// Blocks are at most 16 KiB, each reported once: a 5 MiB body makes at least 320 progress events.
TEST_F(URLDownloadTest, ReportsEveryBlockOfAtMostSixteenKiB) {
    ASSERT_TRUE(server.Start([](const std::string&) {
        return xn_test::Reply{200, std::string(5 << 20, 'b')};
    }));
    Events events;
    ASSERT_TRUE(Download(server.Address() + "/big", &events));
    EXPECT_GE(std::count(events.seen.begin(), events.seen.end(), 'P'), 320);
    EXPECT_EQ(size_t(5 << 20), Written().size());
}

TEST_F(URLDownloadTest, ARefusedConnectionFailsWithoutOpening) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{}; }));
    const std::string address = server.Address();
    server.Stop();
    Events events;
    ASSERT_TRUE(Download(address + "/update_plugins/versions16.txt", &events));
    EXPECT_EQ("F", events.seen);
    EXPECT_FALSE(Exists());
}

TEST_F(URLDownloadTest, CancelAtOpenCreatesNoFileAndReportsNothingMore) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, kBody}; }));
    Events events;
    events.answerToOpened = 1;
    ASSERT_TRUE(Download(server.Address() + "/v.txt", &events));
    EXPECT_EQ("O", events.seen);
    EXPECT_FALSE(Exists());
}

TEST_F(URLDownloadTest, FollowsARedirectionWithoutTellingTheCaller) {
    ASSERT_TRUE(server.Start([](const std::string& path) {
        return path == "/moved.txt" ? xn_test::Reply{200, kBody} : xn_test::Reply{302, "", "/moved.txt"};
    }));
    Events events;
    ASSERT_TRUE(Download(server.Address() + "/update_plugins/versions16.txt", &events));
    EXPECT_EQ("OPC", events.seen);
    EXPECT_EQ(kBody, Written());
    EXPECT_EQ((std::vector<std::string>{"/update_plugins/versions16.txt", "/moved.txt"}), server.Paths());
}

// Escapes are undone and made again uniformly in UTF-8; the request names the add-on and its version.
TEST_F(URLDownloadTest, RequestsTheAddressUniformlyEscapedWithTheAddonsUserAgent) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, kBody}; }));
    Events events;
    ASSERT_TRUE(
        Download(server.Address() + "/update plugins/a%20b%2Fc\xC3\xA9%C3%A9.txt", &events));
    EXPECT_EQ((std::vector<std::string>{"/update%20plugins/a%20b/c%C3%A9%C3%A9.txt"}),
              server.Paths());
    EXPECT_EQ((std::vector<std::string>{"MoravelLibrary/19.0.4.2200"}), server.UserAgents());
}

TEST_F(URLDownloadTest, ReachesAnyHostThroughHttpProxy) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, kBody}; }));
    setenv("http_proxy", server.Address().c_str(), 1);
    Events events;
    const bool started = Download("http://update.moravel.example/update_plugins/versions16.txt", &events);
    unsetenv("http_proxy");
    ASSERT_TRUE(started);
    EXPECT_EQ("OPC", events.seen);
    EXPECT_EQ((std::vector<std::string>{"http://update.moravel.example/update_plugins/versions16.txt"}),
              server.Paths());
}

TEST_F(URLDownloadTest, StartsNothingForAnAddressItCannotFetch) {
    for (const char* url : {"", "ftp://127.0.0.1/versions16.txt", "no address", "http://127.0.0.1/%FF%FE"}) {
        SCOPED_TRACE(url);
        Events events;
        EXPECT_FALSE(Download(url, &events));
        EXPECT_EQ("", events.seen);
    }
    EXPECT_FALSE(Exists());
}

TEST_F(URLDownloadTest, ADestinationThatCannotBeCreatedFailsAfterOpening) {
    ASSERT_TRUE(server.Start([](const std::string&) { return xn_test::Reply{200, kBody}; }));
    destination = temp.PathOf("missing/folder/__updxn__.tmp");
    Events events;
    ASSERT_TRUE(Download(server.Address() + "/v.txt", &events));
    EXPECT_EQ("OF", events.seen);
}

} // namespace
