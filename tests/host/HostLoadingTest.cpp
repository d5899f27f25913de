// The host's loading protocol and menus, against the fixture add-ons (real modules, really loaded).
#include "HostTest.hpp"

#include <tuple>

namespace {

class HostTest : public ::testing::Test {
protected:
    std::string ItemText(const achost::Host& host, short menu, size_t item) {
        const achost::Menu* found = host.FindMenu(menu);
        return found != nullptr && item <= found->items.size() ? found->items[item - 1].text : "<none>";
    }
    // The texts of the registered menu's items, marked " [x]" when checked and " (disabled)".
    std::vector<std::string> Items(const achost::Host& host) {
        std::vector<std::string> items;
        for (const auto& item : host.RegisteredMenu()->items)
            items.push_back(item.text + ((item.flags & API_MenuItemChecked) != 0 ? " [x]" : "") +
                            ((item.flags & API_MenuItemDisabled) != 0 ? " (disabled)" : ""));
        return items;
    }
};

// The real add-on and the achost program cover a missing file, a library without the entry points and
// another host kind.
// Without its resources an add-on's registration fails; the host says why, not only the code.
TEST_F(HostTest, RefusesWhatCannotRun) {
    xn_test::TempFolder temp;
    const std::string stripped = temp.PathOf("stripped.so");
    std::string output;
    ASSERT_EQ(0, xn_test::RunProgram(
                     "objcopy --remove-section .achost.resources " FIXTURE_GOOD " " + stripped, &output));
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"declines to register", FIXTURE_DECLINES,
         FIXTURE_DECLINES " did not register: CheckEnvironment answered 0"},
        {"Initialize fails", FIXTURE_FAILS_INITIALIZE,
         "Initialize of " FIXTURE_FAILS_INITIALIZE
         " failed with error 0x81060001 (APIERR_GENERAL, a general failure)"},
        {"text file", FIXTURE_GRC, FIXTURE_GRC " is not a shared library (no ELF header)"},
        {"no resources", stripped,
         "RegisterInterface of " + stripped +
             " failed with error 0x81060065 (APIERR_BADID, a resource, menu or item ID that does not exist): "
             "the add-on carries no resources (its library has no "
             ".achost.resources section), so none of its menus and texts exist"},
    };
    for (const auto& [name, path, expected] : cases) {
        SCOPED_TRACE(name);
        achost::Host host(xn_test::StrictOptions());
        std::string error;
        EXPECT_FALSE(host.Start(path, &error));
        EXPECT_EQ(expected, error);
        EXPECT_FALSE(host.IsStarted());
        EXPECT_FALSE(host.IsLoaded());
        EXPECT_EQ(nullptr, host.RegisteredMenu());
    }
}

// A reload starts a new run with the menus as the resources made them.
TEST_F(HostTest, MenusComeFromTheResourcesReachTheirOwnHandlersAndUnloadUntilKept) {
    achost::Host host(xn_test::StrictOptions());
    ASSERT_TRUE(xn_test::Started(host, FIXTURE_GOOD));
    EXPECT_EQ("Fixture", host.AddonName());
    EXPECT_EQ("Café \"quoted\"", host.AddonDescription());
    const achost::Menu* menu = host.RegisteredMenu();
    ASSERT_NE(nullptr, menu);
    EXPECT_EQ(32500, menu->resID);
    EXPECT_EQ(MenuCode_Extras, menu->position);
    EXPECT_EQ("Fixture", menu->title);
    const std::vector<std::string> fresh = {"Count", "Keep", "Toggle [x]", "Release", "Grayed (disabled)"};
    EXPECT_EQ(fresh, Items(host));
    EXPECT_EQ(1, host.LoadCount());
    EXPECT_TRUE(host.IsLoaded());
    // The module is really unloaded between commands until it asks to be kept: its static counter
    // starts again after each reload.
    const std::tuple<Int32, const char*, bool, int> steps[] = {
        {1, "Commands since load: 1", false, 1}, {1, "Commands since load: 1", false, 2},
        {2, "Commands since load: 1", true, 3},  {1, "Commands since load: 1", true, 3},
        {1, "Commands since load: 2", true, 3},  {4, "Commands since load: 2", false, 3},
        {1, "Commands since load: 1", false, 4},
    };
    int step = 0;
    std::string error;
    for (const auto& [item, countText, loadedAfter, loads] : steps) {
        SCOPED_TRACE("step " + std::to_string(++step));
        ASSERT_TRUE(host.ChooseMenuItem(item, &error)) << error;
        EXPECT_EQ(countText, ItemText(host, 32500, 1));
        EXPECT_EQ(loadedAfter, host.IsLoaded());
        EXPECT_EQ(loads, host.LoadCount());
    }
    ASSERT_TRUE(host.ChooseMenuItem(2, &error) && host.ChooseMenuItem(1, &error)) << error;
    ASSERT_TRUE(host.ChooseMenuItem(3, &error) && host.ChooseMenuItem(32501, 2, &error)) << error;
    EXPECT_EQ("Second was chosen", ItemText(host, 32501, 1));
    EXPECT_EQ((std::vector<std::string>{"Commands since load: 1", "Keep", "Toggle", "Release",
                                        "Grayed (disabled)"}),
              Items(host));
    ASSERT_TRUE(host.ChooseMenuItem(32502, 1, &error)) << error; // no handler: nothing happens
    EXPECT_EQ("Only", ItemText(host, 32502, 1));
    ASSERT_TRUE(host.Reload(&error)) << error;
    EXPECT_EQ(fresh, Items(host));
    ASSERT_TRUE(host.ChooseMenuItem(1, &error)) << error;
    EXPECT_EQ("Commands since load: 1", ItemText(host, 32500, 1));
    const std::tuple<short, Int32, const char*> refused[] = {{32500, 5, "item 5 of menu 32500 is disabled"},
                                                             {32500, 6, "menu 32500 has no item 6"},
                                                             {32500, 0, "menu 32500 has no item 0"},
                                                             {32700, 1, "the add-on has no menu 32700"}};
    for (const auto& [menu, item, expected] : refused) {
        SCOPED_TRACE(expected);
        EXPECT_FALSE(host.ChooseMenuItem(menu, item, &error));
        EXPECT_EQ(expected, error);
    }
}

TEST_F(HostTest, AnAddonThatStaysMappedAfterItsUnloadIsReported) {
    std::vector<std::string> violations;
    achost::Host host(xn_test::StrictOptions(&violations));
    ASSERT_TRUE(xn_test::Started(host, FIXTURE_STAYS_MAPPED));
    host.Quit();
    EXPECT_EQ(std::vector<std::string>{"dlclose: " FIXTURE_STAYS_MAPPED
                                       " stays in memory (a thread_local object with a destructor holds it)"},
              violations);
}

TEST_F(HostTest, CallsInTheWrongStateAreReportedByName) {
    std::vector<std::string> violations;
    achost::Host host(xn_test::StrictOptions(&violations));
    ASSERT_TRUE(xn_test::Started(host, FIXTURE_MISBEHAVES));
    const std::vector<std::string> expected = {"ACAPI_Interface: not allowed in RegisterInterface",
                                               "ACAPI_Register_Menu: not allowed in Initialize"};
    EXPECT_EQ(expected, violations);
    EXPECT_EQ(expected, host.Violations());
    EXPECT_EQ("Count", ItemText(host, 32500, 1));
    EXPECT_FALSE(host.FindMenu(32501)->registered);
}

} // namespace
