// XN_String core: null versus empty, allocation, appends, comparison, element access, sub-strings.
#include "XN_StringTest.hpp"

using xn_test::ExpectRows;
using xn_test::FromUtf8;
using xn_test::Show;

namespace {

// Opens the protected allocation worker to the tests.
struct Probe : XN_String {
    using XN_String::THIS_Alloc;
    using XN_String::XN_String;
};

const unsigned short kWithZeros[] = {'a', 0, 'b', 0};
const XN_String kNull;

TEST(XN_StringConstruction, NullAndEmptyAreDistinct) {
    ExpectRows<std::string>({
        {"default", Show(XN_String()), "<null>"},
        {"null char*", Show(XN_String(static_cast<const char*>(nullptr))), "<null>"},
        {"null units", Show(XN_String(static_cast<const unsigned short*>(nullptr))), "<null>"},
        {"units, count 0", Show(XN_String(kWithZeros, 0)), "<null>"},
        {"empty char*", Show(XN_String("")), ""},
        {"terminated units", Show(XN_String(kWithZeros + 1)), ""},
    });
    XN_String empty("");
    EXPECT_EQ(empty.GetCapacity(), 1u);
    EXPECT_EQ(empty.GetBuffer()[0], 0);
    EXPECT_EQ(XN_String::Compare(kNull, 0, empty, 0, 0), -1);
    XN_String taken(&empty);
    EXPECT_TRUE(empty.IsNull());
    EXPECT_EQ(taken.GetCapacity(), 1u);
}

TEST(XN_StringAllocation, AllocNeverShrinksSetSizeAlwaysReallocatesAndRoomIsReused) {
    Probe s("abcdef");
    s.THIS_Alloc(3, false);
    EXPECT_EQ(Show(s), "abcdef");
    s.THIS_Alloc(20, true);
    EXPECT_EQ(Show(s), "abcdef");
    EXPECT_EQ(s.GetCapacity(), 20u);
    s.THIS_Alloc(30, false);
    EXPECT_EQ(s.GetLength(), 0u);

    XN_String t("abcdef");
    const unsigned short* before = t.GetBuffer();
    t.SetSize(4, true);
    EXPECT_NE(t.GetBuffer(), before);
    EXPECT_EQ(Show(t), "abc");
    EXPECT_EQ(t.GetCapacity(), 4u);
    t.SetSize(5, false);
    EXPECT_EQ(t.GetLength(), 0u);
    EXPECT_EQ(t.GetCapacity(), 5u);
    // Reserved room is reused by assignments and appends.
    XN_String u("a longer text");
    const unsigned short* reserved = u.GetBuffer();
    u = "/folder";
    u += "/";
    u += XN_String("MVL");
    EXPECT_EQ(u.GetBuffer(), reserved);
    EXPECT_EQ(u.GetCapacity(), 14u);
    EXPECT_EQ(Show(u), "/folder/MVL");
}

TEST(XN_StringAppend, ConcatenationSetCatAndEmbeddedZeroUnits) {
    // Embedded zero units are copied.
    XN_String zeros(kWithZeros, 4);
    XN_String s("x");
    s += zeros;
    ASSERT_EQ(s.GetLength(), 5u);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(s.GetBuffer()), 6),
              std::u16string(u"xa\0b\0\0", 6));
    EXPECT_EQ((zeros + zeros).UCharAt(6), 'b');
    s += s;
    EXPECT_EQ(s.GetLength(), 10u);
    auto setCat = [](const char* a, unsigned na, const char* b, unsigned nb, const char* c, unsigned nc) {
        XN_String s("old");
        s.SetCat(a, na, b, nb, c, nc);
        return Show(s);
    };
    ExpectRows<std::string>({
        {"null + null", Show(kNull + kNull), "<null>"},
        {"null + empty", Show(kNull + ""), ""},
        {"mixed operands", Show("ab" + XN_String("cd") + "ef"), "abcdef"},
        {"SetCat counts", setCat("abc", 0, "def", 2, "ghi", 9), "abcdeghi"},
        {"SetCat null piece", setCat("abc", 3, nullptr, 5, "x", 1), "abcx"},
        {"SetCat all null", setCat(nullptr, 0, nullptr, 0, nullptr, 0), "<null>"},
        {"SetCat all empty", setCat("", 0, "", 0, "", 0), "<null>"},
    });
}

