// Reading, writing and checking the interface language against the add-on's own settings file.
#include "SettingsTestSupport.hpp"

#include "XN_Language.hpp"

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;

class LanguageTest : public SharedFolderTest {
protected:
    void SetUp() override {
        SharedFolderTest::SetUp();
        gXN_Language = 1;
    }
};

TEST_F(LanguageTest, ReadsTheStoredLanguage) {
    struct Case {
        const char* name;
        const char* languageStr; // null: no record
        const char* language;    // null: no record
        bool result;
        short expected;
    } cases[] = {
        {"suffix", "ita", nullptr, true, 0},
        {"suffix in another case", "FRA", nullptr, true, 2},
        {"last standard language", "spa", nullptr, true, 4},
        {"unknown suffix", "xyz", nullptr, true, 1},
        {"Japanese is not supported here", "jap", nullptr, true, 1},
        {"Russian is not supported here", "rus", nullptr, true, 1},
        {"the suffix wins over the number", "ger", "0", true, 3},
        {"old number", nullptr, "0", true, 0},
        {"old number 4", nullptr, "4", true, 4},
        {"old number 6 means International", nullptr, "6", true, 1},
        {"old number above 6", nullptr, "9", true, 1},
        {"old negative number taken as it is", nullptr, "-3", true, -3},
        {"old number kept to 16 bits", nullptr, "65536", true, 0},
        {"old number that is not a number", nullptr, "abc", true, 1},
        {"old number 5 is not supported here", nullptr, "5", true, 1},
        {"neither key", nullptr, nullptr, false, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Clear(kOwn);
        if (c.languageStr != nullptr)
            XN_AddonSettings_Set(kOwn, "Language_str", c.languageStr, true);
        if (c.language != nullptr)
            XN_AddonSettings_Set(kOwn, "Language", c.language, true);
        gXN_Language = 2;
        EXPECT_EQ(c.result, XN_Language_Read(false));
        EXPECT_EQ(c.expected, gXN_Language);
        EXPECT_EQ(c.result, XN_Language_Exists());
    }
}

TEST_F(LanguageTest, ReloadReadsTheSharedFileAgain) {
    WritePlain(SharedPath(), "$Language_str: ger\n$Other: 1\n");
    WritePlain(OwnPath(), "$Language_str: fra\n");
    XN_Language_Read(true);
    EXPECT_EQ("1", Utf8(XN_AddonSettings_Get(XN_AddonSettings_AllAddons, "Other", false)));
    // The language lives in the add-on's own store, which is not forced to reload.
    EXPECT_EQ(1, gXN_Language);
}

// Writing stores the suffix, leaves an old numeric record in place, and falls back only in memory.
TEST_F(LanguageTest, WritesTheSuffix) {
    struct Case {
        const char* name;
        bool oldNumber; // an old "Language" record is stored first
        short language;
        const char* stored;
        short after;
    } cases[] = {
        {"German beside the old number", true, 3, "$Language: 0\n$Language_str: ger\n", 3},
        {"unsupported language is stored as chosen", false, 5, "$Language_str: jap\n", 1},
        {"index past the table", false, 7, "$Language_str: int\n", 1},
        {"negative index", false, -3, "$Language_str: int\n", 1},
        {"Italian", false, 0, "$Language_str: ita\n", 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Clear(kOwn);
        XN_AddonSettings_Set(kOwn, "Language", "0", c.oldNumber);
        gXN_Language = c.language;
        XN_Language_Write();
        EXPECT_EQ(c.stored, ReadPlain(OwnPath()));
        EXPECT_EQ(c.after, gXN_Language);
    }
}

} // namespace
} // namespace xn_test
