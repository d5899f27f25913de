// XN_String search, transformations, in-place replacement and the 8-bit helpers.
#include "XN_String.hpp"
#include "XN_StringInternal.hpp"

#include <cctype>
#include <cstring>
#include <vector>

namespace {

bool MatchesAt(const XN_String& text, unsigned int at, const XN_String& sub, bool ignoreCase) {
    if (sub.GetLength() > text.GetLength() - at)
        return false;
    const unsigned short* a = text.GetBuffer() + at;
    const unsigned short* b = sub.GetBuffer();
    for (unsigned int i = 0; i < sub.GetLength(); ++i) {
        unsigned short ca = ignoreCase ? XN_String::XN_CharToLowerCase(a[i]) : a[i];
        unsigned short cb = ignoreCase ? XN_String::XN_CharToLowerCase(b[i]) : b[i];
        if (ca != cb)
            return false;
    }
    return true;
}

bool IsBlank(unsigned short c, bool tabsToo) {
    return c == ' ' || (tabsToo && c == '\t');
}

int LowerByte(char c) {
    return std::tolower(static_cast<unsigned char>(c));
}

// Byte-wise comparison of at most `n` bytes (0: no limit), stopping after the terminator. Bytes are
// compared as signed 8-bit values, so bytes from 0x80 up sort before ASCII.
int CompareBytes(const char* a, const char* b, unsigned int n, bool ignoreCase) {
    auto byteOf = [ignoreCase](const char* text) {
        return [text, ignoreCase](unsigned int i) {
            return static_cast<signed char>(ignoreCase ? LowerByte(text[i]) : text[i]);
        };
    };
    return xn_internal::CompareUnitRuns(n, byteOf(a), byteOf(b));
}

} // namespace

// ---- Search ----------------------------------------------------------------------------------------

unsigned int XN_String::FindForward(const XN_String& sub, unsigned int from, bool ignoreCase) const {
    if (IsNull() || sub.IsNull() || sub.IsEmpty() || from >= length || buffer[from] == 0)
        return kNotFound;
    for (unsigned int p = from; p < length; ++p)
        if (MatchesAt(*this, p, sub, ignoreCase))
            return p;
    return kNotFound;
}

unsigned int XN_String::IndexOf(const XN_String& sub, unsigned int from) const {
    return FindForward(sub, from, false);
}

unsigned int XN_String::IndexOfIgnoreCase(const XN_String& sub, unsigned int from) const {
    return FindForward(sub, from, true);
}

unsigned int XN_String::LastIndexOf(const XN_String& sub, unsigned int from) const {
    if (IsNull() || sub.IsNull() || sub.IsEmpty() || from >= length || static_cast<int>(from) < 0)
        return kNotFound;
    for (unsigned int p = from + 1; p-- > 0;)
        if (MatchesAt(*this, p, sub, false))
            return p;
    return kNotFound;
}

unsigned int XN_String::LastIndexOf(const XN_String& sub) const {
    return LastIndexOf(sub, length - 1);
}

unsigned int XN_String::IndexOf(char c, unsigned int from) const {
    unsigned short unit = c != 0 ? CharToXN_Char(c) : 0;
    if (IsNull() || unit == 0 || from >= length)
        return kNotFound;
    for (unsigned int p = from; p < length; ++p)
        if (buffer[p] == unit)
            return p;
    return kNotFound;
}

unsigned int XN_String::LastIndexOf(char c, unsigned int from) const {
    unsigned short unit = c != 0 ? CharToXN_Char(c) : 0;
    if (IsNull() || unit == 0 || from >= length)
        return kNotFound;
    for (unsigned int p = from + 1; p-- > 0;)
        if (buffer[p] == unit)
            return p;
    return kNotFound;
}

unsigned int XN_String::LastIndexOf(char c) const {
    return LastIndexOf(c, length - 1);
}

bool XN_String::StartsWith(const XN_String& prefix, unsigned int from) const {
    if (IsNull() || prefix.IsNull() || prefix.IsEmpty() || (from != 0 && from >= length))
        return false;
    return MatchesAt(*this, from, prefix, false);
}

bool XN_String::EndsWith(const XN_String& suffix) const {
    if (IsNull() || suffix.IsNull() || suffix.IsEmpty() || suffix.length > length)
        return false;
    return MatchesAt(*this, length - suffix.length, suffix, false);
}

// ---- Transformations ----------------------------------------------------------------------------------