TEST(XN_StringCompare, CountsStartsCaseAndNull) {
    xn_test::ScopedLocale utf8("C.UTF-8"); // towlower of letters beyond ASCII
    const std::tuple<const char*, XN_String, unsigned, XN_String, unsigned, unsigned, int, int> cases[] = {
        // name, a, aStart, b, bStart, count, Compare, CompareIgnoreCase
        {"equal", "abc", 0, "abc", 0, 0, 0, 0},
        {"prefix sorts first", "ab", 0, "abc", 0, 0, -1, -1},
        {"count stops before the difference", "abX", 0, "abY", 0, 2, 0, 0},
        {"count reaches the difference", "abX", 0, "abY", 0, 3, -1, -1},
        {"start indices", "xxabc", 2, "abc", 0, 0, 0, 0},
        {"start past the end reads as the end", "abc", 9, "", 0, 0, 0, 0},
        {"case only", FromUtf8("ÉTÉ"), 0, FromUtf8("été"), 0, 0, -1, 0},
        {"units unsigned", FromUtf8("\uFFFF"), 0, "a", 0, 0, 1, 1},
        {"null before empty", kNull, 0, "", 0, 0, -1, -1},
        {"empty after null", "", 0, kNull, 0, 0, 1, 1},
        {"two nulls", kNull, 0, kNull, 0, 0, 0, 0},
    };
    for (const auto& [name, a, aStart, b, bStart, count, expected, expectedIgnoringCase] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(XN_String::Compare(a, aStart, b, bStart, count), expected);
        EXPECT_EQ(XN_String::CompareIgnoreCase(a, aStart, b, bStart, count), expectedIgnoringCase);
    }
    EXPECT_TRUE(kNull < XN_String(""));
    EXPECT_TRUE(XN_String("b") >= XN_String("a"));
}

TEST(XN_StringElements, AccessInAndOutOfRange) {
    xn_test::ScopedLocale utf8("C.UTF-8"); // towupper of letters beyond ASCII
    XN_String s = FromUtf8("a中");
    EXPECT_EQ(s.UCharAt(2), 0);
    EXPECT_EQ(s.CharAt(1), '?'); // no one-byte form in the 8-bit default
    EXPECT_EQ(s.CharAt(5), 0);
    s.SetUCharAt(2, 'x');
    s.SetCharAt(0, '\xE9');
    EXPECT_EQ(Show(s), "é中");
    EXPECT_EQ(XN_String::XN_CharToUpperCase(0xE9), 0xC9);
    ExpectRows<unsigned>({
        {"to Latin-1",
         static_cast<unsigned char>(XN_String::XN_CharToChar(0x4E2D, XN_String::Encoding_ISOLatin1)), '?'},
        {"to 1252",
         static_cast<unsigned char>(XN_String::XN_CharToChar(0x20AC, XN_String::Encoding_WindowsLatin1)),
         0x80},
        {"from 1252", XN_String::CharToXN_Char('\x80', XN_String::Encoding_WindowsLatin1), 0x20AC},
        {"from ASCII", XN_String::CharToXN_Char('\x80', XN_String::Encoding_ASCII), 0},
        {"from unknown", XN_String::CharToXN_Char('a', XN_String::Encoding_Unknown), 0},
    });
}

TEST(XN_StringSubstrings, AtAndPastTheEnds) {
    XN_String s("abcdef");
    ExpectRows<std::string>({
        {"from start", Show(s.Substring(2)), "cdef"},
        {"at length", Show(s.Substring(6)), ""},
        {"past length", Show(s.Substring(7)), "<null>"},
        {"count clamped", Show(s.Substring(4, 100)), "ef"},
        {"of null", Show(kNull.Substring(0)), "<null>"},
        {"end", Show(s.EndSubstring(3, 0)), "def"},
        {"end with skip", Show(s.EndSubstring(3, 1)), "cde"},
        {"end whole", Show(s.EndSubstring(6, 0)), "abcdef"},
        {"end too long", Show(s.EndSubstring(7, 0)), "<null>"},
        {"skip too long", Show(s.EndSubstring(0, 7)), "<null>"},
    });
}

} // namespace
