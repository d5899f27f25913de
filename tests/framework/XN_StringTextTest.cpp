// XN_String text operations: search, replacement, trimming, the three splitters, the 8-bit helpers,
// number parsing and printing, byte-order marks, UTF-8 validation and TextToString's guesses.
#include "XN_List.hpp"
#include "XN_StringTest.hpp"

#include <cfloat>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

using xn_test::ExpectRows;
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
    XN_String hello("hello"), abcab("abcab"), null;
    const unsigned short zeroUnits[] = {'a', 0, 'b', 'a'};
    const XN_String withZero(zeroUnits, 4);
    ExpectRows<unsigned>({
        {"IndexOf", hello.IndexOf("lo", 0), 3},
        {"IndexOf past the match", hello.IndexOf("lo", 4), kNone},
        {"IndexOf empty", hello.IndexOf("", 0), kNone},
        {"IndexOfIgnoreCase", FromUtf8("aÉTÉ").IndexOfIgnoreCase(FromUtf8("été"), 0), 1},
        {"IndexOf is case-sensitive", FromUtf8("aÉTÉ").IndexOf(FromUtf8("été"), 0), kNone},
        {"LastIndexOf", abcab.LastIndexOf("ab"), 3},
        {"LastIndexOf match extends past from", abcab.LastIndexOf("ab", 3), 3},
        {"LastIndexOf from before", abcab.LastIndexOf("ab", 2), 0},
        {"LastIndexOf in empty", XN_String("").LastIndexOf("a"), kNone},
        {"IndexOf char", hello.IndexOf('l', 0), 2},
        {"IndexOf char 0", hello.IndexOf('\0', 0), kNone},
        {"IndexOf from a 0 unit", withZero.IndexOf("a", 1), kNone},
        {"IndexOf from after a 0 unit", withZero.IndexOf("a", 2), 3},
        {"LastIndexOf char", hello.LastIndexOf('l'), 3},
    });
    XN_String s("abcdef");
    ExpectRows<bool>({
        {"StartsWith", s.StartsWith("abc"), true},
        {"StartsWith from", s.StartsWith("cd", 2), true},
        {"StartsWith from the length", s.StartsWith("cd", 6), false},
        {"StartsWith empty", s.StartsWith(""), false},
        {"EndsWith", s.EndsWith("def"), true},
        {"EndsWith longer", s.EndsWith("xabcdef"), false},
        {"EndsWith empty", s.EndsWith(""), false},
    });
}

TEST(XN_StringTransform, ReplaceTrimRepeatAndCase) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    XN_String null;
    ExpectRows<std::string>({
        {"no overlap", Show(XN_String("aaa").Replace("aa", "b")), "ba"},
        {"growing", Show(XN_String("a.b.c").Replace(".", "::")), "a::b::c"},
        {"empty find never matches", Show(XN_String("abc").Replace("", "x")), "abc"},
        {"null find", Show(XN_String("abc").Replace(null, XN_String("x"))), "<null>"},
        {"char", Show(XN_String("a-b-c").Replace('-', '+')), "a+b+c"},
        {"trim both with tabs", Show(XN_String(" \t a b\t ").THIS_Trim(true, true, true)), "a b"},
        {"trim spaces only", Show(XN_String(" \ta ").THIS_Trim(true, true, false)), "\ta"},
        {"trim to empty", Show(XN_String("   ").THIS_Trim(true, true, false)), ""},
        {"repeat", Show(XN_String::RepeatedSequence("ab", 3)), "ababab"},
        {"repeat 0", Show(XN_String::RepeatedSequence("ab", 0)), ""},
        {"repeat negative", Show(XN_String::RepeatedSequence("ab", -1)), "<null>"},
        {"lower", Show(FromUtf8("ÀbC").ToLowerCase()), "àbc"},
        {"upper", Show(FromUtf8("àbc").ToUpperCase()), "ÀBC"},
    });
    EXPECT_EQ(XN_String("aaa").Replace("aa", "bbb").GetCapacity(), 5u); // one exact allocation
}

