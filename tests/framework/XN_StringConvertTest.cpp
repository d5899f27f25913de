// XN_String conversions: every encoding both ways, lossy versus strict, measuring versus converting,
// terminators, UTF-32 edge values, the system default encoding and every error code.
#include "XN_List.hpp"
#include "XN_StringTest.hpp"

using xn_test::ExpectRows;
using xn_test::FromUtf8;
using xn_test::Show;

namespace {

using E = XN_String;

const std::string kMixed = "é€™中😀"; // two-, three- and four-byte UTF-8, a BMP ideograph, a surrogate pair

std::string Bytes(const XN_CString& c) {
    return std::string(c.Get() ? c.Get() : "", c.GetByteCount());
}

// name, encoding, kMixed in it ("?" for what it cannot hold), those bytes read back, terminator size
const std::tuple<const char*, XN_String::Encoding, std::string, std::string, std::size_t> kEncodings[] = {
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
    for (const auto& [name, encoding, bytes, decoded, terminator] : kEncodings) {
        SCOPED_TRACE(name);
        XN_CString out = text.ToCStr(encoding);
        EXPECT_EQ(Bytes(out), bytes + std::string(terminator, '\0'));
        EXPECT_EQ(out.GetEncoding(), encoding);
        EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(encoding, text), static_cast<long>(bytes.size()));
        XN_String back(bytes.data(), static_cast<unsigned int>(bytes.size()), encoding);
        EXPECT_EQ(Show(back), decoded);
        EXPECT_EQ(back.GetCapacity(), back.GetLength() + 1);
    }
}

TEST(XN_StringConvert, ResultCodesOfTheEngine) {
    char dst[64];
    // dstBytes -1: a measuring call (no destination).
    auto convert = [&dst](E::Encoding from, const char* src, long srcBytes, E::Encoding to, long dstBytes,
                          bool terminator, bool lossy) {
        return XN_String::ConvertChangeEncoding(from, src, srcBytes, to, dstBytes < 0 ? nullptr : dst,
                                                dstBytes, terminator, lossy);
    };
    const char* text = "a中b";
    const E::Encoding utf8 = E::Encoding_UTF8, latin1 = E::Encoding_ISOLatin1;
    ExpectRows<std::int64_t>({
        {"no source", convert(utf8, nullptr, 3, utf8, 8, true, true), -3},
        {"unknown source encoding", convert(E::Encoding_Unknown, text, 0, utf8, -1, true, true), -4},
        {"unsupported source encoding", convert(E::Encoding_Unsupported, text, 0, utf8, -1, true, true), -4},
        {"unknown destination encoding", convert(utf8, text, 0, E::Encoding_Unknown, -1, true, true), -5},
        {"unreadable source", convert(utf8, "\xC3(", 2, E::Encoding_UTF16, -1, true, true), -1},
        {"ASCII source with a high byte", convert(E::Encoding_ASCII, "a\x80", 2, utf8, -1, true, true), -1},
        {"measure, lossy", convert(utf8, text, 0, latin1, -1, true, true), 4},
        {"measure, to UTF-32", convert(utf8, text, 5, E::Encoding_UTF32, -1, true, true), 16},
        {"measure, no terminator", convert(utf8, text, 5, E::Encoding_UTF16BE, -1, false, true), 6},
        {"convert, lossy", convert(utf8, text, 0, latin1, 4, true, true), 4},
        {"strict, unmappable later", convert(utf8, text, 0, latin1, 64, true, false), -2},
        {"strict, unmappable first", convert(utf8, text + 1, 0, latin1, 64, true, false), -1},
        {"strict into UTF-8", convert(utf8, text, 0, utf8, 64, true, false), 6},
        {"too small", convert(utf8, text, 0, utf8, 3, true, true), -2},
        {"no room for the terminator", convert(utf8, "abc", 3, E::Encoding_ASCII, 3, true, true), -2},
        {"not even one character fits", convert(utf8, text, 0, E::Encoding_UTF32, 3, true, true), -1},
        {"empty source, terminator", convert(utf8, "", 0, E::Encoding_UTF32BE, 4, true, true), 4},
        {"empty source, measured", convert(E::Encoding_UTF16, "\0\0", 0, E::Encoding_UTF16, -1, true, true),
         2},
        {"empty source, no terminator", convert(utf8, "", 0, E::Encoding_UTF16, -1, false, true), 0},
        {"empty source, no room", convert(utf8, "", 0, E::Encoding_UTF16, 1, true, true), -2},
        {"empty text with a byte count", convert(utf8, "", -1, utf8, -1, true, true), -1},
        {"value 7 is the system default", convert(static_cast<E::Encoding>(7), "ab", 2, utf8, 8, false, true),
         2},
    });
    dst[0] = 'x';
    EXPECT_EQ(convert(utf8, nullptr, 0, utf8, 8, true, true), -3);
    EXPECT_EQ(dst[0], 0);
    ASSERT_EQ(convert(utf8, text, 0, E::Encoding_WindowsLatin1, 4, true, true), 4);
    EXPECT_EQ(std::string(dst, 4), std::string("a?b\0", 4));
}

