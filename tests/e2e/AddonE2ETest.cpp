// The real add-on in the real host: through the C++ driver, and through the achost program.
#include "achost/ElfFile.hpp"

#include "HostTest.hpp"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

class AddonTest : public xn_test::SharedFolderTest {
protected:
    void Start(achost::Host& host) {
        std::string error;
        ASSERT_TRUE(host.Start(MORAVEL_LIBRARY, &error)) << error;
    }
    // Runs xn-settings VERB on the add-on's own settings file; returns what it printed.
    std::string Settings(const std::string& verb, const std::string& arguments) {
        std::filesystem::create_directories(temp.PathOf("Shared"));
        std::string output;
        xn_test::RunProgram(XN_SETTINGS_PROGRAM " " + verb + " " +
                                temp.PathOf("Shared/MoravelLibrary_190.cfg") + " " + arguments +
                                " 2>/dev/null",
                            &output);
        return output;
    }
};

TEST_F(AddonTest, ExportsExactlyTheFourEntryPoints) {
    achost::ElfFile file;
    std::string error;
    ASSERT_TRUE(file.Open(MORAVEL_LIBRARY, &error)) << error;
    const std::vector<std::string> expected = {"CheckEnvironment", "FreeData", "Initialize",
                                               "RegisterInterface"};
    EXPECT_EQ(expected, file.Exports());
}

TEST_F(AddonTest, RegistersItselfAndItsLibrary) {
    achost::Host host(options);
    Start(host);
    EXPECT_EQ("MoravelLibrary", host.AddonName());
    EXPECT_EQ("MoravelLibrary 19.0 (AC190)", host.AddonDescription());
    EXPECT_TRUE(host.BuiltInLibraryRegistered());
    ASSERT_NE(nullptr, host.RegisteredMenu());
    EXPECT_EQ(32501, host.RegisteredMenu()->resID);
    EXPECT_EQ(MenuCode_Extras, host.RegisteredMenu()->position);
    EXPECT_EQ(7u, host.Menus().size());
}

// Until a command of its own menu keeps it, the add-on is unloaded after each command; the Russian
// menu has no handler, so choosing its items keeps nothing.
TEST_F(AddonTest, StaysLoadedFromTheFirstCommandOfItsOwnMenu) {
    achost::Host host(options);
    Start(host);
    const struct {
        short menu;
        Int32 item;
        bool loadedAfter;
        int loads;
    } steps[] = {{32506, 1, false, 1}, {32506, 6, false, 2}, {32501, 2, true, 3}, {32506, 3, true, 3}};
    int step = 0;
    std::string error;
    for (const auto& s : steps) {
        SCOPED_TRACE("step " + std::to_string(++step));
        ASSERT_TRUE(host.ChooseMenuItem(s.menu, s.item, &error)) << error;
        EXPECT_EQ(s.loadedAfter, host.IsLoaded());
        EXPECT_EQ(s.loads, host.LoadCount());
    }
}

// The language dialog: each closing stores what it should in the add-on's own settings file.
TEST_F(AddonTest, LanguageDialogStoresOnlyAConfirmedChange) {
    const struct {
        const char* name;
        std::vector<std::string> lines;
        std::string stored;
    } cases[] = {
        {"Cancel after a selection", {"menu 3", "select 3 1", "click 2"}, ""},
        {"OK on the language in force", {"menu 3", "click 1"}, ""},
        {"OK on another language", {"menu 3", "select 3 1", "click 1"}, "ita\n"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        achost::Host host(options);
        Start(host);
        EXPECT_EQ("", xn_test::RunLines(host, c.lines));
        EXPECT_EQ(c.stored, Settings("get", "Language_str"));
    }
}

class AchostProgramTest : public xn_test::TempFolderTest {
protected:
    // Runs achost with no terminal; returns its exit code and what it printed on both streams.
    int Run(const std::string& arguments, std::string* output) {
        return xn_test::RunProgram(ACHOST_PROGRAM " --shared-folder " + temp.PathOf("Shared") + " " +
                                       arguments + " </dev/null 2>&1",
                                   output);
    }
};

TEST_F(AchostProgramTest, EachBadInputGetsOneMessageAndAnExitCode) {
    const std::string noAddon = temp.PathOf("none.so");
    const struct {
        const char* name;
        std::string arguments;
        int exitCode;
        std::string output;
    } cases[] = {
        {"wrong expectation", "--script " E2E_DIR "/failing/wrong_expectation.acs " MORAVEL_LIBRARY, 1,
         E2E_DIR
         "/failing/wrong_expectation.acs:4: expected menu 32501 item 1 \"About Something Else...\", saw "
         "\"About MoravelLibrary...\"\n"},
        {"unknown verb", "--script " E2E_DIR "/failing/unknown_verb.acs " MORAVEL_LIBRARY, 2,
         E2E_DIR "/failing/unknown_verb.acs:3: unknown verb 'jump' (help lists the actions)\n"},
        {"malformed line", "--script " E2E_DIR "/failing/malformed_line.acs " MORAVEL_LIBRARY, 2,
         E2E_DIR "/failing/malformed_line.acs:3: malformed 'expect menu' line; expected expect menu RESID "
                 "ITEM \"TEXT\" | expect menu RESID ITEM checked|unchecked\n"},
        {"missing script", "--script " + temp.PathOf("no.acs") + " " MORAVEL_LIBRARY, 2,
         temp.PathOf("no.acs") + ":0: cannot read the script\n"},
        {"missing add-on", noAddon, 2, "achost: cannot read " + noAddon + "\n"},
        {"not an add-on", ACHOST_API_LIBRARY, 2,
         "achost: " ACHOST_API_LIBRARY " is not an add-on: it does not export CheckEnvironment, "
         "RegisterInterface, Initialize, FreeData\n"},
        {"another host kind", "--host-kind 1 " MORAVEL_LIBRARY, 2,
         "achost: " MORAVEL_LIBRARY " did not register: CheckEnvironment answered 0\n"},
        {"unknown option", "--fast", 2,
         "usage: achost [--shared-folder DIR] [--host-kind N] [--command DEVID:LOCALID:CMD[:VERSION]]...\n"
         "              [--script FILE] [ADDON]\n"
         "       achost --list-menus [ADDON]\n"
         "       achost --help\n"},
        {"good script", "--script " E2E_DIR "/commands.acs " MORAVEL_LIBRARY, 0, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string output;
        EXPECT_EQ(c.exitCode, Run(c.arguments, &output));
        EXPECT_EQ(c.output, output);
    }
}

TEST_F(AchostProgramTest, QuitsCleanlyWhenInputEnds) {
    std::string output;
    EXPECT_EQ(0, Run(MORAVEL_LIBRARY, &output));
    EXPECT_EQ(0u,
              output.find("MoravelLibrary - MoravelLibrary 19.0 (AC190)\nmenu 32501 \"MoravelLibrary\" in "
                          "Design > Design Extras\n  1 [ ] About MoravelLibrary...\n"))
        << output;
}

} // namespace
