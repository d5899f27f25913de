// The UTF-8 bytes of an XN_String, "" for the null string: for the tests and probes of the add-on's code.
#pragma once

#include "XN_String.hpp"

#include <string>

inline std::string Utf8(const XN_String& text) {
    const XN_CString bytes = text.ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}
