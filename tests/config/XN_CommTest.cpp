// The suite's marker files, the presence test of the suite and the add-on identifiers.
#include "SettingsTestSupport.hpp"

#include "XN_Comm.hpp"
#include "achost/Host.hpp"

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

namespace xn_test {
namespace {

// This host reports release 19.
const char* const kOwnMarker = "MoravelLibrary_190_19.sui";
const char* const kSuiteMarker = "Moravel_AC19.sui";

class CommTest : public SharedFolderTest {
protected:
    std::set<std::string> FolderEntries() const {
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(temp.Path()))
            names.insert(entry.path().filename().string());
        return names;
    }
};

TEST_F(CommTest, MarkersOfTheRunningReleaseAmongOthers) {
    const std::set<std::string> others = {
        kSuiteMarker, "MoravelLibrary_190_18.sui", "X_18.sui", "X_119.sui", "X_19.cfg", "Quillane.cfg"};
    for (const std::string& name : others)
        TempFolder::Write(temp.PathOf(name), "x");
    TempFolder::Write(temp.PathOf("Y_19.sui"), "x");
    ASSERT_TRUE(XN_Comm::AddOnFileWrite(true));
    EXPECT_EQ("$Moravel Loaded: TRUE\n", ReadPlain(temp.PathOf(kOwnMarker)));
    EXPECT_TRUE(XN_Comm::AddOnFileRead());
    ASSERT_TRUE(XN_Comm::AddOnFileWrite(false));
    EXPECT_EQ("$Moravel Loaded: FALSE\n", ReadPlain(temp.PathOf(kOwnMarker)));
    EXPECT_FALSE(XN_Comm::AddOnFileRead());
    XN_Comm::AddOnsFileDelete();
    EXPECT_EQ(others, FolderEntries());
    EXPECT_FALSE(XN_Comm::AddOnFileRead()) << "no marker";
}

TEST_F(CommTest, OnlyOneExactTrueRecordReadsAsLoaded) {
    const struct {
        const char* name;
        const char* plain;
        bool loaded;
    } cases[] = {
        {"the key is not looked at", "$Other: TRUE\n", true},
        {"lower case", "$Moravel Loaded: true\n", false},
        {"two records", "$Moravel Loaded: TRUE\n$Moravel Loaded: TRUE\n", false},
        {"no record", "", false},
        {"malformed", "Moravel Loaded: TRUE\n", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        WritePlain(temp.PathOf(kOwnMarker), c.plain);
        EXPECT_EQ(c.loaded, XN_Comm::AddOnFileRead());
    }
}

// The central add-on's 'SUIT' command decides when the host has it; otherwise the suite marker of
// the running release tells the result while `loaded` stays false.
TEST_F(CommTest, SuiteIsLoadedAsksTheCentralAddOnThenItsMarker) {
    const API_ModulID suite = XN_Comm::ModulID(XN_Comm_Suite);
    const API_ModulID other = XN_Comm::ModulID(XN_Comm_MoravelLibrary);
    const struct {
        const char* name;
        std::vector<achost::DeclaredCommand> commands;
        const char* marker; // file written in the shared folder first, or null
        const char* answer; // "<result> <loaded>"
    } cases[] = {
        {"the central add-on answers", {{suite, 'SUIT', 1}}, nullptr, "1 1"},
        {"no answer, no marker", {}, nullptr, "0 0"},
        {"no answer, the suite marker", {}, kSuiteMarker, "1 0"},
        {"another release's marker", {}, "Moravel_AC18.sui", "0 0"},
        {"another add-on answers 'SUIT'", {{other, 'SUIT', 1}}, kSuiteMarker, "1 0"},
        {"the central add-on answers another command", {{suite, 'TEST', 1}}, nullptr, "0 0"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        if (c.marker != nullptr)
            TempFolder::Write(temp.PathOf(c.marker), "");
        achost::HostOptions options;
        options.commands = c.commands;
        options.onViolation = [](const std::string& message) { ADD_FAILURE() << message; };
        achost::Host host(options);
        std::string error;
        ASSERT_TRUE(host.Start(COMM_PROBE, &error)) << error;
        ASSERT_TRUE(host.ChooseMenuItem(32500, 1, &error)) << error;
        EXPECT_EQ(c.answer, host.FindMenu(32500)->items[0].text);
        if (c.marker != nullptr)
            std::filesystem::remove(temp.PathOf(c.marker));
    }
}

TEST(CommIdentifierTest, TwentySixIdentifiersOfTheSuiteAndBlanksOtherwise) {
    for (int code : {-4, -1, 23, 1000}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(0x2020202020202020ULL, XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code)));
    }
    std::set<unsigned long long> identifiers;
    for (int code = -3; code <= 22; ++code) {
        const unsigned long long id = XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code));
        EXPECT_TRUE(code == -1 || (id & 0xFFFFFFFFULL) == 0x4E525644ULL) << "code " << code;
        identifiers.insert(id);
    }
    EXPECT_EQ(26u, identifiers.size());
}

// The add-on's own 'MDID' resource must be its entry of the table.
TEST(CommIdentifierTest, TheResourceFileCarriesTheAddOnsIdentifier) {
    std::ifstream grc(XN_RESOURCE_FILE);
    const std::string text((std::istreambuf_iterator<char>(grc)), std::istreambuf_iterator<char>());
    std::smatch match;
    ASSERT_TRUE(std::regex_search(text, match,
                                  std::regex("'MDID'\\s+32500\\s+\"[^\"]*\"\\s*\\{\\s*(\\d+)\\s+(\\d+)")));
    const unsigned long long id = XN_Comm::GetMDID(XN_Comm_MoravelLibrary);
    EXPECT_EQ(id & 0xFFFFFFFFULL, std::stoull(match[1]));
    EXPECT_EQ(id >> 32, std::stoull(match[2]));
}

} // namespace
} // namespace xn_test
