// XN_String storage, construction, comparison, element access and sub-strings.
#include "XN_String.hpp"
#include "XN_StringInternal.hpp"

#include <algorithm>
#include <cstring>
#include <cwctype>

namespace {

void CopyUnits(unsigned short* dst, const unsigned short* src, unsigned int count) {
    if (count > 0)
        std::memcpy(dst, src, count * sizeof(unsigned short));
}

// The unit at `i`, or 0 past the end: comparisons stop at a string's end even when a caller's start
// index lies beyond it.
unsigned short UnitOrZero(const XN_String& s, unsigned int i) {
    return i < s.GetLength() ? s.GetBuffer()[i] : 0;
}

unsigned short SameUnit(unsigned short c) {
    return c;
}

int CompareUnits(const XN_String& a, unsigned int aStart, const XN_String& b, unsigned int bStart,
                 unsigned int count, unsigned short (*map)(unsigned short)) {
    if (a.IsNull())
        return b.IsNull() ? 0 : -1;
    if (b.IsNull())
        return 1;
    return xn_internal::CompareUnitRuns(
        count, [&](unsigned int i) { return map(UnitOrZero(a, aStart + i)); },
        [&](unsigned int i) { return map(UnitOrZero(b, bStart + i)); });
}

} // namespace

// ---- Construction --------------------------------------------------------------------------------

XN_String::XN_String() : buffer(nullptr), length(0), capacity(0) {}

XN_String::XN_String(const char* text, Encoding enc) : XN_String() {
    CStringToXN_String(*this, text, 0, enc, false);
}

XN_String::XN_String(const char* text, unsigned int byteCount, Encoding enc) : XN_String() {
    CStringToXN_String(*this, text, byteCount, enc, false);
}

XN_String::XN_String(const unsigned short* text) : XN_String() {
    if (text == nullptr)
        return;
    unsigned int count = 0;
    while (text[count] != 0)
        ++count;
    THIS_Alloc(count + 1, false);
    CopyUnits(buffer, text, count);
    SetLength(count);
}

XN_String::XN_String(const unsigned short* text, unsigned int count) : XN_String() {
    THIS_Append(text, count);
}

XN_String::XN_String(const XN_String& other) : XN_String() {
    THIS_CopyString(other);
}

XN_String::XN_String(XN_String&& other) noexcept : XN_String() {
    TakeOver(other);
}

XN_String::XN_String(XN_String* source) : XN_String() {
    if (source != nullptr)
        TakeOver(*source);
}

XN_String::~XN_String() {
    delete[] buffer;
}

void XN_String::TakeOver(XN_String& source) {
    buffer = source.buffer;
    length = source.length;
    capacity = source.capacity;
    source.THIS_SetToNullString();
}

// ---- Assignment and concatenation ------------------------------------------------------------------

XN_String& XN_String::operator=(const char* text) {
    CStringToXN_String(*this, text, 0, Encoding_SystemDefault, false);
    return *this;
}

XN_String& XN_String::operator=(const XN_String& other) {
    if (this != &other)
        THIS_CopyString(other);
    return *this;
}

XN_String& XN_String::operator=(XN_String&& other) noexcept {
    if (this != &other) {
        THIS_DeallocSetNullString();
        TakeOver(other);
    }
    return *this;
}

XN_String XN_String::operator+(const char* text) const {
    return *this + XN_String(text);
}

XN_String XN_String::operator+(const XN_String& other) const {
    XN_String result;
    result.THIS_SetToConcatenatedString(*this, other);
    return result;
}

XN_String operator+(const char* text, const XN_String& s) {
    return XN_String(text) + s;
}

XN_String& XN_String::operator+=(const char* text) {
    THIS_Append(text, 0, Encoding_SystemDefault);
    return *this;
}

XN_String& XN_String::operator+=(const XN_String& other) {
    if (this == &other) {
        XN_String copy(other);
        THIS_Append(copy.buffer, copy.length);
    } else {
        THIS_Append(other.buffer, other.length);
    }
    return *this;
}

bool XN_String::Set(const char* text, unsigned int byteCount, Encoding enc) {
    return CStringToXN_String(*this, text, byteCount, enc, false);
}

void XN_String::SetCat(const char* a, unsigned int na, const char* b, unsigned int nb, const char* c,
                       unsigned int nc) {
    THIS_DeallocSetNullString();
    const char* pieces[] = {a, b, c};
    const unsigned int counts[] = {na, nb, nc};
    for (int i = 0; i < 3; ++i) {
        if (pieces[i] == nullptr)
            continue;
        unsigned int whole = Length(pieces[i]);
        // n - 1 below the length (unsigned) takes n; so does every n from 1 to the length.
        unsigned int take = counts[i] - 1 < whole ? counts[i] : whole;
        if (take > 0)
            THIS_Append(pieces[i], take, Encoding_SystemDefault);
    }
}

void XN_String::SetToNullString() {
    THIS_DeallocSetNullString();
}

bool XN_String::SetLength(unsigned int units) {
    if (buffer == nullptr || units >= capacity)
        return false;
    length = units;
    buffer[length] = 0;
    return true;
}

// ---- Comparison ----------------------------------------------------------------------------------

int XN_String::Compare(const XN_String& a, unsigned int aStart, const XN_String& b, unsigned int bStart,
                       unsigned int count) {
    return CompareUnits(a, aStart, b, bStart, count, SameUnit);
}

int XN_String::CompareIgnoreCase(const XN_String& a, unsigned int aStart, const XN_String& b,
                                 unsigned int bStart, unsigned int count) {
    return CompareUnits(a, aStart, b, bStart, count, XN_CharToLowerCase);
}