// UTF-32 values outside Unicode become replacement characters.
TEST(XN_StringConvert, ValuesOutsideUnicodeAndUnpairedSurrogates) {
    const char32_t units[] = {0x1F600, 0xD800, 0x110000, 0x10FFFF, 'a', 0};
    XN_String s(reinterpret_cast<const char*>(units), 20, E::Encoding_UTF32);
    EXPECT_EQ(std::u16string(reinterpret_cast<const char16_t*>(s.GetBuffer()), s.GetLength()),
              u"\xD83D\xDE00\xFFFD\xFFFD\xDBFF\xDFFF"
              u"a");
    XN_String upToZero(reinterpret_cast<const char*>(units + 4), 0, E::Encoding_UTF32);
    EXPECT_EQ(Show(upToZero), "a");
    // An unpaired surrogate is lossy or an error.
    const unsigned short unpaired[] = {'a', 0xD800, 'b'};
    XN_String lone(unpaired, 3);
    EXPECT_EQ(Bytes(lone.ToCStr(E::Encoding_UTF8)), std::string("a?b\0", 4));
    EXPECT_EQ(Bytes(lone.ToCStr(E::Encoding_UTF32BE)), std::string("\0\0\0a\0\0\0?\0\0\0b\0\0\0\0", 16));
    char dst[16];
    EXPECT_EQ(XN_String::ConvertChangeEncoding(E::Encoding_UTF16, reinterpret_cast<const char*>(unpaired), 6,
                                               E::Encoding_UTF32, dst, 16, false, false),
              -2);
}

// Makes the default follow `codeset` for the scope of a test.
class ScopedCodeset {
public:
    explicit ScopedCodeset(const char* codeset) { XN_String::SetSystemCodeset(codeset); }
    ~ScopedCodeset() { XN_String::SetSystemCodeset(nullptr); }
};

