// XN_Text_Scanner: the reads and, above all, where each leaves the position.
#include "XN_Text_Scanner.hpp"
#include "XN_StringTest.hpp"

namespace {

using xn_test::Show;

struct Scanner : XN_Text_Scanner {
    explicit Scanner(const char* text) { Set(XN_String(text, XN_String::Encoding_UTF8)); }
};

TEST(XN_Text_Scanner, ReadLongPositions) {
    // text, skip mode, advance, result, value read (99: unchanged), position after
    const std::tuple<const char*, short, bool, bool, long, unsigned long> cases[] = {
        {"  /* note */ 42 x", 3, true, true, 42, 15},
        {"  /* note */ 42 x", 3, false, true, 42, 0},
        {"\t-7 x", 1, true, true, -7, 3},
        {"\n7", 1, true, true, 0, 0}, // mode 1 stops at the line end: the empty token reads as 0
        {"\n7", 2, true, true, 7, 2},
        {" abc", 2, true, false, 99, 1}, // the skipped space stays consumed
        {" abc", 2, false, false, 99, 0},
        {"12ab", 0, true, false, 99, 0},
        {"", 0, true, true, 0, 0},    // kept: the empty token is an integer
        {"- x", 0, true, true, 0, 1}, // kept: "-" alone is an integer
    };
    for (const auto& [text, skipMode, advance, result, expected, position] : cases) {
        SCOPED_TRACE(std::string(text) + " mode " + std::to_string(skipMode) + (advance ? " advancing" : ""));
        Scanner scanner(text);
        long value = 99;
        EXPECT_EQ(scanner.ReadLong(value, skipMode, advance), result);
        EXPECT_EQ(value, expected);
        EXPECT_EQ(scanner.GetPosition(), position);
    }
}

TEST(XN_Text_Scanner, ReadLineSplitsAtEveryLineEnd) {
    const std::tuple<const char*, bool, std::vector<std::string>> cases[] = {
        {"a\r\nb\rc\n", false, {"a", "b", "c", "<null>"}},
        {"a\r\nb\rc\n", true, {"a\r\n", "b\r", "c\n", "<null>"}},
        {"\n\nx", false, {"", "", "x", "<null>"}},
        {"x\n\r", false, {"x", "", "<null>"}}};
    for (const auto& [text, withEOL, expected] : cases) {
        SCOPED_TRACE(text);
        Scanner scanner(text);
        std::vector<std::string> lines;
        for (size_t i = 0; i < expected.size(); ++i)
            lines.push_back(Show(scanner.ReadLine(withEOL, true)));
        EXPECT_EQ(lines, expected);
    }
    Scanner scanner("a\nb");
    EXPECT_EQ(Show(scanner.ReadLine(false, false)), "a");
    EXPECT_EQ(scanner.GetPosition(), 0u);
}

TEST(XN_Text_Scanner, TokensStopAtDelimitersOnly) {
    Scanner scanner(" \r\n a/*b*/c\td");
    EXPECT_EQ(Show(scanner.ReadToken(2, false)), "a/*b*/c");
    EXPECT_EQ(Show(scanner.ReadToken(2, false)), "a/*b*/c") << "looking ahead twice";
    EXPECT_EQ(Show(scanner.ReadToken(0, true)), "<null>") << "no skipping: the empty token";
    EXPECT_EQ(Show(scanner.ReadToken(2, true)), "a/*b*/c");
    EXPECT_EQ(scanner.GetPosition(), 11u);
    EXPECT_EQ(Show(scanner.ReadToken(1, true)), "d");
    EXPECT_EQ(Show(scanner.ReadToken(1, true)), "<null>");
}

TEST(XN_Text_Scanner, DoubleQuotedStrings) {
    // text, result, value read ("-": unchanged), position after
    const std::tuple<const char*, bool, const char*, unsigned long> cases[] = {
        {R"( "a\"b" x)", true, R"(a\"b)", 7},
        {R"("")", true, "", 2},
        {R"( "a\" ")", true, R"(a\" )", 7}, // a value cannot end in a backslash
        {R"( "abc\")", false, "-", 1},
        {R"( x"a")", false, "-", 1}};
    for (const auto& [text, result, expected, position] : cases) {
        SCOPED_TRACE(text);
        Scanner scanner(text);
        XN_String value("-");
        EXPECT_EQ(scanner.ReadDoubleQuotedString(value, 2, true), result);
        EXPECT_EQ(Show(value), expected);
        EXPECT_EQ(scanner.GetPosition(), position);
    }
    Scanner kept(R"( "ab" x)");
    XN_String value;
    EXPECT_TRUE(kept.ReadDoubleQuotedString(value, 2, false));
    EXPECT_EQ(Show(value), "ab");
    EXPECT_EQ(kept.GetPosition(), 0u) << "moved without advance";
}

TEST(XN_Text_Scanner, FindTextMovesByTheNeedlesByteLength) {
    Scanner scanner("xéy é");
    EXPECT_EQ(scanner.FindText("é", 0, true, XN_String::Encoding_UTF8), 1);
    EXPECT_EQ(scanner.GetPosition(), 3u) << "two UTF-8 bytes, one unit";
    EXPECT_EQ(scanner.FindText("é", 2, false, XN_String::Encoding_UTF8), 4);
    EXPECT_EQ(scanner.FindText("é", 5, true, XN_String::Encoding_UTF8), -1) << "from past the end";
    EXPECT_EQ(scanner.GetPosition(), 3u);
    EXPECT_EQ(scanner.FindText("", 0, true), -1);
    EXPECT_EQ(scanner.FindText(nullptr, 0, true), -1);
    EXPECT_EQ(scanner.GetPosition(), 3u);
    EXPECT_EQ(scanner.FindText("*/", 0, true), -1);
    EXPECT_EQ(scanner.GetPosition(), 5u) << "no match moves to the end";
    EXPECT_EQ(scanner.FindText("é", 4, true, XN_String::Encoding_UTF8), 4);
    EXPECT_EQ(scanner.GetPosition(), 6u) << "past the end by the needle's extra byte";
    EXPECT_EQ(Show(scanner.ReadToken(3, true)), "<null>");
    // A null text reads as nothing.
    XN_Text_Scanner empty;
    empty.Set(XN_String());
    EXPECT_EQ(Show(empty.ReadLine(true, true)), "<null>");
    EXPECT_EQ(Show(empty.ReadToken(3, true)), "<null>");
    XN_String value;
    EXPECT_FALSE(empty.ReadDoubleQuotedString(value, 3, true));
    EXPECT_EQ(empty.FindText("a", 0, true), -1);
}

TEST(XN_Text_Scanner, CommentSkippingQuirks) {
    Scanner passed("  /* c */  x");
    EXPECT_EQ(passed.SkipSpacesTabsEOLsComments(false), 11u);
    EXPECT_EQ(passed.GetPosition(), 9u) << "passing a comment moves the position even without advance";

    Scanner unterminated("ab /* x");
    unterminated.ReadToken(0, true);
    EXPECT_EQ(unterminated.SkipSpacesTabsEOLsComments(false), 1u) << "the scan restarts at index 1";
    EXPECT_EQ(unterminated.GetPosition(), 7u);
    unterminated.ReadToken(0, true);
    unterminated.FindText("ab", 0, true);
    EXPECT_EQ(unterminated.SkipSpacesTabsEOLsComments(true), 1u);
    EXPECT_EQ(unterminated.GetPosition(), 1u);

    Scanner twice("  /* x");
    EXPECT_EQ(twice.SkipSpacesTabsEOLsComments(true), 6u) << "the same comment met again ends the scan";
}

} // namespace
