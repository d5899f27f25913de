// Byte-order marks, the UTF-8 test and the whole-file decoder over any bytes. The first byte picks
// the decoder's mode and fallback encoding; the rest is the file.
#include "XN_String.hpp"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

const XN_String::Encoding kEncodings[] = {
    XN_String::Encoding_Unknown,   XN_String::Encoding_Unsupported, XN_String::Encoding_SystemDefault,
    XN_String::Encoding_UTF7,      XN_String::Encoding_UTF8,        XN_String::Encoding_UTF16,
    XN_String::Encoding_UTF16BE,   XN_String::Encoding_UTF32,       XN_String::Encoding_UTF32BE,
    XN_String::Encoding_ASCII,     XN_String::Encoding_MacRoman,    XN_String::Encoding_WindowsLatin1,
    XN_String::Encoding_ISOLatin1,
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 || size > 1 << 16)
        return 0;
    const bool detect = (data[0] & 0x80) != 0;
    const XN_String::Encoding fallback =
        kEncodings[(data[0] & 0x7F) % (sizeof kEncodings / sizeof kEncodings[0])];
    const char* bytes = reinterpret_cast<const char*>(data + 1);
    const unsigned int n = static_cast<unsigned int>(size - 1);

    // The longest mark is UTF-7's "+/v8-".
    XN_String::Encoding marked = XN_String::Encoding_Unknown;
    const unsigned int markLength = XN_String::DetectBOM(bytes, n, marked);
    if (markLength > n || markLength > 5)
        std::abort();

    const std::string terminated(bytes, n);
    const bool wholeUTF8 = XN_String::IsUTF8(bytes, n, false);
    // The 0-terminated form stops at the first 0 byte, which is valid UTF-8 up to there when all is.
    if (wholeUTF8 && !XN_String::IsUTF8(terminated.c_str(), false))
        std::abort();
    if (XN_String::IsUTF8(bytes, n, true) && !wholeUTF8)
        std::abort();

    XN_String text;
    XN_String::TextToString(text, bytes, n, detect, fallback);
    // Whatever was decoded converts back without losing its length bookkeeping.
    const XN_CString utf8 = text.ToCStr(XN_String::Encoding_UTF8);
    if (utf8.Get() != nullptr && text.GetLength() > 0 && std::strlen(utf8.Get()) > 4u * text.GetLength())
        std::abort();
    return 0;
}
