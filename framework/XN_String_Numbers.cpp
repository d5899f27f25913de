// XN_String number parsing and printing.
//
// The parsers are lenient in the ways the suite's files rely on: they skip to the first digit, take
// "," as well as "." as decimal separator, and answer the type's largest value when there is no
// number at all.
#include "XN_String.hpp"

#include <cfloat>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <string>

namespace {

bool IsDigit(unsigned int c) {
    return c >= '0' && c <= '9';
}
bool IsSeparator(unsigned int c) {
    return c == '.' || c == ',';
}

// Accumulates decimal digits from `p` on, wrapping silently on overflow.
std::uint64_t ReadDigits(const char*& p) {
    std::uint64_t value = 0;
    for (; IsDigit(static_cast<unsigned char>(*p)); ++p)
        value = value * 10 + static_cast<std::uint64_t>(*p - '0');
    return value;
}

bool AtDigit(const char* p) {
    return IsDigit(static_cast<unsigned char>(*p));
}

// The shared prefix of IsIntegerNumber and IsNumber: spaces, one optional sign, spaces. Returns the
// position of what follows.
template <class Unit>
std::size_t SkipSignPrefix(const Unit* text, std::size_t n) {
    std::size_t i = 0;
    while (i < n && text[i] == ' ')
        ++i;
    if (i < n && (text[i] == '+' || text[i] == '-'))
        ++i;
    while (i < n && text[i] == ' ')
        ++i;
    return i;
}

template <class Unit>
bool IsIntegerText(const Unit* text, std::size_t n) {
    std::size_t i = SkipSignPrefix(text, n);
    if (i == n)
        return false;
    for (; i < n; ++i)
        if (!IsDigit(text[i]))
            return false;
    return true;
}

template <class Unit>
bool IsNumberText(const Unit* text, std::size_t n) {
    std::size_t i = SkipSignPrefix(text, n);
    if (i == n)
        return false;
    bool separatorSeen = false;
    for (; i < n; ++i) {
        if (IsDigit(text[i]))
            continue;
        if (!IsSeparator(text[i]) || separatorSeen || i + 1 == n || !IsDigit(text[i + 1]))
            return false;
        separatorSeen = true;
    }
    return true;
}

// Multiplies or divides by 10 `count` times; stops early once the value can no longer change.
double ApplyExponent(double value, std::int64_t count, bool negative) {
    for (std::int64_t i = 0; i < count && value != 0.0 && value <= DBL_MAX && value >= -DBL_MAX; ++i)
        value = negative ? value / 10.0 : value * 10.0;
    return value;
}

XN_String Printed(const char* format, ...) __attribute__((format(printf, 1, 2)));

// printf of any length, read in Encoding_SystemDefault.
XN_String Printed(const char* format, ...) {
    va_list args;
    va_start(args, format);
    va_list again;
    va_copy(again, args);
    int needed = std::vsnprintf(nullptr, 0, format, args);
    va_end(args);
    std::string text(needed > 0 ? static_cast<std::size_t>(needed) : 0, '\0');
    std::vsnprintf(&text[0], text.size() + 1, format, again);
    va_end(again);
    return XN_String(text.c_str());
}

} // namespace

std::int64_t XN_String::ToLong(const char* text) {
    if (text == nullptr || *text == 0)
        return 0;
    const char* p = text;
    bool negative = false;
    while (*p != 0 && !AtDigit(p)) {
        if (*p == '-') {
            negative = true;
            if (!AtDigit(++p))
                return 0;
            break;
        }
        ++p;
    }
    if (*p == 0)
        return INT64_MAX;
    std::uint64_t value = ReadDigits(p);
    return static_cast<std::int64_t>(negative ? 0 - value : value);
}

std::uint64_t XN_String::ToULong(const char* text) {
    if (text == nullptr || *text == 0)
        return 0;
    const char* p = text;
    while (*p != 0 && !AtDigit(p))
        ++p;
    if (*p == 0)
        return UINT64_MAX;
    return ReadDigits(p);
}

double XN_String::ToDouble(const char* text) {
    if (text == nullptr || *text == 0)
        return 0.0;
    const char* p = text;
    double sign = 1.0;
    while (!AtDigit(p)) {
        if (*p == 0)
            return DBL_MAX;
        if (IsSeparator(*p))
            break;
        if (*p++ == '-') {
            sign = -1.0;
            break;
        }
    }
    double value = 0.0;
    for (; AtDigit(p); ++p)
        value = value * 10.0 + (*p - '0');
    if (IsSeparator(*p)) {
        if (!AtDigit(++p))
            return DBL_MAX;
        for (double weight = 0.1; AtDigit(p); ++p, weight /= 10.0)
            value += (*p - '0') * weight;
    }
    // Only "e+" and "e-" start an exponent: "E" and an unsigned count are not read.
    if (p[0] == 'e' && (p[1] == '+' || p[1] == '-') && AtDigit(p + 2))
        value = ApplyExponent(value, ToLong(p + 2), p[1] == '-');
    return sign * value;
}

bool XN_String::IsIntegerNumber(const char* text) {
    return IsIntegerText(text, Length(text));
}

bool XN_String::IsIntegerNumber(const XN_String& text) {
    return IsIntegerText(text.buffer, text.length);
}

bool XN_String::IsNumber(const char* text) {
    return IsNumberText(text, Length(text));
}

bool XN_String::IsNumber(const XN_String& text) {
    return IsNumberText(text.buffer, text.length);
}

XN_String XN_String::LongToString(const long& value, unsigned int width) {
    if (width == 0)
        return Printed("%ld", value);
    char format[32];
    std::snprintf(format, sizeof format, "%c%uld", '%', width);
    return Printed(format, value);
}

XN_String XN_String::DoubleToString(double value, unsigned int width, unsigned int decimals) {
    char widthPart[16] = "";
    if (width != 0)
        std::snprintf(widthPart, sizeof widthPart, "%u", width);
    char precisionPart[16] = "g";
    if (decimals != 0)
        std::snprintf(precisionPart, sizeof precisionPart, ".%uf", decimals);
    char format[40];
    std::snprintf(format, sizeof format, "%c%s%s", '%', widthPart, precisionPart);
    return Printed(format, value);
}

XN_String XN_String::DoubleToString(double value, int decimals) {
    if (decimals < 0)
        return Printed("%g", value);
    return Printed("%.*f", decimals, value);
}

XN_String XN_String::Format(const char* format, ...) {
    char text[2048];
    va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return XN_String(text);
}
