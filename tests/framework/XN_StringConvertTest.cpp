// XN_String conversions: every encoding both ways, lossy versus strict, measuring versus converting,
// terminators, UTF-32 edge values, the system default encoding and every error code.
#include "XN_StringTest.hpp"

#include <gtest/gtest.h>

#include <string>

using xn_test::FromUtf8;
using xn_test::Show;

namespace {

using E = XN_String;

const std::string kMixed = "é€™中😀"; // two-, three- and four-byte UTF-8, a BMP ideograph, a surrogate pair

std::string Bytes(const XN_CString& c) {
    return std::string(c.Get() ? c.Get() : "", c.GetByteCount());
}

std::string Terminated(std::string bytes, std::size_t zeros) {
    return bytes.append(zeros, '\0');
}

struct EncodingCase {
    const char* name;
    XN_String::Encoding encoding;
    std::string bytes;   // kMixed in that encoding, "?" for what it cannot hold
    std::string decoded; // those bytes read back
    std::size_t terminator;
};

const EncodingCase kEncodings[] = {
    {"UTF-7", E::Encoding_UTF7, "+AOkgrCEiTi3YPd4A-", kMixed, 1},
    {"UTF-8", E::Encoding_UTF8, "\xC3\xA9\xE2\x82\xAC\xE2\x84\xA2\xE4\xB8\xAD\xF0\x9F\x98\x80", kMixed, 1},
    {"UTF-16", E::Encoding_UTF16, std::string("\xE9\0\xAC\x20\x22\x21\x2D\x4E\x3D\xD8\0\xDE", 12), kMixed, 2},
    {"UTF-16BE", E::Encoding_UTF16BE, std::string("\0\xE9\x20\xAC\x21\x22\x4E\x2D\xD8\x3D\xDE\0", 12), kMixed,
     2},
    {"UTF-32", E::Encoding_UTF32,
     std::string("\xE9\0\0\0\xAC\x20\0\0\x22\x21\0\0\x2D\x4E\0\0\0\xF6\x01\0", 20), kMixed, 4},
    {"UTF-32BE", E::Encoding_UTF32BE,
     std::string("\0\0\0\xE9\0\0\x20\xAC\0\0\x21\x22\0\0\x4E\x2D\0\x01\xF6\0", 20), kMixed, 4},
    {"Windows-1252", E::Encoding_WindowsLatin1, "\xE9\x80\x99??", "é€™??", 1},
    {"Mac OS Roman", E::Encoding_MacRoman, "\x8E\xDB\xAA??", "é€™??", 1},
    {"ISO 8859-1", E::Encoding_ISOLatin1, "\xE9????", "é????", 1},
    {"ASCII", E::Encoding_ASCII, "?????", "?????", 1},
};

TEST(XN_StringConvert, EveryEncodingBothWays) {
    XN_String text = FromUtf8(kMixed);
    for (const EncodingCase& c : kEncodings) {
        SCOPED_TRACE(c.name);
        XN_CString out = text.ToCStr(c.encoding);
        EXPECT_EQ(Bytes(out), Terminated(c.bytes, c.terminator));
        EXPECT_EQ(out.GetEncoding(), c.encoding);
        EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(c.encoding, text), static_cast<long>(c.bytes.size()));
        XN_String back(c.bytes.data(), static_cast<unsigned int>(c.bytes.size()), c.encoding);
        EXPECT_EQ(Show(back), c.decoded);
        EXPECT_EQ(back.GetCapacity(), back.GetLength() + 1);
    }
}

