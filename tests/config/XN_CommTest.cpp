// The suite's marker files, the presence test of the suite and the add-on identifiers.
#include "SettingsTestSupport.hpp"

#include "XN_Comm.hpp"

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

TEST_F(CommTest, WrittenMarkersReadBack) {
    ASSERT_TRUE(XN_Comm::AddOnFileWrite(true));
    EXPECT_EQ("$Moravel Loaded: TRUE\n", ReadPlain(temp.PathOf(kOwnMarker)));
    EXPECT_TRUE(XN_Comm::AddOnFileRead());
    ASSERT_TRUE(XN_Comm::AddOnFileWrite(false));
    EXPECT_EQ("$Moravel Loaded: FALSE\n", ReadPlain(temp.PathOf(kOwnMarker)));
    EXPECT_FALSE(XN_Comm::AddOnFileRead());
}

TEST_F(CommTest, OnlyOneExactTrueRecordReadsAsLoaded) {
    struct Case {
        const char* name;
        std::string plain;
        bool loaded;
    } cases[] = {
        {"TRUE", "$Moravel Loaded: TRUE\n", true},
        {"the key is not looked at", "$Other: TRUE\n", true},
        {"lower case", "$Moravel Loaded: true\n", false},
        {"two records", "$Moravel Loaded: TRUE\n$Moravel Loaded: TRUE\n", false},
        {"no record", "", false},
        {"malformed", "Moravel Loaded: TRUE\n", false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        WritePlain(temp.PathOf(kOwnMarker), c.plain);
        EXPECT_EQ(c.loaded, XN_Comm::AddOnFileRead());
    }
    std::filesystem::remove(temp.PathOf(kOwnMarker));
    EXPECT_FALSE(XN_Comm::AddOnFileRead());
}

TEST_F(CommTest, DeleteRemovesTheAddOnMarkersOfTheRelease) {
    for (const char* name :
         {"X_19.sui", "Y_19.sui", kSuiteMarker, "X_18.sui", "X_19.cfg", "X_119.sui", "Quillane.cfg"})
        TempFolder::Write(temp.PathOf(name), "x");
    XN_Comm::AddOnsFileDelete();
    EXPECT_EQ((std::set<std::string>{kSuiteMarker, "X_18.sui", "X_19.cfg", "X_119.sui", "Quillane.cfg"}),
              FolderEntries());
}

TEST_F(CommTest, SuiteMarkerPresence) {
    EXPECT_FALSE(XN_Comm::SuiteFileExist());
    TempFolder::Write(temp.PathOf("Moravel_AC18.sui"), "x");
    EXPECT_FALSE(XN_Comm::SuiteFileExist());
    TempFolder::Write(temp.PathOf(kSuiteMarker), "");
    EXPECT_TRUE(XN_Comm::SuiteFileExist());
    XN_Location location;
    ASSERT_TRUE(XN_Comm::SuiteFileLocation(22, location));
    EXPECT_EQ(temp.PathOf("Moravel_AC22.sui"), Utf8(location));
}

TEST(CommIdentifierTest, InvalidCodesGiveBlanks) {
    for (int code : {-4, -1, 23, 1000}) {
        SCOPED_TRACE(code);
        EXPECT_EQ(0x2020202020202020ULL, XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code)));
    }
    std::set<unsigned long long> identifiers;
    for (int code = -3; code <= 22; ++code) {
        const unsigned long long id = XN_Comm::GetMDID(static_cast<XN_Comm_AddOnsCode>(code));
        if (code != -1) {
            EXPECT_EQ(0x4E525644ULL, id & 0xFFFFFFFFULL) << "code " << code;
        }
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