XN_String XN_String::MapUnits(unsigned short (*map)(unsigned short)) const {
    XN_String result(*this);
    for (unsigned int i = 0; i < result.length; ++i)
        result.buffer[i] = map(result.buffer[i]);
    return result;
}

XN_String XN_String::ToLowerCase() const {
    return MapUnits(XN_CharToLowerCase);
}

XN_String XN_String::ToUpperCase() const {
    return MapUnits(XN_CharToUpperCase);
}

XN_String XN_String::Replace(char a, char b) const {
    unsigned short from = CharToXN_Char(a);
    unsigned short to = CharToXN_Char(b);
    XN_String result(*this);
    for (unsigned int i = 0; i < result.length; ++i)
        if (result.buffer[i] == from)
            result.buffer[i] = to;
    return result;
}

XN_String XN_String::Replace(const XN_String& find, const XN_String& repl) const {
    if (IsNull() || find.IsNull() || repl.IsNull())
        return XN_String();
    std::vector<unsigned int> matches;
    for (unsigned int p = IndexOf(find, 0); p != kNotFound; p = IndexOf(find, p + find.length))
        matches.push_back(p);
    const unsigned int n = static_cast<unsigned int>(matches.size());
    XN_String result;
    result.THIS_Alloc(length - n * find.length + n * repl.length + 1, false);
    unsigned int copied = 0;
    for (unsigned int p : matches) {
        result.THIS_Append(buffer + copied, p - copied);
        result.THIS_Append(repl.buffer, repl.length);
        copied = p + find.length;
    }
    result.THIS_Append(buffer + copied, length - copied);
    result.buffer[result.length] = 0;
    return result;
}

XN_String XN_String::Replace(const char* find, const char* repl) const {
    return Replace(XN_String(find), XN_String(repl));
}

XN_String XN_String::THIS_Trim(bool left, bool right, bool tabsToo) const {
    if (IsNull())
        return XN_String();
    unsigned int first = 0;
    unsigned int end = length;
    while (left && first < end && IsBlank(buffer[first], tabsToo))
        ++first;
    while (right && end > first && IsBlank(buffer[end - 1], tabsToo))
        --end;
    return Substring(first, end - first);
}

XN_String XN_String::RepeatedSequence(const XN_String& s, long n) {
    XN_String result;
    if (n < 0 || s.IsNull())
        return result;
    result.THIS_Alloc(static_cast<unsigned int>(s.length * n + 1), false);
    result.buffer[0] = 0;
    for (long i = 0; i < n; ++i)
        result.THIS_Append(s.buffer, s.length);
    return result;
}

bool XN_String::Replace(unsigned int first, unsigned int last, const XN_String& repl) {
    if (first < 1 || first > last || first > length)
        return false;
    unsigned int start = first - 1;
    unsigned int end = last < length ? last : length;
    unsigned int tail = length - end;
    unsigned int newLength = length - (end - start) + repl.length;
    if (capacity < newLength + 1) {
        // The old text is not carried over (see the header); zeros keep the lost part defined.
        THIS_Alloc(newLength + 1, false);
        std::memset(buffer, 0, capacity * sizeof(unsigned short));
    }
    std::memmove(buffer + start + repl.length, buffer + end, tail * sizeof(unsigned short));
    if (repl.length > 0)
        std::memcpy(buffer + start, repl.buffer, repl.length * sizeof(unsigned short));
    length = newLength;
    buffer[length] = 0;
    return true;
}

// ---- 8-bit helpers ----------------------------------------------------------------------------------

bool XN_String::Equals(const char* a, const char* b) {
    return Equals(a, b, 0);
}

bool XN_String::Equals(const char* a, const char* b, unsigned int n) {
    return a != nullptr && b != nullptr && CompareBytes(a, b, n, false) == 0;
}

bool XN_String::EqualsIgnoreCase(const char* a, const char* b) {
    return a != nullptr && b != nullptr && CompareBytes(a, b, 0, true) == 0;
}

bool XN_String::EqualsIgnoreCase(const char* a, const char* b, unsigned int n) {
    return n != 0 && a != nullptr && b != nullptr && CompareBytes(a, b, n, true) == 0;
}

int XN_String::Compare(const char* a, const char* b) {
    return a == nullptr || b == nullptr ? -10 : CompareBytes(a, b, 0, false);
}

int XN_String::CompareIgnoreCase(const char* a, const char* b) {
    return a == nullptr || b == nullptr ? -10 : CompareBytes(a, b, 0, true);
}
