// Reading, writing and checking the interface language against the add-on's own settings file.
#include "SettingsTestSupport.hpp"

#include "XN_Language.hpp"

#include <tuple>

namespace xn_test {
namespace {

const XN_AddonSettings_Type kOwn = XN_AddonSettings_Addon;

using LanguageTest = SettingsStoreTest;

TEST_F(LanguageTest, ReadsTheStoredLanguage) {
    // the records "Language_str" and "Language" (null: none), the result, the language read
    const std::tuple<const char*, const char*, const char*, bool, short> cases[] = {
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
    for (const auto& [name, languageStr, language, result, expected] : cases) {
        SCOPED_TRACE(name);
        XN_AddonSettings_Clear(kOwn);
        if (languageStr != nullptr)
            XN_AddonSettings_Set(kOwn, "Language_str", languageStr, true);
        if (language != nullptr)
            XN_AddonSettings_Set(kOwn, "Language", language, true);
        gXN_Language = 2;
        EXPECT_EQ(result, XN_Language_Read(false));
        EXPECT_EQ(expected, gXN_Language);
        EXPECT_EQ(result, XN_Language_Exists());
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
    const std::tuple<const char*, short, const char*, short> cases[] = {
        {"German beside the old number", 3, "$Language: 0\n$Language_str: ger\n", 3},
        {"unsupported language is stored as chosen", 5, "$Language: 0\n$Language_str: jap\n", 1},
        {"index past the table", 7, "$Language: 0\n$Language_str: int\n", 1},
        {"negative index", -3, "$Language: 0\n$Language_str: int\n", 1},
    };
    for (const auto& [name, language, stored, after] : cases) {
        SCOPED_TRACE(name);
        XN_AddonSettings_Clear(kOwn);
        XN_AddonSettings_Set(kOwn, "Language", "0", true);
        gXN_Language = language;
        XN_Language_Write();
        EXPECT_EQ(stored, ReadPlain(OwnPath()));
        EXPECT_EQ(after, gXN_Language);
    }
}

} // namespace
} // namespace xn_test
