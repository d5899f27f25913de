#include "XN_Language.hpp"

#include "XN_AddonSettings.hpp"
#include "sett_Addon.hpp"

short gXN_Language = 1;
bool gXN_AskLanguage = false;
const XN_String gXN_Languages_Suffixes[XN_LANGUAGE_COUNT] = {"ita", "int", "fra", "ger", "spa", "jap", "rus"};

namespace {

const short kDefaultLanguage = 1;
// Languages from this index on are offered only when listed in sett_ADDON_SUPP_EXTRA_LANGUAGES.
const short kFirstExtraLanguage = 5;
const char* const kLanguageKey = "Language_str";
// The older numeric form of the setting: still read, never written.
const char* const kOldLanguageKey = "Language";

XN_AddonSettings_Type LanguageStore() {
    return static_cast<XN_AddonSettings_Type>(sett_ADDON_HAS_OWN_LANGUAGE);
}

bool IsInTable(short language) {
    return language >= 0 && language < XN_LANGUAGE_COUNT;
}

// The index of `suffix` in the table (any case), or the default.
short LanguageOfSuffix(const XN_String& suffix) {
    for (short i = 0; i < XN_LANGUAGE_COUNT; ++i) {
        if (XN_String::CompareIgnoreCase(suffix, 0, gXN_Languages_Suffixes[i], 0, 0) == 0)
            return i;
    }
    return kDefaultLanguage;
}

// The old numeric setting: 6 and above mean the default; other numbers, negatives included, are
// taken as they are; anything else gives the default.
short LanguageOfNumber(const XN_String& text) {
    if (!XN_String::IsNumber(text))
        return kDefaultLanguage;
    const short language = static_cast<short>(XN_String::ToLong(text.ToCStr().Get()));
    return language >= 6 ? kDefaultLanguage : language;
}

} // namespace

bool XN_Language_Read(bool reload) {
    if (reload)
        XN_AddonSettings_Load(XN_AddonSettings_AllAddons, false);
    gXN_Language = kDefaultLanguage;
    XN_String value;
    if (XN_AddonSettings_Get(LanguageStore(), XN_String(kLanguageKey), &value, true)) {
        gXN_Language = LanguageOfSuffix(value);
    } else if (XN_AddonSettings_Get(LanguageStore(), XN_String(kOldLanguageKey), &value, true)) {
        gXN_Language = LanguageOfNumber(value);
    } else {
        return false;
    }
    XN_Language_CheckSupportedLanguage();
    return true;
}

void XN_Language_Write() {
    if (!IsInTable(gXN_Language))
        gXN_Language = kDefaultLanguage;
    XN_AddonSettings_LoadSetSave(LanguageStore(), XN_String(kLanguageKey),
                                 gXN_Languages_Suffixes[gXN_Language], true);
    XN_Language_CheckSupportedLanguage();
}

bool XN_Language_Exists() {
    return XN_AddonSettings_Get(LanguageStore(), XN_String(kLanguageKey), nullptr, true) ||
           XN_AddonSettings_Get(LanguageStore(), XN_String(kOldLanguageKey), nullptr, true);
}

void XN_Language_CheckSupportedLanguage() {
    if (gXN_Language < kFirstExtraLanguage)
        return;
    if (!IsInTable(gXN_Language)) {
        gXN_Language = kDefaultLanguage;
        return;
    }
    const XN_String supported(sett_ADDON_SUPP_EXTRA_LANGUAGES);
    if (supported.IndexOfIgnoreCase(gXN_Languages_Suffixes[gXN_Language]) == XN_String::kNotFound)
        gXN_Language = kDefaultLanguage;
}
