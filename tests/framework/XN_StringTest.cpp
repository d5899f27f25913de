// XN_String core: null versus empty, allocation, appends, comparison, element access, sub-strings.
#include "XN_StringTest.hpp"

#include <gtest/gtest.h>

#include <string>

using xn_test::FromUtf8;
using xn_test::Show;

namespace {

// Opens the protected allocation workers to the tests.
struct Probe : XN_String {
    using XN_String::THIS_Alloc;
    using XN_String::XN_String;
};

const unsigned short kWithZeros[] = {'a', 0, 'b', 0};

TEST(XN_StringConstruction, NullAndEmptyAreDistinct) {
    struct Case {
        const char* name;
        XN_String s;
        bool null;
        unsigned int capacity;
    } cases[] = {
        {"default", XN_String(), true, 0},
        {"null char*", XN_String(static_cast<const char*>(nullptr)), true, 0},
        {"empty char*", XN_String(""), false, 1},
        {"null units", XN_String(static_cast<const unsigned short*>(nullptr)), true, 0},
        {"units, count 0", XN_String(kWithZeros, 0), true, 0},
        {"terminated units", XN_String(kWithZeros + 1), false, 1},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.s.IsNull(), c.null);
        EXPECT_EQ(c.s.GetLength(), 0u);
        EXPECT_EQ(c.s.GetCapacity(), c.capacity);
        if (!c.null) {
            EXPECT_EQ(c.s.GetBuffer()[0], 0);
        }
    }
    EXPECT_EQ(XN_String::Compare(XN_String(static_cast<const char*>(nullptr)), 0, XN_String(""), 0, 0), -1);
}

TEST(XN_StringConstruction, TakeOverLeavesTheSourceNull) {
    XN_String source("abc");
    const unsigned short* units = source.GetBuffer();
    XN_String taken(&source);
    EXPECT_TRUE(source.IsNull());
    EXPECT_EQ(taken.GetBuffer(), units);
    EXPECT_EQ(Show(taken), "abc");
}

TEST(XN_StringAllocation, AllocNeverShrinksAndKeepsTheLength) {
    Probe s("abcdef");
    s.THIS_Alloc(3, false);
    EXPECT_EQ(Show(s), "abcdef");
    EXPECT_EQ(s.GetCapacity(), 7u);
    s.THIS_Alloc(20, true);
    EXPECT_EQ(Show(s), "abcdef");
    EXPECT_EQ(s.GetCapacity(), 20u);
    s.THIS_Alloc(30, false);
    EXPECT_EQ(s.GetLength(), 0u);
}

TEST(XN_StringAllocation, SetSizeAlwaysReallocates) {
    XN_String s("abcdef");
    const unsigned short* before = s.GetBuffer();
    s.SetSize(4, true);
    EXPECT_NE(s.GetBuffer(), before);
    EXPECT_EQ(Show(s), "abc");
    EXPECT_EQ(s.GetCapacity(), 4u);
    s.SetSize(10, true);
    EXPECT_EQ(Show(s), "abc");
    s.SetSize(5, false);
    EXPECT_EQ(s.GetLength(), 0u);
    EXPECT_EQ(s.GetCapacity(), 5u);
}

TEST(XN_StringAllocation, AssigningAShorterTextReusesTheBuffer) {
    XN_String s("a longer text");
    const unsigned short* before = s.GetBuffer();
    s = "short";
    EXPECT_EQ(s.GetBuffer(), before);
    EXPECT_EQ(s.GetCapacity(), 14u);
    EXPECT_EQ(Show(s), "short");
}

TEST(XN_StringAllocation, AppendsAfterReservingDoNotReallocate) {
    XN_String s("/folder");
    s.SetSize(s.GetLength() + 12 + 1, true);
    const unsigned short* before = s.GetBuffer();
    s += "/";
    s += XN_String("MVL_Library");
    EXPECT_EQ(s.GetBuffer(), before);
    EXPECT_EQ(Show(s), "/folder/MVL_Library");
}

TEST(XN_StringAppend, EmbeddedZeroUnitsAreCopied) {
    XN_String zeros(kWithZeros, 4);
    XN_String s("x");
    s += zeros;
    ASSERT_EQ(s.GetLength(), 5u);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(s.GetBuffer()), 6),
              std::u16string(u"xa\0b\0\0", 6));
    XN_String joined = zeros + zeros;
    EXPECT_EQ(joined.GetLength(), 8u);
    EXPECT_EQ(joined.UCharAt(6), 'b');
    s += s;
    EXPECT_EQ(s.GetLength(), 10u);
}

TEST(XN_StringAppend, ConcatenationOfNullAndEmpty) {
    XN_String null;
    EXPECT_TRUE((null + null).IsNull());
    EXPECT_FALSE((null + XN_String("")).IsNull());
    EXPECT_EQ(Show("ab" + XN_String("cd") + "ef"), "abcdef");
    null += static_cast<const char*>(nullptr);
    EXPECT_TRUE(null.IsNull());
}

