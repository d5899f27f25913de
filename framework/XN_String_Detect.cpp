// XN_String byte-order marks, UTF-8 validation and the encoding guess for whole text files.
#include "XN_String.hpp"

#include <cstring>

namespace {

using Encoding = XN_String::Encoding;

struct ByteOrderMark {
    Encoding encoding;
    unsigned char bytes[4];
    unsigned int length;
};

const ByteOrderMark kWrittenMarks[] = {
    {XN_String::Encoding_UTF8, {0xEF, 0xBB, 0xBF, 0}, 3},
    {XN_String::Encoding_UTF16, {0xFF, 0xFE, 0, 0}, 2},
    {XN_String::Encoding_UTF16BE, {0xFE, 0xFF, 0, 0}, 2},
    {XN_String::Encoding_UTF32, {0xFF, 0xFE, 0, 0}, 4},
    {XN_String::Encoding_UTF32BE, {0x00, 0x00, 0xFE, 0xFF}, 4},
};

// Three- and four-byte marks in the order they are tested (after the two-byte ones).
const ByteOrderMark kThreeByteMarks[] = {
    {XN_String::Encoding_Unsupported, {0x0E, 0xFE, 0xFF, 0}, 3}, // SCSU
    {XN_String::Encoding_UTF8, {0xEF, 0xBB, 0xBF, 0}, 3},
    {XN_String::Encoding_Unsupported, {0xF7, 0x64, 0x4C, 0}, 3}, // UTF-1
    {XN_String::Encoding_Unsupported, {0xFB, 0xEE, 0x28, 0}, 3}, // BOCU-1
};
const ByteOrderMark kFourByteMarks[] = {
    {XN_String::Encoding_Unsupported, {0x84, 0x31, 0x95, 0x33}, 4}, // GB 18030
    {XN_String::Encoding_Unsupported, {0xDD, 0x73, 0x66, 0x73}, 4}, // UTF-EBCDIC
    {XN_String::Encoding_UTF32BE, {0x00, 0x00, 0xFE, 0xFF}, 4},
};

template <std::size_t N>
const ByteOrderMark* FindMark(const ByteOrderMark (&marks)[N], const unsigned char* bytes) {
    for (const ByteOrderMark& mark : marks)
        if (std::memcmp(bytes, mark.bytes, mark.length) == 0)
            return &mark;
    return nullptr;
}

bool InRange(unsigned char c, unsigned char low, unsigned char high) {
    return c >= low && c <= high;
}

// Length of the well-formed UTF-8 sequence at `p` (at most `left` bytes), 0 when it is not one.
std::size_t SequenceLength(const unsigned char* p, std::size_t left) {
    unsigned char lead = p[0];
    if (lead < 0x80)
        return 1;
    std::size_t length = 0;
    unsigned char low = 0x80;
    unsigned char high = 0xBF;
    if (InRange(lead, 0xC2, 0xDF))
        length = 2;
    else if (lead == 0xE0)
        length = 3, low = 0xA0;
    else if (lead == 0xED)
        length = 3, high = 0x9F;
    else if (InRange(lead, 0xE1, 0xEF))
        length = 3;
    else if (lead == 0xF0)
        length = 4, low = 0x90;
    else if (lead == 0xF4)
        length = 4, high = 0x8F;
    else if (InRange(lead, 0xF1, 0xF3))
        length = 4;
    if (length == 0 || length > left || !InRange(p[1], low, high))
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if (!InRange(p[i], 0x80, 0xBF))
            return 0;
    return length;
}

std::uint32_t Unit32(const char* p) {
    std::uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

// The UTF-32 forms, tested only on byte counts that are a multiple of 4: machine order when every
// unit is a code point, big-endian when every unit starts 00 0x with x below 0x11.
bool LooksLikeUtf32(const char* bytes, unsigned int n, Encoding& guess) {
    bool machineOrder = true;
    bool bigEndian = true;
    for (unsigned int i = 0; i < n; i += 4) {
        machineOrder = machineOrder && Unit32(bytes + i) < 0x110000;
        bigEndian = bigEndian && bytes[i] == 0 && static_cast<unsigned char>(bytes[i + 1]) < 0x11;
    }
    if (machineOrder)
        guess = XN_String::Encoding_UTF32;
    else if (bigEndian)
        guess = XN_String::Encoding_UTF32BE;
    return machineOrder || bigEndian;
}

// The guess from the share of zero bytes at even and odd offsets. Encoding_Unknown: nothing fits,
// the bytes are to be read as the system's 8-bit text.
Encoding GuessFromZeroBytes(const char* bytes, unsigned int n) {
    unsigned int evenZeros = 0;
    unsigned int oddZeros = 0;
    for (unsigned int i = 0; i < n; ++i)
        if (bytes[i] == 0)
            ++(i % 2 == 0 ? evenZeros : oddZeros);
    double even = 2.0 * evenZeros / n;
    double odd = 2.0 * oddZeros / n;
    if (even < 0.2 && odd > 0.6)
        return XN_String::Encoding_UTF16;
    bool utf8 = XN_String::IsUTF8(bytes, n, false);
    if (even <= 0.6)
        return utf8 ? XN_String::Encoding_UTF8 : XN_String::Encoding_Unknown;
    if (odd >= 0.2 && !utf8)
        return XN_String::Encoding_Unknown;
    return odd < 0.2 ? XN_String::Encoding_UTF16BE : XN_String::Encoding_UTF8;
}

// An empty text is answered as UTF-32 (0 is a multiple of 4). Kept: the answer is what callers
// have always been given for an empty file.
Encoding Guess(const char* bytes, unsigned int n) {
    Encoding guess = XN_String::Encoding_UTF32;
    if (n % 4 == 0 && (n == 0 || LooksLikeUtf32(bytes, n, guess)))
        return guess;
    return GuessFromZeroBytes(bytes, n);
}

// `n` bytes into `dst`; no bytes at all give the empty string, unreadable bytes leave `dst` as it was.
void Decode(XN_String& dst, const char* bytes, unsigned int n, Encoding enc) {
    static const char kNothing[4] = {0, 0, 0, 0};
    if (n == 0 || bytes == nullptr)
        XN_String::CStringToXN_String(dst, bytes != nullptr ? kNothing : nullptr, 0, enc, false);
    else
        XN_String::CStringToXN_String(dst, bytes, n, enc, false);
}

Encoding Convertible(Encoding enc) {
    return enc < 3 ? XN_String::Encoding_SystemDefault : enc;
}

} // namespace

XN_CString XN_String::GetBOM(Encoding enc) {
    XN_CString result;
    result.Adopt(nullptr, 0, enc);
    for (const ByteOrderMark& mark : kWrittenMarks) {
        if (mark.encoding == enc) {
            char* bytes = new char[mark.length];
            std::memcpy(bytes, mark.bytes, mark.length);
            result.Adopt(bytes, mark.length, enc);
        }
    }
    return result;
}

unsigned int XN_String::DetectBOM(const void* data, unsigned int n, Encoding& enc) {
    const unsigned char* bytes = static_cast<const unsigned char*>(data);
    if (bytes == nullptr || n < 2)
        return 0;
    if (bytes[0] == 0xFE && bytes[1] == 0xFF) {
        enc = Encoding_UTF16BE;
        return 2;
    }
    if (bytes[0] == 0xFF && bytes[1] == 0xFE) {
        bool utf32 = n >= 4 && bytes[2] == 0 && bytes[3] == 0;
        enc = utf32 ? Encoding_UTF32 : Encoding_UTF16;
        return utf32 ? 4 : 2;
    }
    const ByteOrderMark* mark = n >= 3 ? FindMark(kThreeByteMarks, bytes) : nullptr;
    if (mark == nullptr && n >= 4 && std::memcmp(bytes, "+/v", 3) == 0 && bytes[3] != 0 &&
        std::strchr("89+/", bytes[3]) != nullptr) {
        enc = Encoding_UTF7;
        return bytes[3] == '8' && n >= 5 && bytes[4] == '-' ? 5 : 4;
    }
    if (mark == nullptr && n >= 4)
        mark = FindMark(kFourByteMarks, bytes);
    if (mark == nullptr)
        return 0;
    enc = mark->encoding;
    return mark->length;
}

bool XN_String::IsUTF8(const char* text, bool requireMultiByte) {
    return text != nullptr && IsUTF8(text, Length(text), requireMultiByte);
}

bool XN_String::IsUTF8(const char* text, unsigned int n, bool requireMultiByte) {
    if (text == nullptr)
        return false;
    const unsigned char* p = reinterpret_cast<const unsigned char*>(text);
    bool multiByte = false;
    for (std::size_t i = 0; i < n;) {
        std::size_t length = SequenceLength(p + i, n - i);
        if (length == 0)
            return false;
        multiByte = multiByte || length > 1;
        i += length;
    }
    return multiByte || !requireMultiByte;
}

XN_String::Encoding XN_String::TextToString(XN_String& dst, const char* bytes, unsigned int n, bool detect,
                                            Encoding fallback) {
    Encoding marked = Encoding_Unknown;
    unsigned int markLength = DetectBOM(bytes, n, marked);
    if (markLength > 0) {
        Decode(dst, bytes + markLength, n - markLength, Convertible(marked));
        return marked;
    }
    Encoding chosen = detect ? Guess(bytes, n) : fallback;
    Decode(dst, bytes, n, Convertible(chosen));
    return chosen;
}
