#include "XN_Resource.hpp"

#include "ACAPinc.h"
#include "XN_Language.hpp"

namespace {

constexpr short kInternational = 1;

// Reads the string into `result`; false when the list or the string is missing.
bool ReadLocalized(short resID, long index, XN_String* result) {
    GS::uchar_t buffer[1000];
    if (!ACAPI_Resource_GetLocUStr(buffer, resID, static_cast<short>(index), ACAPI_GetOwnResModule()))
        return false;
    *result = XN_String(buffer);
    return true;
}

XN_String Marker(const char* text) {
    return XN_String(text, XN_String::Encoding_SystemDefault);
}

// The same list in the International language: lists of one family lie at base + language.
short InternationalOf(short resID) {
    return static_cast<short>(resID + kInternational - gXN_Language);
}

} // namespace

XN_String XN_Resource_GetString(short resID, long index, bool localized) {
    XN_String result;
    if (resID >= XN_RES_GENERAL_TEXTS) {
        if (ReadLocalized(resID, index, &result))
            return result;
        if (gXN_Language != kInternational && ReadLocalized(InternationalOf(resID), index, &result))
            return result;
        return Marker("_ERR_NO_");
    }
    if (!localized)
        return Marker("_ERR_DPT_");
    // The second read repeats the first when the language is International: kept, it is harmless.
    if (ReadLocalized(resID, index, &result) || ReadLocalized(InternationalOf(resID), index, &result))
        return result;
    char fixed[1000];
    ACAPI_Resource_GetFixStr(fixed, resID, static_cast<short>(index), ACAPI_GetOwnResModule());
    return Marker("_ERR_NO_");
}

GS::UniString XN_ToUniString(const XN_String& text) {
    return text.GetBuffer() != nullptr ? GS::UniString(text.GetBuffer(), text.GetLength()) : GS::UniString();
}
