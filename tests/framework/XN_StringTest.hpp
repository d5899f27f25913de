// Helpers shared by the XN_String tests: readable views of a string that do not go through the
// converter under test, and a locale switch for tests that depend on the system encoding.
#pragma once

#include "XN_String.hpp"

#include <unicode/ustring.h>

#include <gtest/gtest.h>

#include <clocale>
#include <initializer_list>
#include <string>
#include <tuple>

namespace xn_test {

// The units of `s` as UTF-8 (by ICU, not by XN_String), or "<null>" for the null string.
inline std::string Show(const XN_String& s) {
    if (s.IsNull())
        return "<null>";
    std::string text(4 * s.GetLength() + 1, '\0');
    int32_t written = 0;
    UErrorCode err = U_ZERO_ERROR;
    u_strToUTF8WithSub(&text[0], static_cast<int32_t>(text.size()), &written,
                       reinterpret_cast<const UChar*>(s.GetBuffer()), static_cast<int32_t>(s.GetLength()),
                       0xFFFD, nullptr, &err);
    text.resize(U_SUCCESS(err) ? static_cast<std::size_t>(written) : 0);
    return text;
}

// A string from UTF-8 source text (by ICU, not by XN_String's converter).
inline XN_String FromUtf8(const std::string& utf8) {
    std::u16string units(utf8.size() + 1, u'\0');
    int32_t length = 0;
    UErrorCode err = U_ZERO_ERROR;
    u_strFromUTF8(reinterpret_cast<UChar*>(&units[0]), static_cast<int32_t>(units.size()), &length,
                  utf8.data(), static_cast<int32_t>(utf8.size()), &err);
    // Built from a 0-terminated copy, so that "" gives the empty string rather than the null one.
    units.resize(static_cast<std::size_t>(length) + 1);
    units[static_cast<std::size_t>(length)] = u'\0';
    return XN_String(reinterpret_cast<const unsigned short*>(units.data()));
}

// A table of cases, each row its name, what the operation gave and what it should give.
template <class T>
void ExpectRows(std::initializer_list<std::tuple<const char*, T, T>> rows) {
    for (const auto& [name, actual, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(actual, expected);
    }
}

// Switches LC_ALL for the scope of a test and restores the previous locale.
class ScopedLocale {
public:
    explicit ScopedLocale(const char* name) : previous(std::setlocale(LC_ALL, nullptr)) {
        std::setlocale(LC_ALL, name);
    }
    ~ScopedLocale() { std::setlocale(LC_ALL, previous.c_str()); }
    ScopedLocale(const ScopedLocale&) = delete;
    ScopedLocale& operator=(const ScopedLocale&) = delete;

private:
    std::string previous;
};

} // namespace xn_test