TEST(XN_StringTransform, ReplaceRangeInPlace) {
    auto replaced = [](unsigned first, unsigned last, const char* repl) {
        XN_String s("abcdef");
        s.SetSize(32, true);
        bool done = s.Replace(first, last, XN_String(repl));
        return (done ? "done: " : "refused: ") + Show(s);
    };
    ExpectRows<std::string>({
        {"grow", replaced(2, 3, "XYZ"), "done: aXYZdef"},
        {"shrink", replaced(2, 5, ""), "done: af"},
        {"last clamped", replaced(5, 99, "!"), "done: abcd!"},
        {"last unit", replaced(6, 6, "F"), "done: abcdeF"},
        {"first 0", replaced(0, 2, "x"), "refused: abcdef"},
        {"first after last", replaced(3, 2, "x"), "refused: abcdef"},
        {"first past the end", replaced(7, 8, "x"), "refused: abcdef"},
    });
    // Beyond the capacity, the rest of the text is dropped: kept.
    XN_String s("abcdef");
    ASSERT_EQ(s.GetCapacity(), 7u);
    ASSERT_TRUE(s.Replace(2, 2, XN_String("1234")));
    ASSERT_EQ(s.GetLength(), 9u);
    EXPECT_EQ(s.UCharAt(0), 0);
    EXPECT_EQ(Show(s.Substring(1, 4)), "1234");
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(s.GetBuffer()) + 5, 4), std::u16string(4, 0));
}

TEST(XN_StringSplit, PiecesAndNullPieces) {
    using Pieces = std::vector<std::string>;
    // The pieces of `s` split at commas, lines (with or without their ends) or spaces, into a list that
    // held a stale element.
    const auto split = [](const XN_String& s, const char* how) {
        XN_List<XN_String> list;
        list.AddData(XN_String("stale"), -1);
        if (*how == ',')
            s.Split(list, ',');
        else if (*how == ' ')
            s.SplitBySpaces(list);
        else
            s.SplitLines(list, *how == '-', true);
        return Shown(list);
    };
    const std::string N = "<null>";
    XN_String null;
    ExpectRows<Pieces>({
        {"Split", split("a,,b", ","), {"a", N, "b"}},
        {"Split trailing", split("a,", ","), {"a", N}},
        {"Split empty", split("", ","), {N}},
        {"Split null", split(null, ","), {N}},
        {"lines without ends", split("a\r\nb\rc\n\nd\n", "-"), {"a", "b", "c", N, "d", N}},
        {"lines with ends", split("a\r\nb\rc\n", "+"), {"a\r\n", "b\r", "c\n", N}},
        {"lines of null", split(null, "-"), {N}},
        {"words", split(" a \t b ", " "), {N, "a", "b", N}},
        {"words of one", split("ab", " "), {"ab"}},
        {"words of empty", split("", " "), {N}},
    });
    XN_List<XN_String> kept;
    XN_String("a\nb").SplitLines(kept, true, true);
    XN_String("c").SplitLines(kept, true, false);
    EXPECT_EQ(Shown(kept), (Pieces{"a", "b", "c"}));
}

TEST(XN_StringBytes, EqualsAndCompare) {
    ExpectRows<bool>({
        {"Equals", XN_String::Equals("abc", "abc"), true},
        {"Equals count", XN_String::Equals("abcX", "abcY", 3), true},
        {"Equals count 0 is no limit", XN_String::Equals("abcX", "abcY", 0), false},
        {"Equals null", XN_String::Equals(nullptr, nullptr), false},
        {"EqualsIgnoreCase", XN_String::EqualsIgnoreCase("ABC", "abc"), true},
        {"EqualsIgnoreCase count", XN_String::EqualsIgnoreCase("ABCx", "abcy", 3), true},
        {"EqualsIgnoreCase count 0 is false", XN_String::EqualsIgnoreCase("abc", "abc", 0), false},
    });
    ExpectRows<int>({
        {"null", XN_String::Compare(nullptr, "a"), -10},
        {"null ignoring case", XN_String::CompareIgnoreCase("a", nullptr), -10},
        {"longer", XN_String::Compare("ab", "a"), 1},
        {"signed bytes: high bytes sort first", XN_String::Compare("\xE9", "a"), -1},
        {"ignoring case", XN_String::CompareIgnoreCase("ABC", "abc"), 0},
    });
}

