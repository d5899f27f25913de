// The dialog manager, alerts and add-on commands, driven through the host's front ends against the
// dialog fixture add-on (fixtures/DialogAddon.cpp; its menu item 10 logs the messages its dialogs get).
// Sessions that only act and expect, such as closing a dialog each way, are in scripts/dialogs.acs.
#include "HostTest.hpp"

#include <uv.h>

#include <sstream>
#include <tuple>

namespace {

class DialogTest : public ::testing::Test {
protected:
    // Starts the fixture in a new host whose add-on errors fail the test, unless `collected` takes them.
    void Start(std::vector<std::string>* collected = nullptr) {
        host.reset(); // one host at a time
        host = std::make_unique<achost::Host>(xn_test::StrictOptions(collected));
        ASSERT_TRUE(xn_test::Started(*host, FIXTURE_DIALOGS));
    }
    // Runs the lines as one session; returns the failure that ended it, or "".
    std::string Run(const std::vector<std::string>& lines,
                    std::function<void(const achost::Host&)> onWait = nullptr) {
        return xn_test::RunLines(*host, lines, std::move(onWait));
    }
    std::unique_ptr<achost::Host> host;
};

// The list's layout, which the terminal does not show (TerminalShowsTheFrontDialog shows the rest of
// what the resource and the init calls built); each opening gets a dialog ID of its own.
TEST_F(DialogTest, BuildsTheListLayoutFromTheInitCallsInANewDialogEachTime) {
    Start();
    achost::DialogItem list;
    std::set<short> ids;
    ASSERT_EQ("", Run({"menu 1", "click 1", "menu 1", "click 1"}, [&](const achost::Host& h) {
                  if (h.FrontDialog() != nullptr) {
                      list = h.FrontDialog()->items.at(3);
                      ids.insert(h.FrontDialog()->id);
                  }
              }));
    EXPECT_EQ(2u, ids.size());
    EXPECT_EQ(2, list.tabFields);
    EXPECT_EQ(30, list.rowHeight);
    EXPECT_EQ(32600, list.rows.at(1).icon);
}

// Work scheduled on the main run loop goes on while a modal dialog waits for the user.
TEST_F(DialogTest, TheRunLoopTurnsInsideAModalDialog) {
    Start();
    uv_timer_t timer;
    ASSERT_EQ(0, uv_timer_init(uv_default_loop(), &timer));
    int fired = 0, waitsInDialog = 0;
    timer.data = &fired;
    const auto startTimerInDialog = [&](const achost::Host& h) {
        if (h.FrontDialog() != nullptr && waitsInDialog++ == 0)
            uv_timer_start(
                &timer, [](uv_timer_t* t) { ++*static_cast<int*>(t->data); }, 0, 0);
    };
    EXPECT_EQ("", Run({"menu 1", "expect dialog 32600", "expect dialog 32600"}, startTimerInDialog));
    EXPECT_EQ(3, waitsInDialog);
    EXPECT_EQ(1, fired);
    uv_close(reinterpret_cast<uv_handle_t*>(&timer), nullptr);
    uv_run(uv_default_loop(), UV_RUN_NOWAIT);
}

// A failed expectation or an impossible action ends the session; the open dialog is closed with its
// close box so the add-on's command returns.
TEST_F(DialogTest, FailuresNameWhatWasShownAndEndTheSession) {
    const std::tuple<const char*, std::string> cases[] = {
        {"expect dialog 32700", "expected dialog 32700, saw dialog 32600 \"Fixture title\""},
        {"expect title \"Other\"", "expected title \"Other\", saw \"Fixture title\""},
        {"expect item 3 \"Bye\"", "expected item 3 of dialog 32600 \"Bye\", saw \"Hello\""},
        {"expect item 8 shown", "expected item 8 of dialog 32600 shown, saw hidden"},
        {"expect item 2 disabled", "expected item 2 of dialog 32600 disabled, saw enabled"},
        {"expect list 4 rows 2", "expected list 4 rows 2, saw 3"},
        {"expect list 4 selected 1", "expected list 4 selected 1, saw 2"},
        {"expect list 3 rows 1", "item 3 of dialog 32600 is a LeftText, not a list"},
        {"click 9", "item 9 of dialog 32600 is disabled"},
        {"click 8", "item 8 of dialog 32600 is hidden"},
        {"click 12", "dialog 32600 has 9 items, not 12"},
        {"select 1 1", "item 1 of dialog 32600 is a Button, not a list"},
        {"select 4 4", "list 4 of dialog 32600 has 3 rows, not 4"},
        {"menu 2", "'menu 2' is not possible while dialog 32600 is open"},
        {"ok", "'ok' needs an open alert, and none is open"},
    };
    for (const auto& [line, failure] : cases) {
        SCOPED_TRACE(line);
        Start();
        EXPECT_EQ("driver:2: " + failure, Run({"menu 1", line, "click 1"}));
        EXPECT_TRUE(host->Dialogs().empty());
        EXPECT_EQ("init;close 2", host->FindMenu(32500)->items[9].text);
    }
    // An open alert refuses dialog actions.
    Start();
    EXPECT_EQ("driver:2: 'click 1' is not possible while an alert is open", Run({"menu 4", "click 1"}));
    EXPECT_EQ(nullptr, host->OpenAlert());
}

TEST_F(DialogTest, WrongCallsAreReportedWithTheCallsName) {
    std::vector<std::string> reported;
    Start(&reported);
    EXPECT_EQ("", Run({"menu 2", "click 1"}));
    const std::vector<std::string> expected = {
        "DGSetItemText: no dialog 77 is open",
        "DGSetItemText: dialog 1 ('GDLG' 32600) has no item 42",
        "DGListSetItemText: item 1 of dialog 1 is a Button, not a list",
        "DGListSetItemText: list 4 of dialog 1 has 3 rows, not row 9",
        "DGEnableDraw: the drawing of item 4 of dialog 1 was not suspended",
        "DGListSetItemIcon: no 'GICN' 999 in resource module 1",
        "DGListSetTabItemText: the list has 2 tab fields, not field 3",
        "DGEnableDraw: dialog 1 closed with the drawing of item 4 still suspended",
        "DGModalDialog: the add-on has no 'GDLG' 32599",
    };
    EXPECT_EQ(expected, reported);
}

// The palette registers as a modeless window once (a second registration is refused) until it
// closes; one that closes still registered is reported.
TEST_F(DialogTest, ModelessPaletteLivesBesideTheMenusUntilClosed) {
    const std::tuple<const char*, std::vector<std::string>, std::vector<std::string>> cases[] = {
        {"its own button closes it",
         {"menu 7", "click 1",
          "expect menu 32500 10 \"palette init 0 81060065;palette click 1;palette close 0\""},
         {}},
        {"close box",
         {"close", "expect menu 32500 10 \"palette init 0 81060065;palette click -1;palette close 0\""},
         {}},
        {"left open when the host quits", {"expect menu 32500 10 \"palette init 0 81060065\""}, {}},
        {"closed still registered",
         {"click 2", "click 1"},
         {"ACAPI_UnregisterModelessWindow: dialog 1 closed while still registered as a modeless window"}},
    };
    for (const auto& [name, actions, expectedReported] : cases) {
        SCOPED_TRACE(name);
        std::vector<std::string> reported;
        Start(&reported);
        std::vector<std::string> lines = {"menu 3", "expect menu 32500 3 \"open 1 visible 1\"",
                                          "expect dialog 32601"};
        lines.insert(lines.end(), actions.begin(), actions.end());
        EXPECT_EQ("", Run(lines));
        host->Quit();
        EXPECT_TRUE(host->Dialogs().empty());
        EXPECT_EQ(expectedReported, reported);
    }
    // A palette outlives the command only in an add-on that stays loaded; otherwise the host closes it before
    // the unload and says why.
    std::vector<std::string> reported;
    Start(&reported);
    EXPECT_EQ("", Run({"menu 9"}));
    EXPECT_EQ(
        std::vector<std::string>{
            "ACAPI_KeepInMemory: the add-on left a dialog open and was not kept in memory"},
        reported);
    EXPECT_TRUE(host->Dialogs().empty());
    EXPECT_FALSE(host->IsLoaded());
}

TEST_F(DialogTest, TerminalShowsTheFrontDialog) {
    Start();
    std::istringstream in("menu 1\nselect 4 3\n9\n1\n");
    std::ostringstream out;
    achost::TerminalFrontEnd terminal(in, out);
    achost::RunSession(*host, terminal);
    EXPECT_NE(std::string::npos, out.str().find("dialog 32600 \"Fixture title\" (Modal, 483 x 282)\n"
                                                "  1 Button \"OK\"\n"
                                                "  2 Button \"Cancel\"\n"
                                                "  3 LeftText \"selected 3\"\n"
                                                "  4 SingleSelList, 3 rows\n"
                                                "      1 \"one\" \"A\"\n"
                                                "      2 [Dot] \"two\" \"B\"\n"
                                                "    > 3 \"three\" \"C\"\n"
                                                "  5 CheckBox \"Check\" [x]\n"
                                                "  6 Icon \"\" icon 32600\n"
                                                "  7 Button \"Stay\"\n"
                                                "  9 RightText \"Right\"  (disabled)\n> "))
        << out.str();
    EXPECT_NE(std::string::npos, out.str().find("\n> item 9 of dialog 32600 is disabled\n"))
        << "a bare number clicks";
    EXPECT_EQ("closed with 1", host->FindMenu(32500)->items[0].text);
}

TEST(DeclaredCommandTest, IsReadStrictly) {
    achost::DeclaredCommand parsed;
    ASSERT_TRUE(achost::ParseDeclaredCommand("1:2:SUIT", &parsed));
    EXPECT_EQ(1, parsed.version) << "the version is 1 unless given";
    ASSERT_TRUE(achost::ParseDeclaredCommand("4294967295:0:ab d:3", &parsed));
    EXPECT_EQ(4294967295u, parsed.module.developerID);
    EXPECT_EQ(0, parsed.module.localID);
    EXPECT_EQ(GSType('ab d'), parsed.command);
    EXPECT_EQ(3, parsed.version);
    for (const char* text :
         {"4294967296:0:SUIT", "1:2:SUI", "1:2:SUITE", "1:2:SUIT:0", "1:2:SUIT:", "-1:2:SUIT", "1:SUIT"})
        EXPECT_FALSE(achost::ParseDeclaredCommand(text, &parsed)) << text;
}

} // namespace
