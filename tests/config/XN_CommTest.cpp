// The suite's marker files, the presence test of the suite and the add-on identifiers.
#include "SettingsTestSupport.hpp"

#include "HostTest.hpp"
#include "XN_Comm.hpp"

#include <regex>
#include <tuple>

namespace xn_test {
namespace {

// This host reports release 19.
const char* const kOwnMarker = "MoravelLibrary_190_19.sui";
const char* const kSuiteMarker = "Moravel_AC19.sui";

using CommTest = SettingsStoreTest;

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
    EXPECT_EQ(others, TempFolder::Names(temp.Path()));
    EXPECT_FALSE(XN_Comm::AddOnFileRead()) << "no marker";
    // Only one exact TRUE record reads as loaded.
    const std::tuple<const char*, bool> cases[] = {
        {"$Other: TRUE\n", true}, // the key is not looked at
        {"$Moravel Loaded: true\n", false},
        {"$Moravel Loaded: TRUE\n$Moravel Loaded: TRUE\n", false},
        {"", false},
        {"Moravel Loaded: TRUE\n", false},
    };
    for (const auto& [plain, loaded] : cases) {
        WritePlain(temp.PathOf(kOwnMarker), plain);
        EXPECT_EQ(loaded, XN_Comm::AddOnFileRead()) << plain;
    }
}

// The probe add-on shows "<result> <loaded>" of SuiteIsLoaded: the central add-on's 'SUIT' command
// decides when the host has it; otherwise the result tells whether the suite marker of the running
// release is on disk, while `loaded` stays false.
TEST_F(CommTest, SuiteIsLoadedAsksTheCentralAddOnThenItsMarker) {
    // marker: written in the shared folder first, or null
    const std::tuple<bool, const char*, const char*> cases[] = {
        {true, nullptr, "1 1"},
        {false, nullptr, "0 0"},
        {false, kSuiteMarker, "1 0"},
        {false, "Moravel_AC18.sui", "0 0"},
    };
    for (const auto& [suiteAnswers, marker, answer] : cases) {
        SCOPED_TRACE(marker != nullptr ? marker : "no marker");
        if (marker != nullptr)
            TempFolder::Write(temp.PathOf(marker), "");
        achost::HostOptions options = StrictOptions();
        if (suiteAnswers)
            options.commands.push_back({XN_Comm::ModulID(XN_Comm_Suite), 'SUIT', 1});
        achost::Host host(options);
        ASSERT_TRUE(Started(host, COMM_PROBE));
        std::string error;
        ASSERT_TRUE(host.ChooseMenuItem(32500, 1, &error)) << error;
        EXPECT_EQ(answer, host.FindMenu(32500)->items[0].text);
        if (marker != nullptr)
            std::filesystem::remove(temp.PathOf(marker));
    }
}

TEST(CommIdentifierTest, TwentySixIdentifiersOfTheSuiteAndBlanksOtherwise) {
    for (int code : {-4, -1, 23})
        EXPECT_EQ(0x2020202020202020ULL, XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code))) << code;
    std::set<unsigned long long> identifiers;
    for (int code = -3; code <= 22; ++code) {
        const unsigned long long id = XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code));
        EXPECT_TRUE(code == -1 || (id & 0xFFFFFFFFULL) == 0x4E525644ULL) << "code " << code;
        identifiers.insert(id);
    }
    EXPECT_EQ(26u, identifiers.size());
    // The add-on's own 'MDID' resource must be its entry of the table.
    std::ifstream grc(XN_RESOURCE_FILE);
    const std::string text((std::istreambuf_iterator<char>(grc)), std::istreambuf_iterator<char>());
    std::smatch match;
    ASSERT_TRUE(std::regex_search(text, match,
                                  std::regex("'MDID'\\s+32500\\s+\"[^\"]*\"\\s*\\{\\s*(\\d+)\\s+(\\d+)")));
    const unsigned long long id = XN_Comm::GetMDID(XN_Comm_MoravelLibrary);
    EXPECT_EQ(id, std::stoull(match[1]) | std::stoull(match[2]) << 32);
}

} // namespace
} // namespace xn_test
