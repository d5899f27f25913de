// XN_String text operations: search, replacement, trimming, the three splitters, the 8-bit helpers,
// number parsing and printing, byte-order marks, UTF-8 validation and TextToString's guesses.
#include "XN_List.hpp"
#include "XN_StringTest.hpp"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

using xn_test::FromUtf8;
using xn_test::Show;

namespace {

using E = XN_String;
constexpr unsigned int kNone = XN_String::kNotFound;

std::vector<std::string> Shown(const XN_List<XN_String>& list) {
    std::vector<std::string> pieces;
    for (long i = 0; i < list.GetCount(); ++i)
        pieces.push_back(Show(list[i]));
    return pieces;
}

TEST(XN_StringSearch, FindsAndRejects) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    XN_String hello("hello"), null;
    struct Case {
        const char* name;
        unsigned int found;
        unsigned int expected;
    } cases[] = {
        {"IndexOf", hello.IndexOf("lo", 0), 3},
        {"IndexOf past the match", hello.IndexOf("lo", 4), kNone},
        {"IndexOf from the length", hello.IndexOf("o", 5), kNone},
        {"IndexOf empty", hello.IndexOf("", 0), kNone},
        {"IndexOf null", hello.IndexOf(null, 0), kNone},
        {"IndexOf in null", null.IndexOf("a", 0), kNone},
        {"IndexOf longer than the text", hello.IndexOf("hello!", 0), kNone},
        {"IndexOfIgnoreCase", FromUtf8("aÉTÉ").IndexOfIgnoreCase(FromUtf8("été"), 0), 1},
        {"IndexOf is case-sensitive", FromUtf8("aÉTÉ").IndexOf(FromUtf8("été"), 0), kNone},
        {"LastIndexOf", XN_String("abcab").LastIndexOf("ab"), 3},
        {"LastIndexOf match extends past from", XN_String("abcab").LastIndexOf("ab", 3), 3},
        {"LastIndexOf from before", XN_String("abcab").LastIndexOf("ab", 2), 0},
        {"LastIndexOf in empty", XN_String("").LastIndexOf("a"), kNone},
        {"IndexOf char", hello.IndexOf('l', 0), 2},
        {"IndexOf char 0", hello.IndexOf('\0', 0), kNone},
        {"LastIndexOf char", hello.LastIndexOf('l'), 3},
        {"LastIndexOf char from", hello.LastIndexOf('l', 2), 2},
        {"LastIndexOf char missing", hello.LastIndexOf('z'), kNone},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.found, c.expected);
    }
}

TEST(XN_StringSearch, PrefixesAndSuffixes) {
    XN_String s("abcdef"), null;
    EXPECT_TRUE(s.StartsWith("abc"));
    EXPECT_TRUE(s.StartsWith("cd", 2));
    EXPECT_FALSE(s.StartsWith("cd", 6));
    EXPECT_FALSE(s.StartsWith("abcdefg"));
    EXPECT_FALSE(s.StartsWith(""));
    EXPECT_FALSE(null.StartsWith("a"));
    EXPECT_TRUE(s.EndsWith("def"));
    EXPECT_TRUE(s.EndsWith("abcdef"));
    EXPECT_FALSE(s.EndsWith("xabcdef"));
    EXPECT_FALSE(s.EndsWith(""));
    EXPECT_FALSE(s.EndsWith(null));
}

TEST(XN_StringTransform, ReplaceTrimRepeatAndCase) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    XN_String null;
    struct Case {
        const char* name;
        XN_String result;
        const char* expected;
    } cases[] = {
        {"no overlap", XN_String("aaa").Replace("aa", "b"), "ba"},
        {"growing", XN_String("a.b.c").Replace(".", "::"), "a::b::c"},
        {"to nothing", XN_String("xax").Replace("x", ""), "a"},
        {"empty find never matches", XN_String("abc").Replace("", "x"), "abc"},
        {"null find", XN_String("abc").Replace(null, XN_String("x")), "<null>"},
        {"null source", null.Replace("a", "b"), "<null>"},
        {"char", XN_String("a-b-c").Replace('-', '+'), "a+b+c"},
        {"trim both with tabs", XN_String(" \t a b\t ").THIS_Trim(true, true, true), "a b"},
        {"trim spaces only", XN_String(" \ta ").THIS_Trim(true, true, false), "\ta"},
        {"trim left", XN_String("  a  ").THIS_Trim(true, false, false), "a  "},
        {"trim to empty", XN_String("   ").THIS_Trim(true, true, false), ""},
        {"trim null", null.THIS_Trim(true, true, true), "<null>"},
        {"repeat", XN_String::RepeatedSequence("ab", 3), "ababab"},
        {"repeat 0", XN_String::RepeatedSequence("ab", 0), ""},
        {"repeat negative", XN_String::RepeatedSequence("ab", -1), "<null>"},
        {"lower", FromUtf8("ÀbC").ToLowerCase(), "àbc"},
        {"upper", FromUtf8("àbc").ToUpperCase(), "ÀBC"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(Show(c.result), c.expected);
    }
}