TEST(XN_StringConvert, ResultCodesOfTheEngine) {
    char dst[64];
    const char* text = "a中b";
    struct Case {
        const char* name;
        XN_String::Encoding from;
        const char* src;
        long srcBytes;
        XN_String::Encoding to;
        long dstBytes; // -1: measuring call
        bool terminator;
        bool lossy;
        std::int64_t expected;
    } cases[] = {
        {"no source", E::Encoding_UTF8, nullptr, 3, E::Encoding_UTF8, 8, true, true, -3},
        {"unknown source encoding", E::Encoding_Unknown, text, 0, E::Encoding_UTF8, -1, true, true, -4},
        {"unsupported source encoding", E::Encoding_Unsupported, text, 0, E::Encoding_UTF8, -1, true, true,
         -4},
        {"unknown destination encoding", E::Encoding_UTF8, text, 0, E::Encoding_Unknown, -1, true, true, -5},
        {"unreadable source", E::Encoding_UTF8, "\xC3(", 2, E::Encoding_UTF16, -1, true, true, -1},
        {"ASCII source with a high byte", E::Encoding_ASCII, "a\x80", 2, E::Encoding_UTF8, -1, true, true,
         -1},
        {"measure, lossy", E::Encoding_UTF8, text, 0, E::Encoding_ISOLatin1, -1, true, true, 4},
        {"measure, to UTF-32", E::Encoding_UTF8, text, 5, E::Encoding_UTF32, -1, true, true, 16},
        {"measure, no terminator", E::Encoding_UTF8, text, 5, E::Encoding_UTF16BE, -1, false, true, 6},
        {"convert, lossy", E::Encoding_UTF8, text, 0, E::Encoding_ISOLatin1, 4, true, true, 4},
        {"strict, unmappable later", E::Encoding_UTF8, text, 0, E::Encoding_ISOLatin1, 64, true, false, -2},
        {"strict, unmappable first", E::Encoding_UTF8, text + 1, 0, E::Encoding_ISOLatin1, 64, true, false,
         -1},
        {"strict into UTF-8", E::Encoding_UTF8, text, 0, E::Encoding_UTF8, 64, true, false, 6},
        {"too small", E::Encoding_UTF8, text, 0, E::Encoding_UTF8, 3, true, true, -2},
        {"no room for the terminator", E::Encoding_UTF8, "abc", 3, E::Encoding_ASCII, 3, true, true, -2},
        {"not even one character fits", E::Encoding_UTF8, text, 0, E::Encoding_UTF32, 3, true, true, -1},
        {"empty source, terminator", E::Encoding_UTF8, "", 0, E::Encoding_UTF32BE, 4, true, true, 4},
        {"empty source, measured", E::Encoding_UTF16, "\0\0", 0, E::Encoding_UTF16, -1, true, true, 2},
        {"empty source, no terminator", E::Encoding_UTF8, "", 0, E::Encoding_UTF16, -1, false, true, 0},
        {"empty source, no room", E::Encoding_UTF8, "", 0, E::Encoding_UTF16, 1, true, true, -2},
        {"empty text with a byte count", E::Encoding_UTF8, "", -1, E::Encoding_UTF8, -1, true, true, -1},
        {"value 7 is the system default", static_cast<XN_String::Encoding>(7), "ab", 2, E::Encoding_UTF8, 8,
         false, true, 2},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        dst[0] = 'x';
        char* target = c.dstBytes < 0 ? nullptr : dst;
        EXPECT_EQ(XN_String::ConvertChangeEncoding(c.from, c.src, c.srcBytes, c.to, target, c.dstBytes,
                                                   c.terminator, c.lossy),
                  c.expected);
        if (c.src == nullptr) {
            EXPECT_EQ(dst[0], 0);
        }
    }
}

TEST(XN_StringConvert, ConvertedBytesAndTerminators) {
    char dst[16];
    ASSERT_EQ(XN_String::ConvertChangeEncoding(E::Encoding_UTF8, "a中b", 0, E::Encoding_WindowsLatin1, dst, 4,
                                               true, true),
              4);
    EXPECT_EQ(std::string(dst, 4), std::string("a?b\0", 4));
    ASSERT_EQ(XN_String::ConvertChangeEncoding(E::Encoding_ASCII, "hi", 0, E::Encoding_UTF16BE, dst, 16, true,
                                               false),
              6);
    EXPECT_EQ(std::string(dst, 6), std::string("\0h\0i\0\0", 6));
}

TEST(XN_StringConvert, Utf32ValuesOutsideUnicodeBecomeReplacementCharacters) {
    const char32_t units[] = {0x1F600, 0xD800, 0x110000, 0x10FFFF, 'a', 0};
    XN_String s(reinterpret_cast<const char*>(units), 20, E::Encoding_UTF32);
    const unsigned short expected[] = {0xD83D, 0xDE00, 0xFFFD, 0xFFFD, 0xDBFF, 0xDFFF, 'a'};
    ASSERT_EQ(s.GetLength(), 7u);
    for (unsigned int i = 0; i < 7; ++i)
        EXPECT_EQ(s.UCharAt(i), expected[i]) << "unit " << i;
    XN_String upToZero(reinterpret_cast<const char*>(units + 4), 0, E::Encoding_UTF32);
    EXPECT_EQ(Show(upToZero), "a");
}