// ---- Element access --------------------------------------------------------------------------------

unsigned short XN_String::UCharAt(unsigned int i) const {
    return i < length ? buffer[i] : 0;
}

void XN_String::SetUCharAt(unsigned int i, unsigned short c) {
    if (i < length)
        buffer[i] = c;
}

char XN_String::CharAt(unsigned int i) const {
    return i < length ? XN_CharToChar(buffer[i]) : 0;
}

void XN_String::SetCharAt(unsigned int i, char c) {
    SetUCharAt(i, CharToXN_Char(c));
}

unsigned short XN_String::XN_CharToLowerCase(unsigned short c) {
    return static_cast<unsigned short>(std::towlower(c));
}

unsigned short XN_String::XN_CharToUpperCase(unsigned short c) {
    return static_cast<unsigned short>(std::towupper(c));
}

// ---- Sizing ------------------------------------------------------------------------------------------

bool XN_String::SetSize(unsigned int newCapacity, bool keep) {
    const bool keepText = keep && buffer != nullptr && newCapacity > 0;
    const unsigned int kept = keepText ? std::min(length, newCapacity - 1) : 0;
    Reallocate(newCapacity, kept);
    length = kept;
    if (keepText)
        buffer[length] = 0;
    return true;
}

bool XN_String::THIS_Alloc(unsigned int units, bool keep) {
    if (capacity >= units)
        return true;
    const bool keepText = keep && buffer != nullptr;
    Reallocate(units, keepText ? capacity : 0);
    if (!keepText)
        length = 0;
    return true;
}

void XN_String::Reallocate(unsigned int units, unsigned int keptUnits) {
    unsigned short* fresh = new unsigned short[units];
    CopyUnits(fresh, buffer, keptUnits);
    delete[] buffer;
    buffer = fresh;
    capacity = units;
}

bool XN_String::THIS_Append(const unsigned short* text, unsigned int count) {
    if (text == nullptr || count == 0)
        return true;
    THIS_Alloc(length + count + 1, true);
    CopyUnits(buffer + length, text, count);
    length += count;
    buffer[length] = 0;
    return true;
}

bool XN_String::THIS_Append(const char* text, unsigned int byteCount, Encoding enc) {
    return CStringToXN_String(*this, text, byteCount, enc, true);
}

void XN_String::THIS_SetToNullString() {
    buffer = nullptr;
    length = 0;
    capacity = 0;
}

void XN_String::THIS_DeallocSetNullString() {
    delete[] buffer;
    THIS_SetToNullString();
}

// ---- Sub-strings --------------------------------------------------------------------------------------

void XN_String::THIS_CopyString(const XN_String& src) {
    THIS_CopyString(src, 0, src.length);
}

void XN_String::THIS_CopyString(const XN_String& src, unsigned int start, unsigned int count) {
    if (src.buffer == nullptr || start > src.length) {
        THIS_DeallocSetNullString();
        return;
    }
    unsigned int rest = src.length - start;
    unsigned int take = count < rest ? count : rest;
    if (this == &src) {
        XN_String copy(src);
        THIS_CopyString(copy, start, take);
        return;
    }
    THIS_Alloc(take + 1, false);
    CopyUnits(buffer, src.buffer + start, take);
    length = take;
    buffer[length] = 0;
}

void XN_String::THIS_SetToConcatenatedString(const XN_String& a, const XN_String& b) {
    if (a.buffer == nullptr && b.buffer == nullptr) {
        THIS_DeallocSetNullString();
        return;
    }
    if (this == &a || this == &b) {
        XN_String joined = a + b;
        TakeOver(joined);
        return;
    }
    THIS_Alloc(a.length + b.length + 1, false);
    CopyUnits(buffer, a.buffer, a.length);
    CopyUnits(buffer + a.length, b.buffer, b.length);
    length = a.length + b.length;
    buffer[length] = 0;
}

XN_String XN_String::Substring(unsigned int start) const {
    return Substring(start, length);
}

XN_String XN_String::Substring(unsigned int start, unsigned int count) const {
    XN_String result;
    result.THIS_CopyString(*this, start, count);
    return result;
}

XN_String XN_String::EndSubstring(unsigned int count, unsigned int skip) const {
    if (buffer == nullptr || length < skip || count > length - skip)
        return XN_String();
    return Substring(length - (count + skip), count);
}

// ---- XN_CString --------------------------------------------------------------------------------------

XN_CString::XN_CString(const XN_CString& other) {
    *this = other;
}

XN_CString::XN_CString(XN_CString&& other) noexcept {
    *this = static_cast<XN_CString&&>(other);
}

XN_CString& XN_CString::operator=(const XN_CString& other) {
    if (this == &other)
        return *this;
    char* copy = nullptr;
    if (other.bytes != nullptr) {
        copy = new char[other.byteCount];
        std::memcpy(copy, other.bytes, other.byteCount);
    }
    Adopt(copy, other.byteCount, other.encoding);
    return *this;
}

XN_CString& XN_CString::operator=(XN_CString&& other) noexcept {
    if (this != &other) {
        Adopt(other.bytes, other.byteCount, other.encoding);
        other.bytes = nullptr;
        other.byteCount = 0;
    }
    return *this;
}

void XN_CString::Adopt(char* newBytes, unsigned int count, XN_String::Encoding enc) {
    delete[] bytes;
    bytes = newBytes;
    byteCount = newBytes != nullptr ? count : 0;
    encoding = enc;
}
