// GS::UniString: the host's Unicode string, UTF-16 code units in the machine's order.
// A plain value type: copies are deep, the buffer is always terminated by a 0 unit.
#pragma once

#include "GSRoot.hpp"

#include <string>
#include <vector>

// 8-bit character sets the host converts from and to. CC_Default and CC_System mean the host's
// 8-bit encoding, which is UTF-8 on this platform.
enum GSCharCode { CC_Default = 0, CC_System = 1, CC_UTF8 = 99 };

namespace GS {

class GS_HOST_EXPORT UniString {
public:
    // An 8-bit result of ToCStr; Get() stays valid while the object lives.
    class CStr {
    public:
        explicit CStr(std::string bytes) : bytes(std::move(bytes)) {}
        const char* Get() const { return bytes.c_str(); }

    private:
        std::string bytes;
    };

    UniString();
    // Copies a 0-terminated UTF-16 text; null gives the empty string.
    UniString(const uchar_t* uStr);
    // Copies exactly `charCount` units (0 units included); null gives the empty string.
    UniString(const uchar_t* uChars, USize charCount);
    // Converts a 0-terminated 8-bit text; invalid bytes become U+FFFD. Null gives the empty string.
    UniString(const char* cStr, GSCharCode charCode = CC_Default);

    // Number of UTF-16 code units, terminator excluded.
    USize GetLength() const;
    bool IsEmpty() const;
    // The 0-terminated units; valid until the string changes or dies.
    const uchar_t* ToUStr() const;
    // The text as 8-bit (UTF-8 for every code this host knows).
    CStr ToCStr(GSCharCode charCode = CC_Default) const;
    // The text as UTF-8 (unpaired surrogates become U+FFFD).
    std::string ToUTF8() const;

    uchar_t operator[](UIndex index) const;
    UniString& operator+=(const UniString& other);
    UniString operator+(const UniString& other) const;
    bool operator==(const UniString& other) const;
    bool operator!=(const UniString& other) const { return !(*this == other); }
    bool operator<(const UniString& other) const;

private:
    std::vector<uchar_t> units; // always ends with one 0 unit
};

} // namespace GS