TEST(XN_StringNumbers, ParsingAtTheCorners) {
    const std::tuple<const char*, std::int64_t, std::uint64_t, double> cases[] = {
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
        {"2.5E+2", 2, 2, 2.5},
        {"3e2", 3, 3, 3.0},
        {"1e+999", 1, 1, HUGE_VAL},
    };
    for (const auto& [text, asLong, asULong, asDouble] : cases) {
        SCOPED_TRACE(text ? text : "null");
        EXPECT_EQ(XN_String::ToLong(text), asLong);
        EXPECT_EQ(XN_String::ToULong(text), asULong);
        EXPECT_DOUBLE_EQ(XN_String::ToDouble(text), asDouble);
    }
}

TEST(XN_StringNumbers, NumberTestsAndPrinting) {
    const std::tuple<const char*, bool, bool> cases[] = {
        // text, IsIntegerNumber, IsNumber
        {"12", true, true},   {" - 3,25", false, true}, {"+ 7", true, true},     {"12 ", false, false},
        {"1.", false, false}, {".5", false, true},      {"1.2.3", false, false}, {"", false, false},
        {" -", false, false}, {"1e5", false, false},
    };
    for (const auto& [text, integer, number] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(XN_String::IsIntegerNumber(text), integer);
        EXPECT_EQ(XN_String::IsIntegerNumber(XN_String(text)), integer);
        EXPECT_EQ(XN_String::IsNumber(text), number);
        EXPECT_EQ(XN_String::IsNumber(XN_String(text)), number);
    }
    ExpectRows<std::string>({
        {"long", Show(XN_String::LongToString(-42)), "-42"},
        {"long with width", Show(XN_String::LongToString(42, 5)), "   42"},
        {"decimals", Show(XN_String::DoubleToString(3.14159, 0, 2)), "3.14"},
        {"0 decimals is %g", Show(XN_String::DoubleToString(3.5, 0, 0)), "3.5"},
        {"width and decimals", Show(XN_String::DoubleToString(2.5, 8, 2)), "    2.50"},
        {"other form, 0 decimals is %.0f", Show(XN_String::DoubleToString(3.0, 0)), "3"},
        {"other form, negative is %g", Show(XN_String::DoubleToString(0.5, -1)), "0.5"},
        {"Format", Show(XN_String::Format("%s-%03d", "id", 7)), "id-007"},
    });
    EXPECT_EQ(XN_String::Format("%3000d", 1).GetLength(), 2047u);
}

TEST(XN_StringDetect, ByteOrderMarks) {
    using Mark = std::pair<unsigned, XN_String::Encoding>;
    auto detect = [](const std::string& bytes) {
        XN_String::Encoding found = E::Encoding_Unknown;
        unsigned length = XN_String::DetectBOM(bytes.data(), static_cast<unsigned>(bytes.size()), found);
        return Mark(length, found);
    };
    const XN_String::Encoding unsupported = E::Encoding_Unsupported;
    ExpectRows<Mark>({
        {"UTF-16BE", detect("\xFE\xFF"), {2, E::Encoding_UTF16BE}},
        {"UTF-16", detect("\xFF\xFE\x41"), {2, E::Encoding_UTF16}},
        {"UTF-32", detect(std::string("\xFF\xFE\0\0", 4)), {4, E::Encoding_UTF32}},
        {"UTF-32BE", detect(std::string("\0\0\xFE\xFF", 4)), {4, E::Encoding_UTF32BE}},
        {"UTF-8", detect("\xEF\xBB\xBF"), {3, E::Encoding_UTF8}},
        {"SCSU", detect("\x0E\xFE\xFF"), {3, unsupported}},
        {"UTF-1", detect("\xF7\x64\x4C"), {3, unsupported}},
        {"BOCU-1", detect("\xFB\xEE\x28"), {3, unsupported}},
        {"UTF-7 with its dash", detect("+/v8-abc"), {5, E::Encoding_UTF7}},
        {"UTF-7", detect("+/v+"), {4, E::Encoding_UTF7}},
        {"GB 18030", detect("\x84\x31\x95\x33"), {4, unsupported}},
        {"UTF-EBCDIC", detect("\xDD\x73\x66\x73"), {4, unsupported}},
        {"none", detect("abcd"), {0, E::Encoding_Unknown}},
        {"cut UTF-8 mark", detect("\xEF\xBB"), {0, E::Encoding_Unknown}},
        {"UTF-7 without its fourth byte", detect("+/v"), {0, E::Encoding_Unknown}},
    });
    // Every mark GetBOM writes is detected as its own encoding, over its whole length.
    for (XN_String::Encoding enc :
         {E::Encoding_UTF8, E::Encoding_UTF16, E::Encoding_UTF16BE, E::Encoding_UTF32, E::Encoding_UTF32BE}) {
        XN_CString mark = XN_String::GetBOM(enc);
        EXPECT_EQ(detect(std::string(mark.Get(), mark.GetByteCount())), Mark(mark.GetByteCount(), enc));
    }
    EXPECT_EQ(XN_String::GetBOM(E::Encoding_ASCII).Get(), nullptr);
}

