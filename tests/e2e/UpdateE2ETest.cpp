// The update check of the real add-on in the real host, against HTTP servers on 127.0.0.1 that stand
// in for the vendor's update server through http_proxy.
#include "FaultServer.hpp"
#include "HostTest.hpp"

#include <ctime>
#include <tuple>

namespace {

const std::string kNamed = "MoravelLibrary ";
const std::string kOwnLine = kNamed + "19.0.4.2200 (AC190) 03/08/2018";
const std::string kNewerLine = kNamed + "19.0.4.2200 (AC190) 04/08/2018\n";
const std::string kVersionsAddress = "http://update.moravel.example/update_plugins/versions16.txt";
const std::string kUnreachable =
    "The update server cannot be reached. Check your Internet connection and try again later.";

class UpdateTest : public xn_test::SharedFolderTest {
protected:
    // Serves `reply` to every request, through http_proxy.
    void Serve(const xn_test::Reply& reply) {
        ASSERT_TRUE(server.Start([reply](const std::string&) { return reply; }));
        setenv("http_proxy", server.Address().c_str(), 1);
    }
    // Runs one host session of `lines`; returns the failure that ended it, or "".
    std::string Run(const std::vector<std::string>& lines) {
        achost::Host host(options);
        return xn_test::Started(host, MORAVEL_LIBRARY) ? xn_test::RunLines(host, lines) : "not started";
    }
    size_t Requests() { return server.Paths().size(); }