TEST(XN_StringConvert, UnpairedSurrogateIsLossyOrAnError) {
    const unsigned short units[] = {'a', 0xD800, 'b'};
    XN_String s(units, 3);
    EXPECT_EQ(Bytes(s.ToCStr(E::Encoding_UTF8)), std::string("a?b\0", 4));
    EXPECT_EQ(Bytes(s.ToCStr(E::Encoding_UTF32BE)), std::string("\0\0\0a\0\0\0?\0\0\0b\0\0\0\0", 16));
    char dst[16];
    EXPECT_EQ(XN_String::ConvertChangeEncoding(E::Encoding_UTF16, reinterpret_cast<const char*>(units), 6,
                                               E::Encoding_UTF32, dst, 16, false, false),
              -2);
}

TEST(XN_StringConvert, SystemDefaultIsTheLocaleCodesetWithAsciiReadAsUtf8) {
    for (const char* locale : {"C", "C.UTF-8"}) {
        SCOPED_TRACE(locale);
        xn_test::ScopedLocale scoped(locale);
        XN_String s("é€");
        EXPECT_EQ(Show(s), "é€");
        EXPECT_EQ(Bytes(s.ToCStr()), std::string("é€", 6));
    }
}

TEST(XN_StringConvert, FailedReadLeavesTheStringUnchanged) {
    XN_String s("kept");
    EXPECT_FALSE(s.Set("\xFF\xFE", 2, E::Encoding_UTF8));
    EXPECT_EQ(Show(s), "kept");
    EXPECT_TRUE(XN_String("\xFF", E::Encoding_UTF8).IsNull());
    EXPECT_TRUE(XN_String::CStringToXN_String(s, "!", 0, E::Encoding_ASCII, true));
    EXPECT_TRUE(XN_String::CStringToXN_String(s, nullptr, 0, E::Encoding_ASCII, true));
    EXPECT_EQ(Show(s), "kept!");
    EXPECT_TRUE(XN_String::CStringToXN_String(s, nullptr, 0, E::Encoding_ASCII, false));
    EXPECT_TRUE(s.IsNull());
}

TEST(XN_StringConvert, PartsOfAStringToBytes) {
    const unsigned short units[] = {'a', 'b', 'c', 0, 'd'};
    XN_String s(units, 5);
    struct Case {
        const char* name;
        XN_String source;
        unsigned int start;
        unsigned int count;
        std::string expected;
    } cases[] = {
        {"middle", s, 1, 2, std::string("bc\0", 3)},
        {"count 0 stops at a 0 unit", s, 0, 0, std::string("abc\0", 4)},
        {"count past the end", s, 4, 9, std::string("d\0", 2)},
        {"start past the end", s, 9, 1, std::string("\0", 1)},
        {"null string", XN_String(), 0, 0, std::string("\0", 1)},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        char* out = nullptr;
        unsigned int bytes = 99;
        ASSERT_TRUE(
            XN_String::XN_StringToCString(&out, bytes, E::Encoding_ASCII, c.source, c.start, c.count));
        EXPECT_EQ(std::string(out, bytes), c.expected);
        delete[] out;
    }
    char* out = nullptr;
    unsigned int bytes = 99;
    EXPECT_FALSE(XN_String::XN_StringToCString(&out, bytes, E::Encoding_Unknown, s, 0, 0));
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(bytes, 0u);
    EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(E::Encoding_Unknown, s), -1);
    EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(E::Encoding_ISOLatin1, FromUtf8("a中")), 2);
    XN_CString reused = s.ToCStr(E::Encoding_UTF32);
    EXPECT_TRUE(XN_String("xy").ToCStr(reused, E::Encoding_ASCII));
    EXPECT_EQ(Bytes(reused), std::string("xy\0", 3));
}

} // namespace