TEST(XN_StringDetect, Utf8Validation) {
    const std::tuple<const char*, std::string, bool, bool> cases[] = {
        // name, bytes, valid, valid with a multi-byte sequence
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
    for (const auto& [name, bytes, valid, multiByte] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(XN_String::IsUTF8(bytes.data(), static_cast<unsigned>(bytes.size()), false), valid);
        EXPECT_EQ(XN_String::IsUTF8(bytes.c_str(), true), multiByte);
    }
    EXPECT_FALSE(XN_String::IsUTF8(nullptr, false));
}

TEST(XN_StringDetect, TextToStringChoices) {
    xn_test::ScopedLocale utf8("C.UTF-8");
    using Decoded = std::pair<XN_String::Encoding, std::string>;
    auto decode = [](const std::string& bytes, bool detect) {
        XN_String text("previous");
        XN_String::Encoding chosen = XN_String::TextToString(
            text, bytes.data(), static_cast<unsigned>(bytes.size()), detect, E::Encoding_ISOLatin1);
        return Decoded(chosen, Show(text));
    };
    ExpectRows<Decoded>({
        {"ASCII", decode("abc", true), {E::Encoding_UTF8, "abc"}},
        {"UTF-8", decode("d\xC3\xA9j\xC3\xA0", true), {E::Encoding_UTF8, "déjà"}},
        {"UTF-16 little-endian", decode(std::string("a\0b\0", 4), true), {E::Encoding_UTF16, "ab"}},
        {"UTF-16 big-endian", decode(std::string("\0a\0b\0c", 6), true), {E::Encoding_UTF16BE, "abc"}},
        {"UTF-32", decode(std::string("a\0\0\0\xE9\0\0\0", 8), true), {E::Encoding_UTF32, "aé"}},
        {"UTF-32 big-endian", decode(std::string("\0\0\0a\0\0\0\xE9", 8), true), {E::Encoding_UTF32BE, "aé"}},
        {"8-bit bytes", decode("caf\xE9!", true), {E::Encoding_Unknown, "café!"}},
        {"marked UTF-16BE", decode(std::string("\xFE\xFF\0h\0i", 6), true), {E::Encoding_UTF16BE, "hi"}},
        {"marked, unsupported form", decode("\x0E\xFE\xFFok", true), {E::Encoding_Unsupported, "ok"}},
        {"only a mark", decode("\xEF\xBB\xBF", false), {E::Encoding_UTF8, ""}},
        {"empty file is UTF-32", decode("", true), {E::Encoding_UTF32, ""}},
        {"fallback", decode("\xE9t\xE9", false), {E::Encoding_ISOLatin1, "été"}},
        {"zeros at even offsets, not UTF-8",
         decode(std::string("\0\0\0\xE9\0a", 6), true),
         {E::Encoding_Unknown, std::string("\0\0\0é\0a", 7)}},
        {"zeros at even offsets, UTF-8",
         decode(std::string("\0\0\0b\0a", 6), true),
         {E::Encoding_UTF8, std::string("\0\0\0b\0a", 6)}},
        {"marked UTF-32, cut unit: the string is left as it was",
         decode(std::string("\xFF\xFE\0\0a\0", 6), true),
         {E::Encoding_UTF32, "previous"}},
    });
}

} // namespace