    xn_test::FaultServer server;
};

// A check from the menu (the first command: it runs exactly one check) and what its dialog says.
TEST_F(UpdateTest, TheResultDialogTellsWhetherTheServerHasANewerRelease) {
    const std::tuple<const char*, xn_test::Reply, bool> cases[] = {
        {"the same line", {200, kOwnLine + "\n"}, false},
        {"a later date only", {200, kNewerLine}, true},
        {"a higher number with an older date", {200, kNamed + "19.0.9.9999 (AC190) 01/01/2018\n"}, false},
        {"no matching line", {200, "OtherAddon 19.0.5.1 (AC190) 01/01/2020\nMoravel 01/01/2020\n"}, false},
        {"another host tag", {200, kNamed + "20.0.1.1000 (AC200) 01/01/2020\n"}, false},
        {"another major number", {200, kNamed + "20.0.1.1000 (AC190) 01/01/2020\n"}, false},
        {"several matching lines, one later",
         {200, kOwnLine + "\r\n" + kNamed + "19.1.0.1 (AC190) 01/09/2018\n" + kNamed +
                   "19.0.0.1 (AC190) 01/01/2017\n"},
         true},
        {"an empty body", {200, ""}, false},
        {"a redirection followed", {302, "", "http://moved.example/v.txt"}, false},
    };
    for (const auto& [name, reply, isNewer] : cases) {
        SCOPED_TRACE(name);
        xn_test::FaultServer one;
        ASSERT_TRUE(one.Start([&reply = reply](const std::string& path) {
            return path == "http://moved.example/v.txt" ? xn_test::Reply{200, kOwnLine} : reply;
        }));
        setenv("http_proxy", one.Address().c_str(), 1);
        EXPECT_EQ("", Run({"menu 4", "expect dialog 32755 hidden", "wait download",
                           "expect dialog 32755 shown", "expect title \"MoravelLibrary\"",
                           isNewer ? "expect item 3 \"A newer release is available.\""
                                   : "expect item 3 \"You have the latest release.\"",
                           isNewer ? "expect item 4 \"A newer release of MoravelLibrary is available.\""
                                   : "expect item 4 \"MoravelLibrary is up to date.\"",
                           isNewer ? "expect item 5 enabled" : "expect item 5 disabled",
                           "expect item 6 \"The latest Moravel library is on the updates page.\"",
                           "expect item 7 \"Check Library\""}));
        EXPECT_EQ(kVersionsAddress, one.Paths().at(0));
        EXPECT_EQ(reply.status == 302 ? 2u : 1u, one.Paths().size());
        EXPECT_FALSE(std::filesystem::exists(temp.PathOf("Shared/__updxn__.tmp")));
        EXPECT_EQ("", Settings("get", "AutoUpdate")) << "an automatic check ran after the manual one";
    }
}

// The dialog speaks the chosen language. Items 5 and 7 open the updates page with the host release,
// the language and the add-on (item 7 adds the literal "Unknown" for the library); item 1 opens the
// vendor's site. Each closes the dialog.
TEST_F(UpdateTest, TheDialogsButtonsOpenTheVendorsPages) {
    const std::string page = "http://update.moravel.example/update_plugins/updates.htm?acver=19";
    const std::tuple<const char*, std::string, int, std::string, std::vector<std::string>> cases[] = {
        {"item 5 in Italian",
         "ita",
         5,
         page + "&lang=0&addon=MoravelLibrary",
         {"expect item 1 \"Visita il sito web\"", "expect item 3 \"È disponibile una nuova versione.\"",
          "expect item 4 \"È disponibile una nuova versione di MoravelLibrary.\"",
          "expect item 5 \"Scarica l'aggiornamento\"", "expect item 7 \"Verifica la libreria\""}},
        {"item 7 in French", "fra", 7, page + "&lang=2&addon=MoravelLibrary&lib=Unknown", {}},
        {"item 1", "int", 1, "http://www.moravel.example", {}},
    };
    Serve({200, kNewerLine});
    for (const auto& [name, language, item, opened, texts] : cases) {
        SCOPED_TRACE(name);
        Settings("set", "Language_str " + language);
        achost::Host host(options);
        ASSERT_TRUE(xn_test::Started(host, MORAVEL_LIBRARY));
        std::vector<std::string> lines = {"menu " + std::to_string(host.RegisteredMenu()->resID) + " 4",
                                          "wait download"};
        lines.insert(lines.end(), texts.begin(), texts.end());
        lines.insert(lines.end(), {"click " + std::to_string(item), "expect dialog 32755 closed"});
        EXPECT_EQ("", xn_test::RunLines(host, lines));
        EXPECT_EQ(std::vector<std::string>{opened}, host.Opened());
    }
}

// Each failure of the transfer ends in the one alert; the dialog made for the check is closed.
TEST_F(UpdateTest, ATransferThatFailsEndsInTheUnreachableAlert) {
    const std::tuple<const char*, bool, xn_test::Reply> cases[] = {
        {"connection refused", true, {}},
        {"cut off mid-body", false, {200, std::string(100000, 'x'), "", 5000}},
    };
    for (const auto& [name, refuse, reply] : cases) {
        SCOPED_TRACE(name);
        xn_test::FaultServer one;
        ASSERT_TRUE(one.Start([&reply = reply](const std::string&) { return reply; }));
        setenv("http_proxy", one.Address().c_str(), 1);
        if (refuse)
            one.Stop();
        EXPECT_EQ("", Run({"menu 4", "wait download", "expect alert \"" + kUnreachable + "\" \"\"", "ok",
                           "expect dialog 32755 closed"}));
    }
}

// A modal dialog or an alert opened while the transfer runs keeps the run loop turning: the transfer
// completes under it and its result dialog is there when the modal one closes. Cancel closes the
// result dialog; the next check makes a dialog of its own, hidden until it ends.
TEST_F(UpdateTest, EveryCheckMakesItsOwnDialogAndCompletesUnderAModalOne) {
    Serve({200, kOwnLine + "\n", "", 0, 20});
    EXPECT_EQ("", Run({"menu 4", "menu 3", "expect dialog 32734", "wait download",
                       "expect dialog 32755 shown", "expect dialog 32734", "click 2", "expect dialog 32755",
                       "expect item 4 \"MoravelLibrary is up to date.\"", "click 2",
                       "expect dialog 32755 closed", "menu 4", "expect dialog 32755 hidden", "wait download",
                       "close", "expect dialog 32755 closed"}));
    EXPECT_EQ("", Run({"menu 4", "menu 6", "click 16", "answer save \"report\"", "wait download",
                       "expect dialog 32755 shown", "ok", "answer save cancel", "click 1",
                       "expect item 4 \"MoravelLibrary is up to date.\""}));
    EXPECT_EQ(3u, Requests());
}

// The automatic check after the first command: 14 days after the last start at the earliest.
TEST_F(UpdateTest, TheAutomaticCheckWaitsFourteenDays) {
    const long day = 86400;
    // age: seconds since the stored start, -1 when none is stored; stored: AutoUpdate afterwards;
    // dialog: an automatic check shows only a newer release
    const std::tuple<const char*, std::string, long, size_t, std::string, std::string, std::string> cases[] =
        {
            {"the first run only switches automatic checks on", "", -1, 0, "1\n", "closed", kOwnLine},
            {"13 days after the last check", "1", 13 * day, 0, "1\n", "closed", kOwnLine},
            {"14 days after the last check", "1", 14 * day, 1, "1\n", "hidden", kOwnLine},
            {"never checked before, a newer release", "1", -1, 1, "1\n", "shown", kNewerLine},
            {"switched off", "0", -1, 0, "0\n", "closed", kOwnLine},
            {"any other value disables it", "2", -1, 0, "2\n", "closed", kOwnLine},
        };
    std::string served;
    ASSERT_TRUE(server.Start([&served](const std::string&) { return xn_test::Reply{200, served}; }));
    setenv("http_proxy", server.Address().c_str(), 1);
    for (const auto& [name, autoUpdate, age, requests, stored, dialog, reply] : cases) {
        SCOPED_TRACE(name);
        served = reply + "\n";
        std::filesystem::remove(temp.PathOf("Shared/MoravelLibrary_190.cfg"));
        if (!autoUpdate.empty())
            Settings("set", "AutoUpdate " + autoUpdate);
        if (age >= 0)
            Settings("set", "LastUpdateCheck_190 " + std::to_string(std::time(nullptr) - age));
        const size_t before = Requests();
        const time_t start = std::time(nullptr);
        EXPECT_EQ("", Run({"menu 2", "wait download", "expect dialog 32755 " + dialog}));
        EXPECT_EQ(requests, Requests() - before);
        EXPECT_EQ(stored, Settings("get", "AutoUpdate"));
        const long stamp = std::atol(Settings("get", "LastUpdateCheck_190").c_str());
        if (requests != 0) {
            EXPECT_GE(stamp, start);
        }
    }
}

// Item 5 flips the marks of all seven language menus and the stored value; "2" leaves the marks alone.
TEST_F(UpdateTest, TheSwitchFlipsTheMarkOfEveryLanguageMenu) {
    Serve({200, kOwnLine + "\n"});
    const auto marks = [](const std::string& state) {
        std::vector<std::string> lines;
        for (int menu = 32500; menu <= 32506; ++menu)
            lines.push_back("expect menu " + std::to_string(menu) + " 5 " + state);
        return lines;
    };
    std::vector<std::string> lines = marks("checked");
    lines.push_back("menu 5");
    for (const std::string& line : marks("unchecked"))
        lines.push_back(line);
    EXPECT_EQ("", Run(lines));
    EXPECT_EQ("0\n", Settings("get", "AutoUpdate"));
    // Switched on by the first command, the automatic check runs right after it.
    EXPECT_EQ(
        "", Run({"expect menu 32503 5 unchecked", "menu 5", "expect menu 32506 5 checked", "wait download"}));
    EXPECT_EQ("1\n", Settings("get", "AutoUpdate"));
    EXPECT_EQ(1u, Requests());
    Settings("set", "AutoUpdate 2");
    EXPECT_EQ("", Run(marks("unchecked")));
}

} // namespace