TEST(XN_StringConvert, SystemDefaultIsAnEightBitEncodingInWhichEveryByteReads) {
    // codeset, default encoding, byte A4 read in it
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"UTF-8", "windows-1252", "¤"},
        {"ANSI_X3.4-1968", "windows-1252", "¤"}, // the C and POSIX locales
        {"ISO-8859-15", "ISO-8859-15", "€"},
        {"no-such-codeset", "windows-1252", "¤"},
    };
    for (const auto& [codeset, encoding, currency] : cases) {
        SCOPED_TRACE(codeset);
        ScopedCodeset scoped(codeset);
        EXPECT_STREQ(XN_String::GetSystemDefaultEncodingName(), encoding);
        const XN_String cafe("caf\xE9");
        EXPECT_EQ(Show(cafe), "café");
        EXPECT_EQ(Show(XN_String("\xA4")), currency);
        EXPECT_EQ(cafe.CharAt(3), '\xE9');
        EXPECT_EQ(cafe.IndexOf('\xE9', 0), 3u);
        EXPECT_EQ(Show(cafe.Replace('\xE9', 'e')), "cafe");
        EXPECT_EQ(Show(cafe.Replace("\xE9", "\xE8")), "cafè");
        XN_List<XN_String> pieces;
        cafe.Split(pieces, '\xE9');
        ASSERT_EQ(pieces.GetCount(), 2);
        EXPECT_EQ(Show(pieces[0]), "caf");
        XN_String decoded;
        EXPECT_EQ(XN_String::TextToString(decoded, "caf\xE9", 4, true, E::Encoding_UTF8),
                  E::Encoding_Unknown);
        EXPECT_EQ(Show(decoded), "café");
    }
    // In the default that stands in for UTF-8 and C locales every byte reads and writes back.
    std::string all;
    for (int b = 1; b < 256; ++b)
        all += static_cast<char>(b);
    EXPECT_EQ(Bytes(XN_String(all.c_str()).ToCStr()), all + '\0');
}

TEST(XN_StringConvert, FailedReadLeavesTheStringUnchangedAndPartsGoToBytes) {
    XN_String kept("kept");
    EXPECT_FALSE(kept.Set("\xFF\xFE", 2, E::Encoding_UTF8));
    EXPECT_EQ(Show(kept), "kept");
    EXPECT_TRUE(XN_String("\xFF", E::Encoding_UTF8).IsNull());
    EXPECT_TRUE(XN_String::CStringToXN_String(kept, "!", 0, E::Encoding_ASCII, true));
    EXPECT_TRUE(XN_String::CStringToXN_String(kept, nullptr, 0, E::Encoding_ASCII, true));
    EXPECT_EQ(Show(kept), "kept!");
    EXPECT_TRUE(XN_String::CStringToXN_String(kept, nullptr, 0, E::Encoding_ASCII, false));
    EXPECT_TRUE(kept.IsNull());
    // Parts of a string to bytes.
    const unsigned short units[] = {'a', 'b', 'c', 0, 'd'};
    XN_String s(units, 5);
    auto part = [](const XN_String& source, unsigned start, unsigned count, E::Encoding enc) {
        char* out = nullptr;
        unsigned int bytes = 99;
        bool done = XN_String::XN_StringToCString(&out, bytes, enc, source, start, count);
        std::string result = done ? std::string(out, bytes) : (out == nullptr && bytes == 0 ? "failed" : "?");
        delete[] out;
        return result;
    };
    ExpectRows<std::string>({
        {"middle", part(s, 1, 2, E::Encoding_ASCII), std::string("bc\0", 3)},
        {"count 0 stops at a 0 unit", part(s, 0, 0, E::Encoding_ASCII), std::string("abc\0", 4)},
        {"count past the end", part(s, 4, 9, E::Encoding_ASCII), std::string("d\0", 2)},
        {"start past the end", part(s, 9, 1, E::Encoding_ASCII), std::string("\0", 1)},
        {"null string", part(XN_String(), 0, 0, E::Encoding_UTF16), std::string("\0\0", 2)},
        {"unknown encoding", part(s, 0, 0, E::Encoding_Unknown), "failed"},
    });
    EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(E::Encoding_Unknown, s), -1);
    EXPECT_EQ(XN_String::XN_StringToCStringLenBytes(E::Encoding_ISOLatin1, FromUtf8("a中")), 2);
    XN_CString reused = s.ToCStr(E::Encoding_UTF32);
    EXPECT_TRUE(XN_String("xy").ToCStr(reused, E::Encoding_ASCII));
    EXPECT_EQ(Bytes(reused), std::string("xy\0", 3));
}

} // namespace