TEST(XN_StringTransform, ReplaceRangeInPlace) {
    struct Case {
        unsigned int first, last;
        const char* repl;
        bool done;
        const char* expected;
    } cases[] = {
        {2, 3, "XYZ", true, "aXYZdef"}, {2, 5, "", true, "af"},       {5, 99, "!", true, "abcd!"},
        {6, 6, "F", true, "abcdeF"},    {0, 2, "x", false, "abcdef"}, {3, 2, "x", false, "abcdef"},
        {7, 8, "x", false, "abcdef"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        XN_String s("abcdef");
        s.SetSize(32, true);
        EXPECT_EQ(s.Replace(c.first, c.last, XN_String(c.repl)), c.done);
        EXPECT_EQ(Show(s), c.expected);
    }
}

TEST(XN_StringTransform, ReplaceRangeBeyondCapacityDropsTheRestOfTheText) {
    XN_String s("abcdef");
    ASSERT_EQ(s.GetCapacity(), 7u);
    ASSERT_TRUE(s.Replace(2, 2, XN_String("1234")));
    ASSERT_EQ(s.GetLength(), 9u);
    EXPECT_EQ(s.UCharAt(0), 0);
    EXPECT_EQ(Show(s.Substring(1, 4)), "1234");
}

TEST(XN_StringSplit, PiecesAndNullPieces) {
    const std::string N = "<null>";
    XN_String null;
    struct Case {
        const char* name;
        void (*split)(const XN_String&, XN_List<XN_String>&);
        XN_String text;
        std::vector<std::string> expected;
    } cases[] = {
        {"Split", [](const XN_String& s, XN_List<XN_String>& l) { s.Split(l, ','); }, "a,,b", {"a", N, "b"}},
        {"Split trailing",
         [](const XN_String& s, XN_List<XN_String>& l) { s.Split(l, ','); },
         "a,",
         {"a", N}},
        {"Split empty", [](const XN_String& s, XN_List<XN_String>& l) { s.Split(l, ','); }, "", {N}},
        {"Split null", [](const XN_String& s, XN_List<XN_String>& l) { s.Split(l, ','); }, null, {N}},
        {"lines without ends",
         [](const XN_String& s, XN_List<XN_String>& l) { s.SplitLines(l, true, true); },
         "a\r\nb\rc\n\nd\n",
         {"a", "b", "c", N, "d", N}},
        {"lines with ends",
         [](const XN_String& s, XN_List<XN_String>& l) { s.SplitLines(l, false, true); },
         "a\r\nb\rc\n",
         {"a\r\n", "b\r", "c\n", N}},
        {"lines of null",
         [](const XN_String& s, XN_List<XN_String>& l) { s.SplitLines(l, true, true); },
         null,
         {N}},
        {"words",
         [](const XN_String& s, XN_List<XN_String>& l) { s.SplitBySpaces(l); },
         " a \t b ",
         {N, "a", "b", N}},
        {"words of one", [](const XN_String& s, XN_List<XN_String>& l) { s.SplitBySpaces(l); }, "ab", {"ab"}},
        {"words of empty", [](const XN_String& s, XN_List<XN_String>& l) { s.SplitBySpaces(l); }, "", {N}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_List<XN_String> list;
        list.AddData(XN_String("stale"), -1);
        c.split(c.text, list);
        EXPECT_EQ(Shown(list), c.expected);
    }
    XN_List<XN_String> kept;
    XN_String("a\nb").SplitLines(kept, true, true);
    XN_String("c").SplitLines(kept, true, false);
    EXPECT_EQ(Shown(kept), (std::vector<std::string>{"a", "b", "c"}));
}

TEST(XN_StringBytes, EqualsAndCompare) {
    EXPECT_TRUE(XN_String::Equals("abc", "abc"));
    EXPECT_FALSE(XN_String::Equals("abc", "abcd"));
    EXPECT_TRUE(XN_String::Equals("abcX", "abcY", 3));
    EXPECT_FALSE(XN_String::Equals("abcX", "abcY", 0)); // 0: no limit
    EXPECT_FALSE(XN_String::Equals(nullptr, nullptr));
    EXPECT_TRUE(XN_String::EqualsIgnoreCase("ABC", "abc"));
    EXPECT_TRUE(XN_String::EqualsIgnoreCase("ABCx", "abcy", 3));
    EXPECT_FALSE(XN_String::EqualsIgnoreCase("abc", "abc", 0)); // a count of 0 is false here
    EXPECT_EQ(XN_String::Compare(nullptr, "a"), -10);
    EXPECT_EQ(XN_String::CompareIgnoreCase("a", nullptr), -10);
    EXPECT_EQ(XN_String::Compare("a", "b"), -1);
    EXPECT_EQ(XN_String::Compare("ab", "a"), 1);
    EXPECT_EQ(XN_String::Compare("\xE9", "a"), -1); // signed bytes: high bytes sort first
    EXPECT_EQ(XN_String::CompareIgnoreCase("ABC", "abc"), 0);
}

TEST(XN_StringNumbers, ParsingAtTheCorners) {
    struct Case {
        const char* text;
        std::int64_t asLong;
        std::uint64_t asULong;
        double asDouble;
    } cases[] = {
        {nullptr, 0, 0, 0.0},
        {"", 0, 0, 0.0},
        {"12abc", 12, 12, 12.0},
        {"x-12y", -12, 12, -12.0},
        {"abc", INT64_MAX, UINT64_MAX, DBL_MAX},
        {"-x1", 0, 1, -0.0},
        {"9223372036854775807", INT64_MAX, 9223372036854775807u, 9223372036854775807.0},
        {"18446744073709551615", -1, UINT64_MAX, 18446744073709551615.0},
        {"1,5", 1, 1, 1.5},
        {"5.", 5, 5, DBL_MAX},
        {".5", 5, 5, 0.5},
        {"2.5e-2", 2, 2, 0.025},
        {"2.5e+2", 2, 2, 250.0},
        {"2.5E2", 2, 2, 2.5},
        {"3e2", 3, 3, 3.0},
        {"1e+999", 1, 1, HUGE_VAL},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text ? c.text : "null");
        EXPECT_EQ(XN_String::ToLong(c.text), c.asLong);
        EXPECT_EQ(XN_String::ToULong(c.text), c.asULong);
        EXPECT_DOUBLE_EQ(XN_String::ToDouble(c.text), c.asDouble);
    }
}

TEST(XN_StringNumbers, NumberTests) {
    struct Case {
        const char* text;
        bool integer;
        bool number;
    } cases[] = {
        {"12", true, true},   {" - 3,25", false, true}, {"+ 7", true, true},     {"12 ", false, false},
        {"1.", false, false}, {".5", false, true},      {"1.2.3", false, false}, {"", false, false},
        {" -", false, false}, {"1e5", false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(XN_String::IsIntegerNumber(c.text), c.integer);
        EXPECT_EQ(XN_String::IsIntegerNumber(XN_String(c.text)), c.integer);
        EXPECT_EQ(XN_String::IsNumber(c.text), c.number);
        EXPECT_EQ(XN_String::IsNumber(XN_String(c.text)), c.number);
    }
}

TEST(XN_StringNumbers, Printing) {
    EXPECT_EQ(Show(XN_String::LongToString(-42)), "-42");
    EXPECT_EQ(Show(XN_String::LongToString(42, 5)), "   42");
    EXPECT_EQ(Show(XN_String::DoubleToString(3.14159, 0, 2)), "3.14");
    EXPECT_EQ(Show(XN_String::DoubleToString(3.0, 0, 0)), "3");
    EXPECT_EQ(Show(XN_String::DoubleToString(2.5, 8, 2)), "    2.50");
    EXPECT_EQ(Show(XN_String::DoubleToString(3.0, 0)), "3");
    EXPECT_EQ(Show(XN_String::DoubleToString(2.5, 0)), "2");
    EXPECT_EQ(Show(XN_String::DoubleToString(0.5, -1)), "0.5");
    EXPECT_EQ(Show(XN_String::Format("%s-%03d", "id", 7)), "id-007");
    EXPECT_EQ(XN_String::Format("%3000d", 1).GetLength(), 2047u);
}

TEST(XN_StringDetect, ByteOrderMarks) {
    struct Case {
        const char* name;
        std::string bytes;
        unsigned int length;
        XN_String::Encoding encoding;
    } cases[] = {
        {"UTF-16BE", "\xFE\xFF", 2, E::Encoding_UTF16BE},
        {"UTF-16", "\xFF\xFE\x41", 2, E::Encoding_UTF16},
        {"UTF-32", std::string("\xFF\xFE\0\0", 4), 4, E::Encoding_UTF32},
        {"UTF-32BE", std::string("\0\0\xFE\xFF", 4), 4, E::Encoding_UTF32BE},
        {"UTF-8", "\xEF\xBB\xBF", 3, E::Encoding_UTF8},
        {"SCSU", "\x0E\xFE\xFF", 3, E::Encoding_Unsupported},
        {"UTF-1", "\xF7\x64\x4C", 3, E::Encoding_Unsupported},
        {"BOCU-1", "\xFB\xEE\x28", 3, E::Encoding_Unsupported},
        {"UTF-7", "+/v8-abc", 5, E::Encoding_UTF7},
        {"UTF-7 short", "+/v+", 4, E::Encoding_UTF7},
        {"GB 18030", "\x84\x31\x95\x33", 4, E::Encoding_Unsupported},
        {"UTF-EBCDIC", "\xDD\x73\x66\x73", 4, E::Encoding_Unsupported},
        {"none", "abcd", 0, E::Encoding_Unknown},
        {"cut UTF-8 mark", "\xEF\xBB", 0, E::Encoding_Unknown},
        {"UTF-7 without its fourth byte", "+/v", 0, E::Encoding_Unknown},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_String::Encoding found = E::Encoding_Unknown;
        EXPECT_EQ(XN_String::DetectBOM(c.bytes.data(), static_cast<unsigned int>(c.bytes.size()), found),
                  c.length);
        EXPECT_EQ(found, c.encoding);
        if (c.encoding >= E::Encoding_UTF8 && c.encoding <= E::Encoding_UTF32BE) {
            EXPECT_EQ(std::string(XN_String::GetBOM(c.encoding).Get(), c.length),
                      c.bytes.substr(0, c.length));
        }
    }
    EXPECT_EQ(XN_String::GetBOM(E::Encoding_ASCII).Get(), nullptr);
    EXPECT_EQ(XN_String::GetBOM(E::Encoding_ASCII).GetEncoding(), E::Encoding_ASCII);
}

TEST(XN_StringDetect, Utf8Validation) {
    struct Case {
        const char* name;
        std::string bytes;
        bool valid;
        bool multiByte;
    } cases[] = {
        {"ASCII", "abc", true, false},
        {"two bytes", "\xC3\xA9", true, true},
        {"overlong two bytes", "\xC0\xAF", false, false},
        {"E0 needs A0 up", "\xE0\x9F\xBF", false, false},
        {"surrogate", "\xED\xA0\x80", false, false},
        {"last code point", "\xF4\x8F\xBF\xBF", true, true},
        {"past U+10FFFF", "\xF4\x90\x80\x80", false, false},
        {"cut sequence", "a\xE2\x82", false, false},
        {"stray continuation", "\x80", false, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        unsigned int n = static_cast<unsigned int>(c.bytes.size());
        EXPECT_EQ(XN_String::IsUTF8(c.bytes.data(), n, false), c.valid);
        EXPECT_EQ(XN_String::IsUTF8(c.bytes.c_str(), true), c.multiByte);
    }
    EXPECT_FALSE(XN_String::IsUTF8(nullptr, false));
}

TEST(XN_StringDetect, TextToStringChoices) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    struct Case {
        const char* name;
        std::string bytes;
        bool detect;
        XN_String::Encoding expected;
        const char* text;
    } cases[] = {
        {"ASCII", "abc", true, E::Encoding_UTF8, "abc"},
        {"UTF-8", "d\xC3\xA9j\xC3\xA0", true, E::Encoding_UTF8, "déjà"},
        {"UTF-16 little-endian", std::string("a\0b\0", 4), true, E::Encoding_UTF16, "ab"},
        {"UTF-16 big-endian", std::string("\0a\0b\0c", 6), true, E::Encoding_UTF16BE, "abc"},
        {"UTF-32", std::string("a\0\0\0\xE9\0\0\0", 8), true, E::Encoding_UTF32, "aé"},
        {"UTF-32 big-endian", std::string("\0\0\0a\0\0\0\xE9", 8), true, E::Encoding_UTF32BE, "aé"},
        {"Latin-1 bytes", "caf\xE9!", true, E::Encoding_Unknown, "<null>"},
        {"marked UTF-16BE", std::string("\xFE\xFF\0h\0i", 6), true, E::Encoding_UTF16BE, "hi"},
        {"marked, unsupported form", "\x0E\xFE\xFFok", true, E::Encoding_Unsupported, "ok"},
        {"only a mark", "\xEF\xBB\xBF", false, E::Encoding_UTF8, ""},
        {"empty file is UTF-32", "", true, E::Encoding_UTF32, ""},
        {"fallback", "\xE9t\xE9", false, E::Encoding_ISOLatin1, "été"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        XN_String text("previous");
        EXPECT_EQ(XN_String::TextToString(text, c.bytes.data(), static_cast<unsigned int>(c.bytes.size()),
                                          c.detect, E::Encoding_ISOLatin1),
                  c.expected);
        EXPECT_EQ(Show(text), c.text);
    }
}

} // namespace
