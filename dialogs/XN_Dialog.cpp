#include "XN_Dialog.hpp"

#include "DG.h"
#include "XN_Language.hpp"
#include "XN_Resource.hpp"

namespace {

const long kOKString = 64;
const long kErrorLabel = 10;
const long kWarningLabel = 14;

XN_String GeneralString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + gXN_Language), index, true);
}

} // namespace

void XN_Dialog::ShowAlert(short kind, const XN_String& largeText, const XN_String& smallText,
                          const XN_String& guideText) {
    DGAlert(kind, XN_ToUniString(largeText), XN_ToUniString(smallText), XN_ToUniString(guideText),
            XN_ToUniString(GeneralString(kOKString)), GS::UniString(), GS::UniString());
}

XN_String XN_Dialog::SetPrefixString(const XN_String& text, bool isError, const XN_String& separator,
                                     bool lowerFirst) {
    if (text.GetLength() == 0 || separator.GetLength() == 0)
        return XN_String("");
    XN_String result = GeneralString(isError ? kErrorLabel : kWarningLabel);
    result += separator;
    const unsigned short first = text.UCharAt(0);
    const unsigned short changed =
        lowerFirst ? XN_String::XN_CharToLowerCase(first) : XN_String::XN_CharToUpperCase(first);
    result += XN_String(&changed, 1);
    result += text.Substring(1);
    return result;
}