TEST(XN_StringAppend, SetCatTakesEachPieceUpToItsCount) {
    struct Case {
        const char* a;
        unsigned int na;
        const char* b;
        unsigned int nb;
        const char* c;
        unsigned int nc;
        const char* expected;
    } cases[] = {
        {"abc", 0, "def", 2, "ghi", 9, "abcdeghi"},
        {"abc", 3, nullptr, 5, "x", 1, "abcx"},
        {nullptr, 0, nullptr, 0, nullptr, 0, "<null>"},
        {"", 0, "", 0, "", 0, "<null>"},
        {"abc", 1, "", 0, nullptr, 0, "a"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        XN_String s("old");
        s.SetCat(c.a, c.na, c.b, c.nb, c.c, c.nc);
        EXPECT_EQ(Show(s), c.expected);
    }
}

TEST(XN_StringCompare, CountsStartsCaseAndNull) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    XN_String null;
    struct Case {
        const char* name;
        XN_String a;
        unsigned int aStart;
        XN_String b;
        unsigned int bStart;
        unsigned int count;
        int expected;
        int expectedIgnoringCase;
    } cases[] = {
        {"equal", "abc", 0, "abc", 0, 0, 0, 0},
        {"prefix sorts first", "ab", 0, "abc", 0, 0, -1, -1},
        {"count stops before the difference", "abX", 0, "abY", 0, 2, 0, 0},
        {"count reaches the difference", "abX", 0, "abY", 0, 3, -1, -1},
        {"start indices", "xxabc", 2, "abc", 0, 0, 0, 0},
        {"start past the end reads as the end", "abc", 9, "", 0, 0, 0, 0},
        {"case", "ABC", 0, "abd", 0, 0, -1, -1},
        {"case only", "ÉTÉ", 0, "été", 0, 0, -1, 0},
        {"units unsigned", "\xEF\xBF\xBF", 0, "a", 0, 0, 1, 1},
        {"null before empty", null, 0, "", 0, 0, -1, -1},
        {"empty after null", "", 0, null, 0, 0, 1, 1},
        {"two nulls", null, 0, null, 0, 0, 0, 0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(XN_String::Compare(c.a, c.aStart, c.b, c.bStart, c.count), c.expected);
        EXPECT_EQ(XN_String::CompareIgnoreCase(c.a, c.aStart, c.b, c.bStart, c.count),
                  c.expectedIgnoringCase);
    }
    EXPECT_TRUE(null < XN_String(""));
    EXPECT_TRUE(XN_String("b") >= XN_String("a"));
}

TEST(XN_StringElements, AccessInAndOutOfRange) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    XN_String s = FromUtf8("aé");
    EXPECT_EQ(s.UCharAt(1), 0xE9);
    EXPECT_EQ(s.UCharAt(2), 0);
    EXPECT_EQ(s.CharAt(0), 'a');
    EXPECT_EQ(s.CharAt(1), '?'); // no one-byte form in UTF-8
    EXPECT_EQ(s.CharAt(5), 0);
    s.SetUCharAt(2, 'x');
    s.SetCharAt(0, 'b');
    EXPECT_EQ(Show(s), "bé");
    s.SetCharAt(0, '\xE9'); // not a UTF-8 character on its own
    EXPECT_EQ(s.UCharAt(0), 0);
    XN_String().SetUCharAt(0, 'x');
    EXPECT_EQ(XN_String().CharAt(0), 0);
    EXPECT_EQ(XN_String::XN_CharToUpperCase(0xE9), 0xC9);
    EXPECT_EQ(XN_String::XN_CharToLowerCase('Q'), 'q');
}

TEST(XN_StringElements, SingleCharacterConversions) {
    EXPECT_EQ(XN_String::XN_CharToChar(0x4E2D, XN_String::Encoding_ISOLatin1), '?');
    EXPECT_EQ(XN_String::XN_CharToChar(0x20AC, XN_String::Encoding_WindowsLatin1), '\x80');
    EXPECT_EQ(XN_String::XN_CharToChar(0xE9, XN_String::Encoding_MacRoman), '\x8E');
    EXPECT_EQ(XN_String::CharToXN_Char('\x80', XN_String::Encoding_WindowsLatin1), 0x20AC);
    EXPECT_EQ(XN_String::CharToXN_Char('\x80', XN_String::Encoding_ASCII), 0);
    EXPECT_EQ(XN_String::CharToXN_Char('a', XN_String::Encoding_Unknown), 0);
}

TEST(XN_StringSubstrings, AtAndPastTheEnds) {
    XN_String s("abcdef");
    struct Case {
        const char* name;
        XN_String result;
        const char* expected;
    } cases[] = {
        {"from start", s.Substring(2), "cdef"},
        {"at length", s.Substring(6), ""},
        {"past length", s.Substring(7), "<null>"},
        {"count clamped", s.Substring(4, 100), "ef"},
        {"count 0", s.Substring(1, 0), ""},
        {"of null", XN_String().Substring(0), "<null>"},
        {"end", s.EndSubstring(3, 0), "def"},
        {"end with skip", s.EndSubstring(3, 1), "cde"},
        {"end whole", s.EndSubstring(6, 0), "abcdef"},
        {"end too long", s.EndSubstring(7, 0), "<null>"},
        {"skip too long", s.EndSubstring(0, 7), "<null>"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Show(c.result), c.expected);
    }
}

} // namespace
