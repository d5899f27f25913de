#include "UniString.hpp"

#include <unicode/ustring.h>

#include <algorithm>

namespace GS {

UniString::UniString() : units(1, 0) {}

UniString::UniString(const uchar_t* uStr) : units(1, 0) {
    if (uStr == nullptr)
        return;
    const uchar_t* end = uStr;
    while (*end != 0)
        ++end;
    units.assign(uStr, end);
    units.push_back(0);
}

UniString::UniString(const uchar_t* uChars, USize charCount) : units(1, 0) {
    if (uChars == nullptr)
        return;
    units.assign(uChars, uChars + charCount);
    units.push_back(0);
}

UniString::UniString(const char* cStr, GSCharCode /*charCode*/) : units(1, 0) {
    if (cStr == nullptr || *cStr == 0)
        return;
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = 0;
    u_strFromUTF8WithSub(nullptr, 0, &needed, cStr, -1, 0xFFFD, nullptr, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status))
        return;
    std::vector<uchar_t> converted(static_cast<size_t>(needed) + 1, 0);
    status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(reinterpret_cast<UChar*>(converted.data()), needed + 1, nullptr, cStr, -1, 0xFFFD,
                         nullptr, &status);
    if (U_SUCCESS(status))
        units = std::move(converted);
}

USize UniString::GetLength() const {
    return static_cast<USize>(units.size() - 1);
}

bool UniString::IsEmpty() const {
    return units.size() == 1;
}

const uchar_t* UniString::ToUStr() const {
    return units.data();
}

std::string UniString::ToUTF8() const {
    const auto* src = reinterpret_cast<const UChar*>(units.data());
    const auto length = static_cast<int32_t>(GetLength());
    UErrorCode status = U_ZERO_ERROR;
    int32_t needed = 0;
    u_strToUTF8WithSub(nullptr, 0, &needed, src, length, 0xFFFD, nullptr, &status);
    if (status != U_BUFFER_OVERFLOW_ERROR && U_FAILURE(status))
        return std::string();
    std::string out(static_cast<size_t>(needed), '\0');
    status = U_ZERO_ERROR;
    u_strToUTF8WithSub(out.data(), needed, nullptr, src, length, 0xFFFD, nullptr, &status);
    return U_SUCCESS(status) || status == U_STRING_NOT_TERMINATED_WARNING ? out : std::string();
}

UniString::CStr UniString::ToCStr(GSCharCode /*charCode*/) const {
    return CStr(ToUTF8());
}

uchar_t UniString::operator[](UIndex index) const {
    return index < GetLength() ? units[index] : 0;
}

UniString& UniString::operator+=(const UniString& other) {
    units.pop_back();
    units.insert(units.end(), other.units.begin(), other.units.end());
    return *this;
}

UniString UniString::operator+(const UniString& other) const {
    UniString result(*this);
    result += other;
    return result;
}

bool UniString::operator==(const UniString& other) const {
    return units == other.units;
}

bool UniString::operator<(const UniString& other) const {
    return std::lexicographical_compare(units.begin(), units.end(), other.units.begin(), other.units.end());
}

} // namespace GS
