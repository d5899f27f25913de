// XN_File on real files: result codes from real failures and host faults, text round trips in every
// Unicode form with and without byte-order mark, the bytes actually written, binary reads and writes.
#include "XN_File.hpp"
#include "XN_StringTest.hpp"

#include "TempFolder.hpp"
#include "achost/Faults.hpp"

namespace {

namespace fs = std::filesystem;
using xn_test::TempFolder;
using E = XN_String;
using xn_test::FromUtf8;

class XN_FileTest : public xn_test::TempFolderTest {
protected:
    XN_Location At(const char* relative) const { return XN_Location(FromUtf8(temp.PathOf(relative))); }
    std::string Bytes(const char* relative) const { return TempFolder::Read(temp.PathOf(relative)); }
    achost::ScopedFaults faults;
};

TEST_F(XN_FileTest, ResultCodesOfRealFailures) {
    fs::create_directory(temp.PathOf("dir"));
    TempFolder::Write(temp.PathOf("f"), "abc");
    XN_String text;
    XN_File file;
    EXPECT_EQ(file.ReadFullText(text, false, E::Encoding_UTF8), 1) << "nothing open";
    EXPECT_EQ(file.WriteFullText(text, E::Encoding_UTF8, false, nullptr), 1);
    EXPECT_EQ(XN_File::ReadFullText(At("missing"), text, false, E::Encoding_UTF8), 3);
    EXPECT_EQ(file.Open(At("nodir/f"), XN_File_WriteEmptyMode), 4);
    EXPECT_EQ(file.Open(At("dir"), XN_File_ReadMode), 6) << "a folder where a file is expected";
    EXPECT_EQ(file.Open(At("f"), static_cast<XN_File_OpenMode>(5)), 6);
    EXPECT_FALSE(file.IsOpen());
    unsigned long size = 10;
    char buffer[10];
    EXPECT_EQ(XN_File::ReadBin(At("f"), buffer, &size, nullptr, 0), 5) << "the file ends first";
    EXPECT_EQ(XN_File::WriteBin(At("new"), "x", 1, false, false), 6);
    EXPECT_FALSE(fs::exists(temp.PathOf("new")));
    ASSERT_EQ(file.Open(At("f"), XN_File_ReadMode), 0);
    EXPECT_EQ(file.WriteFullText(FromUtf8("x"), E::Encoding_UTF8, false, nullptr), 2)
        << "written while read-only";
}

TEST_F(XN_FileTest, HostErrorsMapToResultCodes) {
    const std::pair<GSErrCode, int> cases[] = {{IO::File::AccessDenied, 2},  {IO::File::FileNotFound, 3},
                                               {IO::File::CreationError, 4}, {GS::IChannel::EndOfInput, 5},
                                               {IO::File::NotAFile, 6},      {ErrIO, 6}};
    TempFolder::Write(temp.PathOf("f"), "abc");
    for (const auto& [code, result] : cases) {
        SCOPED_TRACE(code);
        XN_String text;
        achost::FailFileOperation(achost::FileOperation::FileRead, code);
        EXPECT_EQ(XN_File::ReadFullText(At("f"), text, false, E::Encoding_UTF8), result);
        achost::FailFileOperation(achost::FileOperation::FileWrite, code);
        EXPECT_EQ(XN_File::WriteFullText(At("f"), FromUtf8("abc"), E::Encoding_UTF8, false, false), result);
    }
}

TEST_F(XN_FileTest, TextRoundTripsInEveryUnicodeForm) {
    // The text ends in a character without zero bytes in UTF-8 and UTF-16. UTF-32 in machine
    // (little-endian) order always ends in zero bytes, which are not written: the last character
    // does not survive that form.
    const XN_String text = FromUtf8("Grüße, 𝄞 and €");
    const XN_String lessLast = FromUtf8("Grüße, 𝄞 and ");
    const std::pair<E::Encoding, const XN_String*> cases[] = {{E::Encoding_UTF8, &text},
                                                              {E::Encoding_UTF16, &text},
                                                              {E::Encoding_UTF16BE, &text},
                                                              {E::Encoding_UTF32, &lessLast},
                                                              {E::Encoding_UTF32BE, &text}};
    for (const auto& [encoding, expected] : cases) {
        for (bool bom : {false, true}) {
            SCOPED_TRACE(std::to_string(encoding) + (bom ? " with mark" : ""));
            ASSERT_EQ(XN_File::WriteFullText(At("t"), text, encoding, bom, false), 0);
            XN_String read;
            EXPECT_EQ(XN_File::ReadFullText(At("t"), read, false, encoding), 0);
            EXPECT_EQ(read, *expected);
            if (bom) {
                EXPECT_EQ(XN_File::ReadFullText(At("t"), read, true, E::Encoding_ISOLatin1), 0);
                EXPECT_EQ(read, *expected) << "the mark decides over the fallback";
            }
        }
    }
}

// Little-endian forms lose the zero high bytes of their last character: kept, readers of these files
// never relied on the last character's full width.
TEST_F(XN_FileTest, TrailingZeroBytesAreNeverWritten) {
    const unsigned short endsInZero[] = {'a', 0};
    const std::tuple<const char*, XN_String, E::Encoding, bool, std::string> cases[] = {
        {"UTF-8 with mark", FromUtf8("Aé"), E::Encoding_UTF8, true, "\xEF\xBB\xBF\x41\xC3\xA9"},
        {"UTF-32BE", FromUtf8("Aé"), E::Encoding_UTF32BE, false, std::string("\0\0\0A\0\0\0\xE9", 8)},
        {"UTF-16 with mark", FromUtf8("Aé"), E::Encoding_UTF16, true, std::string("\xFF\xFE\x41\0\xE9", 5)},
        {"UTF-32", FromUtf8("Aé"), E::Encoding_UTF32, false, std::string("A\0\0\0\xE9", 5)},
        {"a zero character at the end", XN_String(endsInZero, 2), E::Encoding_UTF8, false, "a"},
        {"the null string", XN_String(), E::Encoding_UTF8, false, ""}};
    for (const auto& [name, text, encoding, bom, bytes] : cases) {
        SCOPED_TRACE(name);
        XN_File file;
        ASSERT_EQ(file.Open(At("t"), XN_File_WriteEmptyMode), 0);
        unsigned long written = 100;
        EXPECT_EQ(file.WriteFullText(text, encoding, bom, &written), 0);
        EXPECT_EQ(file.Close(), 0);
        EXPECT_EQ(written, 100 + bytes.size());
        EXPECT_EQ(Bytes("t"), bytes);
    }
}

TEST_F(XN_FileTest, AppendOrWriteAfreshAndDelete) {
    EXPECT_EQ(XN_File::WriteFullText(At("t"), FromUtf8("ab"), E::Encoding_UTF8, false, true), 0) << "creates";
    EXPECT_EQ(XN_File::WriteFullText(At("t"), FromUtf8("cd"), E::Encoding_UTF8, false, true), 0);
    EXPECT_EQ(Bytes("t"), "abcd");
    EXPECT_EQ(XN_File::WriteFullText(At("t"), FromUtf8("e"), E::Encoding_UTF8, false, false), 0);
    EXPECT_EQ(Bytes("t"), "e");

    EXPECT_EQ(XN_File::WriteBin(At("b"), "12", 2, false, true), 0);
    EXPECT_EQ(XN_File::WriteBin(At("b"), "34", 2, true, false), 0);
    EXPECT_EQ(Bytes("b"), "1234");
    EXPECT_EQ(XN_File::WriteBin(At("b"), "5", 1, false, false), 0);
    EXPECT_EQ(Bytes("b"), "5");
    // Delete removes only existing files.
    TempFolder::Write(temp.PathOf("f"), "x");
    EXPECT_TRUE(XN_File::Delete(At("f")));
    EXPECT_FALSE(fs::exists(temp.PathOf("f")));
    EXPECT_FALSE(XN_File::Delete(At("f")));
    EXPECT_FALSE(XN_File::Delete(XN_Location()));
}

TEST_F(XN_FileTest, BinaryReads) {
    TempFolder::Write(temp.PathOf("b"), "0123456789");
    // size asked, offset, result, size after, bytes read
    const std::tuple<unsigned long, unsigned long, int, unsigned long, std::string> cases[] = {
        {0, 0, 0, 10, "0123456789"},
        {3, 2, 0, 3, "234"},
        {0, 4, 5, 0, "456789"}}; // the last runs past the end
    for (const auto& [asked, offset, result, sizeAfter, bytes] : cases) {
        SCOPED_TRACE(offset);
        char buffer[16] = {};
        unsigned long size = asked;
        bool exists = false;
        EXPECT_EQ(XN_File::ReadBin(At("b"), buffer, &size, &exists, offset), result);
        EXPECT_TRUE(exists);
        EXPECT_EQ(size, result == 0 ? sizeAfter : asked);
        EXPECT_EQ(std::string(buffer), bytes);
    }
    unsigned long size = 0;
    bool exists = true;
    EXPECT_EQ(XN_File::ReadBin(At("missing"), nullptr, &size, &exists, 0), 0) << "a missing file is no error";
    EXPECT_FALSE(exists);
}

} // namespace
