// Reading, writing and checking the interface language against the add-on's own settings file.
#include "SettingsTestSupport.hpp"

#include "XN_Language.hpp"

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;

using LanguageTest = SettingsStoreTest;

TEST_F(LanguageTest, ReadsTheStoredLanguage) {
    const struct {
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
        {"the suffix wins over the number", "ger", "0", true, 3},
        {"old number", nullptr, "0", true, 0},
        {"old number 5 is not supported here", nullptr, "5", true, 1},
        {"old number 6 means International", nullptr, "6", true, 1},
        {"old negative number taken as it is", nullptr, "-3", true, -3},
        {"old number kept to 16 bits", nullptr, "65536", true, 0},
        {"old number that is not a number", nullptr, "abc", true, 1},
        {"neither key", nullptr, nullptr, false, 1},
    };
    for (const auto& c : cases) {
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
    // The forced reload is of the shared store; the language lives in the add-on's own store, which is read
    // lazily and so not again.
    WritePlain(SharedPath(), "$Language_str: ger\n$Other: 1\n");
    WritePlain(OwnPath(), "$Language_str: fra\n");
    XN_Language_Read(true);
    EXPECT_EQ("1", Utf8(XN_AddonSettings_Get(XN_AddonSettings_AllAddons, "Other", false)));
    EXPECT_EQ(1, gXN_Language);
}

TEST_F(LanguageTest, WritesTheSuffixAndFallsBackOnlyInMemory) {
    const struct {
        const char* name;
        short language;
        const char* stored;
        short after;
    } cases[] = {
        {"German beside the old number", 3, "$Language: 0\n$Language_str: ger\n", 3},
        {"unsupported language is stored as chosen", 5, "$Language: 0\n$Language_str: jap\n", 1},
        {"index past the table", 7, "$Language: 0\n$Language_str: int\n", 1},
        {"negative index", -3, "$Language: 0\n$Language_str: int\n", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        XN_AddonSettings_Clear(kOwn);
        XN_AddonSettings_Set(kOwn, "Language", "0", true);
        gXN_Language = c.language;
        XN_Language_Write();
        EXPECT_EQ(c.stored, ReadPlain(OwnPath()));
        EXPECT_EQ(c.after, gXN_Language);
    }
}

} // namespace
} // namespace xn_test
