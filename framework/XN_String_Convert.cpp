// XN_String's conversion engine over ICU converters.
//
// Every conversion reads the source into UTF-16 (the "platform text"), then writes that text in the
// destination encoding. UTF-16 and UTF-32 in either byte order are handled here; the 8-bit
// encodings, UTF-7 and UTF-8 go through ICU.
#include "XN_String.hpp"

#include <unicode/ucnv.h>
#include <unicode/ucnv_err.h>

#include <langinfo.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

namespace {

using Encoding = XN_String::Encoding;

constexpr bool kBigEndianMachine = U_IS_BIG_ENDIAN;

// A 0 unit of the widest encoding.
const char kZeros[4] = {0, 0, 0, 0};

// Code-unit width of an encoding in bytes: the size of its terminator and of the 0 unit that ends
// a source given without a byte count.
unsigned int UnitWidth(Encoding enc) {
    switch (enc) {
    case XN_String::Encoding_UTF16:
    case XN_String::Encoding_UTF16BE:
        return 2;
    case XN_String::Encoding_UTF32:
    case XN_String::Encoding_UTF32BE:
        return 4;
    default:
        return 1;
    }
}

bool IsUtf16(Encoding enc) {
    return enc == XN_String::Encoding_UTF16 || enc == XN_String::Encoding_UTF16BE;
}
bool IsUtf32(Encoding enc) {
    return enc == XN_String::Encoding_UTF32 || enc == XN_String::Encoding_UTF32BE;
}

// Whether units of `enc` are stored in the opposite order of the machine's.
bool IsSwapped(Encoding enc) {
    bool bigEndian = enc == XN_String::Encoding_UTF16BE || enc == XN_String::Encoding_UTF32BE;
    return bigEndian != kBigEndianMachine;
}

std::uint16_t Swap16(std::uint16_t v) {
    return static_cast<std::uint16_t>((v >> 8) | (v << 8));
}
std::uint32_t Swap32(std::uint32_t v) {
    return __builtin_bswap32(v);
}

std::uint32_t ReadUnit32(const char* p, bool swap) {
    std::uint32_t v;
    std::memcpy(&v, p, sizeof v);
    return swap ? Swap32(v) : v;
}

// A growable buffer kept for the module's life, so that large conversions do not allocate twice.
// Strings are used on the host's main thread only. Not thread_local: a thread-local object with a
// destructor keeps the add-on's library mapped after dlclose, so its statics would survive an unload.
template <class T>
class Scratch {
public:
    T* Reserve(std::size_t n) {
        if (n > size) {
            data.reset(new T[n]);
            size = n;
        }
        return data.get();
    }

private:
    std::unique_ptr<T[]> data;
    std::size_t size = 0;
};

Scratch<char16_t> sUnitScratch;
Scratch<char> sByteScratch;

// ---- ICU converters ---------------------------------------------------------------------------------

// Open converters by name, kept for the module's life (main thread only, like the buffers above).
class ConverterCache {
public:
    ~ConverterCache() {
        for (Entry& e : entries)
            ucnv_close(e.converter);
    }

    // The converter, with "?" as substitution text; null when ICU does not know the name.
    UConverter* Get(const char* name) {
        for (Entry& e : entries)
            if (e.name == name)
                return e.converter;
        UErrorCode err = U_ZERO_ERROR;
        UConverter* converter = ucnv_open(name, &err);
        if (U_FAILURE(err))
            return nullptr;
        static const UChar kQuestionMark[] = {u'?'};
        ucnv_setSubstString(converter, kQuestionMark, 1, &err);
        entries.push_back({name, converter});
        return converter;
    }

private:
    struct Entry {
        std::string name;
        UConverter* converter;
    };
    std::vector<Entry> entries;
};

// Made on first use: static strings of other files convert before this file's statics are built.
ConverterCache& Converters() {
    static ConverterCache converters;
    return converters;
}

// Encoding_SystemDefault: the converter chosen for the codeset it was last resolved for, so that a
// conversion costs one string comparison unless the locale changed.
struct DefaultChoice {
    std::string override; // the codeset followed instead of the locale's ("" for none)
    std::string codeset;
    std::string name;
    UConverter* converter = nullptr;
    bool resolved = false;
};

// Made on first use, like the converters.
DefaultChoice& Default() {
    static DefaultChoice choice;
    return choice;
}

// A codeset the default may stand for: one byte per character in every text, as the 8-bit
// default is, and more than ASCII, which could not read half of the byte values.
bool IsEightBit(UConverter* converter) {
    return converter != nullptr && ucnv_getMaxCharSize(converter) == 1 &&
           ucnv_getType(converter) != UCNV_US_ASCII;
}

const DefaultChoice& SystemDefault() {
    DefaultChoice& choice = Default();
    const char* codeset = choice.override.empty() ? nl_langinfo(CODESET) : choice.override.c_str();
    if (codeset == nullptr)
        codeset = "";
    if (!choice.resolved || choice.codeset != codeset) {
        UConverter* converter = *codeset != 0 ? Converters().Get(codeset) : nullptr;
        const bool eightBit = IsEightBit(converter);
        choice.codeset = codeset;
        choice.name = eightBit ? codeset : "windows-1252";
        choice.converter = eightBit ? converter : Converters().Get("windows-1252");
        choice.resolved = true;
    }
    return choice;
}

// The converter of an 8-bit encoding, UTF-7 or UTF-8. Encoding_SystemDefault and every value we do
// not know use the system's 8-bit default.
UConverter* ConverterFor(Encoding enc) {
    switch (enc) {
    case XN_String::Encoding_UTF7:
        return Converters().Get("UTF-7");
    case XN_String::Encoding_UTF8:
        return Converters().Get("UTF-8");
    case XN_String::Encoding_ASCII:
        return Converters().Get("US-ASCII");
    case XN_String::Encoding_MacRoman:
        return Converters().Get("macintosh");
    case XN_String::Encoding_WindowsLatin1:
        return Converters().Get("windows-1252");
    case XN_String::Encoding_ISOLatin1:
        return Converters().Get("ISO-8859-1");
    default:
        return SystemDefault().converter;
    }
}

// ---- Reading the source -------------------------------------------------------------------------------

// The source as UTF-16 units: borrowed from the source when it already is machine-order UTF-16,
// otherwise in the thread's scratch buffer (valid until the next conversion on the thread).
struct PlatformText {
    const char16_t* units = nullptr;
    std::size_t count = 0;
};

std::size_t Utf32ToUtf16(const char* src, char16_t* dst, long count, bool swap) {
    if (count <= 0 && ReadUnit32(src, swap) == 0)
        return 0;
    std::size_t produced = 0;
    for (long i = 0; count <= 0 || i < count; ++i) {
        std::uint32_t v = ReadUnit32(src + 4 * i, swap);
        if (count <= 0 && v == 0)
            break;
        bool surrogate = v >= 0xD800 && v <= 0xDFFF;
        if (v < 0x10000 && !surrogate) {
            if (dst != nullptr)
                dst[produced] = static_cast<char16_t>(v);
            produced += 1;
        } else if (v >= 0x10000 && v <= 0x10FFFF) {
            if (dst != nullptr) {
                dst[produced] = static_cast<char16_t>(((v - 0x10000) >> 10) + 0xD800);
                dst[produced + 1] = static_cast<char16_t>((v & 0x3FF) | 0xDC00);
            }
            produced += 2;
        } else {
            if (dst != nullptr)
                dst[produced] = 0xFFFD;
            produced += 1;
        }
    }
    return produced;
}

// Bytes before the first 0 unit of `width` bytes.
std::size_t BytesToTerminator(const char* src, unsigned int width) {
    if (width == 1)
        return std::strlen(src);
    std::size_t bytes = 0;
    while (std::memcmp(src + bytes, kZeros, width) != 0)
        bytes += width;
    return bytes;
}

// A byte count below one unit reads nothing; only a count below 1 means "up to a 0 unit".
bool DecodeUtf32(const char* src, long srcBytes, bool swap, PlatformText& text) {
    if (srcBytes >= 1 && srcBytes < 4) {
        text = PlatformText();
        return true;
    }
    long count = srcBytes >= 1 ? srcBytes / 4 : 0;
    std::size_t needed = Utf32ToUtf16(src, nullptr, count, swap);
    char16_t* units = sUnitScratch.Reserve(needed + 1);
    text.count = Utf32ToUtf16(src, units, count, swap);
    text.units = units;
    return true;
}

// UTF-16 is taken as it is (no check of surrogate pairs); an odd last byte is ignored.
bool DecodeUtf16(const char* src, std::size_t bytes, bool swap, PlatformText& text) {
    text.count = bytes / 2;
    if (!swap && reinterpret_cast<std::uintptr_t>(src) % alignof(char16_t) == 0) {
        text.units = reinterpret_cast<const char16_t*>(src);
        return true;
    }
    char16_t* units = sUnitScratch.Reserve(text.count + 1);
    std::memcpy(units, src, text.count * 2);
    if (swap)
        for (std::size_t i = 0; i < text.count; ++i)
            units[i] = Swap16(units[i]);
    text.units = units;
    return true;
}

// A source that is not valid in its encoding fails as a whole.
bool DecodeWithIcu(Encoding from, const char* src, std::size_t bytes, PlatformText& text) {
    UConverter* converter = ConverterFor(from);
    if (converter == nullptr || bytes > 0x7FFFFFFF)
        return false;
    UErrorCode err = U_ZERO_ERROR;
    ucnv_setToUCallBack(converter, UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &err);
    // No encoding we convert yields more UTF-16 units than bytes; the retry covers any that would.
    std::size_t room = bytes + 1;
    for (int attempt = 0; attempt < 2; ++attempt) {
        char16_t* units = sUnitScratch.Reserve(room);
        err = U_ZERO_ERROR;
        int32_t n = ucnv_toUChars(converter, units, static_cast<int32_t>(room), src,
                                  static_cast<int32_t>(bytes), &err);
        if (err == U_BUFFER_OVERFLOW_ERROR) {
            room = static_cast<std::size_t>(n) + 1;
            continue;
        }
        if (U_FAILURE(err))
            return false;
        text.units = units;
        text.count = static_cast<std::size_t>(n);
        return true;
    }
    return false;
}

bool Decode(Encoding from, const char* src, long srcBytes, PlatformText& text) {
    if (IsUtf32(from))
        return DecodeUtf32(src, srcBytes, IsSwapped(from), text);
    std::size_t bytes =
        srcBytes >= 1 ? static_cast<std::size_t>(srcBytes) : BytesToTerminator(src, UnitWidth(from));
    if (IsUtf16(from))
        return DecodeUtf16(src, bytes, IsSwapped(from), text);
    return DecodeWithIcu(from, src, bytes, text);
}

// ---- Writing the destination ------------------------------------------------------------------------

// What an encoder achieved: the UTF-16 units it consumed and the bytes they became. Writing into a
// buffer stops at the first character that does not fit or (without lossy) cannot be represented.
struct Encoded {
    std::size_t converted = 0;
    std::size_t bytes = 0;
};

Encoded EncodeUtf16(const PlatformText& text, char* dst, std::size_t dstBytes, bool swap) {
    Encoded done;
    done.converted = dst == nullptr ? text.count : std::min(text.count, dstBytes / 2);
    done.bytes = done.converted * 2;
    if (dst != nullptr) {
        for (std::size_t i = 0; i < done.converted; ++i) {
            std::uint16_t unit = swap ? Swap16(text.units[i]) : text.units[i];
            std::memcpy(dst + 2 * i, &unit, 2);
        }
    }
    return done;
}

// An unpaired surrogate has no UTF-32 form: "?" when lossy, the end of the conversion otherwise.
Encoded EncodeUtf32(const PlatformText& text, char* dst, std::size_t dstBytes, bool swap, bool lossy) {
    Encoded done;
    while (done.converted < text.count) {
        std::uint32_t c = text.units[done.converted];
        std::size_t used = 1;
        if (c >= 0xD800 && c <= 0xDBFF && done.converted + 1 < text.count) {
            std::uint32_t low = text.units[done.converted + 1];
            if (low >= 0xDC00 && low <= 0xDFFF) {
                c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
                used = 2;
            }
        }
        if (c >= 0xD800 && c <= 0xDFFF) {
            if (!lossy)
                break;
            c = '?';
        }
        if (dst != nullptr) {
            if (done.bytes + 4 > dstBytes)
                break;
            std::uint32_t unit = swap ? Swap32(c) : c;
            std::memcpy(dst + done.bytes, &unit, 4);
        }
        done.converted += used;
        done.bytes += 4;
    }
    return done;
}

bool PrepareIcuEncoder(UConverter* converter, bool lossy) {
    UErrorCode err = U_ZERO_ERROR;
    ucnv_resetFromUnicode(converter);
    ucnv_setFromUCallBack(converter, lossy ? UCNV_FROM_U_CALLBACK_SUBSTITUTE : UCNV_FROM_U_CALLBACK_STOP,
                          nullptr, nullptr, nullptr, &err);
    return U_SUCCESS(err);
}

bool IsUnmappable(UErrorCode err) {
    return err == U_INVALID_CHAR_FOUND || err == U_ILLEGAL_CHAR_FOUND;
}

// Units consumed before an unmappable character stopped ICU (ICU has consumed the character too).
std::size_t UnitsBeforeStop(UConverter* converter, const UChar* start, const UChar* stop) {
    UChar invalid[32];
    int8_t invalidLength = sizeof invalid / sizeof invalid[0];
    UErrorCode err = U_ZERO_ERROR;
    ucnv_getInvalidUChars(converter, invalid, &invalidLength, &err);
    std::size_t consumed = static_cast<std::size_t>(stop - start);
    return U_SUCCESS(err) && static_cast<std::size_t>(invalidLength) <= consumed ? consumed - invalidLength
                                                                                 : 0;
}

Encoded MeasureWithIcu(UConverter* converter, const PlatformText& text, bool lossy) {
    Encoded done;
    if (!PrepareIcuEncoder(converter, lossy))
        return done;
    const UChar* start = reinterpret_cast<const UChar*>(text.units);
    const UChar* source = start;
    char chunk[1024];
    for (;;) {
        char* target = chunk;
        UErrorCode err = U_ZERO_ERROR;
        ucnv_fromUnicode(converter, &target, chunk + sizeof chunk, &source, start + text.count, nullptr, true,
                         &err);
        done.bytes += static_cast<std::size_t>(target - chunk);
        if (err == U_BUFFER_OVERFLOW_ERROR)
            continue;
        if (U_SUCCESS(err))
            done.converted = text.count;
        else if (IsUnmappable(err))
            done.converted = UnitsBeforeStop(converter, start, source);
        return done;
    }
}

// Units of the first character: one, or two for a surrogate pair.
std::size_t FirstCharacterUnits(const PlatformText& text) {
    bool pair = text.count >= 2 && text.units[0] >= 0xD800 && text.units[0] <= 0xDBFF &&
                text.units[1] >= 0xDC00 && text.units[1] <= 0xDFFF;
    return pair ? 2 : 1;
}

Encoded ConvertWithIcu(UConverter* converter, const PlatformText& text, char* dst, std::size_t dstBytes,
                       bool lossy) {
    Encoded done;
    if (!PrepareIcuEncoder(converter, lossy))
        return done;
    const UChar* start = reinterpret_cast<const UChar*>(text.units);
    const UChar* source = start;
    char* target = dst;
    UErrorCode err = U_ZERO_ERROR;
    ucnv_fromUnicode(converter, &target, dst + dstBytes, &source, start + text.count, nullptr, true, &err);
    done.bytes = static_cast<std::size_t>(target - dst);
    if (U_SUCCESS(err)) {
        done.converted = text.count;
    } else if (IsUnmappable(err)) {
        done.converted = UnitsBeforeStop(converter, start, source);
    } else if (err == U_BUFFER_OVERFLOW_ERROR) {
        // ICU may have split the last character between the buffer and its overflow store, so only
        // "something fitted" is known: enough to tell -1 from -2.
        PlatformText first{text.units, FirstCharacterUnits(text)};
        Encoded alone = MeasureWithIcu(converter, first, lossy);
        done.converted = alone.converted > 0 && alone.bytes <= dstBytes ? 1 : 0;
    }
    return done;
}

Encoded EncodeText(Encoding to, const PlatformText& text, char* dst, std::size_t dstBytes, bool lossy,
                   bool& readable) {
    readable = true;
    if (IsUtf16(to))
        return EncodeUtf16(text, dst, dstBytes, IsSwapped(to));
    if (IsUtf32(to))
        return EncodeUtf32(text, dst, dstBytes, IsSwapped(to), lossy);
    UConverter* converter = ConverterFor(to);
    if (converter == nullptr) {
        readable = false;
        return Encoded();
    }
    return dst == nullptr ? MeasureWithIcu(converter, text, lossy)
                          : ConvertWithIcu(converter, text, dst, dstBytes, lossy);
}

// Writes the text in `to` (or measures it when `dst` is null) and applies the result rules.
std::int64_t Encode(Encoding to, const PlatformText& text, char* dst, long dstBytes, bool addTerminator,
                    bool lossy) {
    std::size_t room = dstBytes > 0 ? static_cast<std::size_t>(dstBytes) : 0;
    bool readable = true;
    Encoded done = EncodeText(to, text, dst, room, lossy, readable);
    if (!readable || done.converted == 0)
        return -1;
    std::size_t terminator = addTerminator ? UnitWidth(to) : 0;
    if (dst == nullptr)
        return static_cast<std::int64_t>(done.bytes + terminator);
    // A terminator without room counts as a destination too small rather than a write past its end.
    if (done.converted < text.count || done.bytes + terminator > room)
        return -2;
    std::memset(dst + done.bytes, 0, terminator);
    return static_cast<std::int64_t>(done.bytes + terminator);
}

// Argument checks and the empty source, which end a conversion before any text is read.
// Returns true with `result` set when the conversion ends here.
bool EndsEarly(Encoding from, const char* src, long srcBytes, Encoding to, char* dst, long dstBytes,
               bool addTerminator, std::int64_t& result) {
    if (src == nullptr) {
        if (dst != nullptr)
            *dst = 0;
        result = -3;
        return true;
    }
    if (from < XN_String::Encoding_SystemDefault || to < XN_String::Encoding_SystemDefault) {
        result = from < XN_String::Encoding_SystemDefault ? -4 : -5;
        return true;
    }
    if (srcBytes != 0 || std::memcmp(src, kZeros, UnitWidth(from)) != 0)
        return false;
    long terminator = UnitWidth(to);
    if (!addTerminator)
        result = 0;
    else if (dst == nullptr)
        result = terminator;
    else if (terminator > dstBytes)
        result = -2;
    else {
        std::memset(dst, 0, static_cast<std::size_t>(terminator));
        result = terminator;
    }
    return true;
}

// Index of the first 0 unit among `n` units, or `n`. Scans blocks of fixed size first, which the
// compiler turns into vector code: long strings are scanned on every conversion to bytes.
std::size_t FirstZeroUnit(const unsigned short* units, std::size_t n) {
    constexpr std::size_t kBlock = 32;
    std::size_t i = 0;
    for (; i + kBlock <= n; i += kBlock) {
        unsigned int zeros = 0;
        for (std::size_t j = 0; j < kBlock; ++j)
            zeros |= units[i + j] == 0;
        if (zeros != 0)
            break;
    }
    while (i < n && units[i] != 0)
        ++i;
    return i;
}

// The units of `s` a conversion of (start, count) reads: count 0 means up to the first 0 unit.
// Indices past the end read nothing.
PlatformText UnitsOf(const XN_String& s, unsigned int start, unsigned int count) {
    PlatformText text;
    if (s.IsNull() || start >= s.GetLength())
        return text;
    const unsigned short* units = s.GetBuffer() + start;
    unsigned int rest = s.GetLength() - start;
    if (count == 0)
        count = static_cast<unsigned int>(FirstZeroUnit(units, rest));
    text.units = reinterpret_cast<const char16_t*>(units);
    text.count = count < rest ? count : rest;
    return text;
}

// Bytes a text takes at most in `to`, so one conversion into a buffer of that size cannot overflow.
std::size_t MaxBytes(Encoding to, std::size_t units) {
    if (IsUtf16(to))
        return 2 * units;
    if (IsUtf32(to))
        return 4 * units;
    UConverter* converter = ConverterFor(to);
    return converter != nullptr ? UCNV_GET_MAX_BYTES_FOR_STRING(units, ucnv_getMaxCharSize(converter)) : 0;
}

// Lossy, with terminator, into a new[] array of exactly the right size. Converting once into the
// thread's scratch buffer and copying gives the same array as measuring first and converting into
// it, at the cost of a copy instead of a second conversion.
std::int64_t EncodeIntoNewArray(Encoding to, const PlatformText& text, char** out) {
    if (to < XN_String::Encoding_SystemDefault)
        return -5;
    std::size_t terminator = UnitWidth(to);
    std::int64_t bytes = static_cast<std::int64_t>(terminator);
    const char* converted = nullptr;
    if (text.count > 0) {
        std::size_t room = MaxBytes(to, text.count) + terminator;
        char* scratch = sByteScratch.Reserve(room);
        bytes = Encode(to, text, scratch, static_cast<long>(room), true, true);
        if (bytes < 0)
            return bytes;
        converted = scratch;
    }
    *out = new char[static_cast<std::size_t>(bytes)];
    if (converted != nullptr)
        std::memcpy(*out, converted, static_cast<std::size_t>(bytes));
    else
        std::memset(*out, 0, terminator);
    return bytes;
}

} // namespace

std::int64_t XN_String::ConvertChangeEncoding(Encoding from, const char* src, long srcBytes, Encoding to,
                                              char* dst, long dstBytes, bool addTerminator, bool lossy) {
    std::int64_t result = 0;
    if (EndsEarly(from, src, srcBytes, to, dst, dstBytes, addTerminator, result))
        return result;
    PlatformText text;
    if (!Decode(from, src, srcBytes, text))
        return -1;
    return Encode(to, text, dst, dstBytes, addTerminator, lossy);
}

unsigned int XN_String::UTF32toUTF16(const void* src, unsigned short* dst, long count, bool swap) {
    return static_cast<unsigned int>(
        Utf32ToUtf16(static_cast<const char*>(src), reinterpret_cast<char16_t*>(dst), count, swap));
}

bool XN_String::CStringToXN_String(XN_String& dst, const char* text, unsigned int byteCount, Encoding enc,
                                   bool append) {
    if (text == nullptr) {
        if (!append)
            dst.THIS_DeallocSetNullString();
        return true;
    }
    std::int64_t early = 0;
    PlatformText platform;
    if (EndsEarly(enc, text, byteCount, Encoding_UTF16, nullptr, 0, true, early)) {
        if (early < 0)
            return false;
    } else if (!Decode(enc, text, byteCount, platform) || platform.count == 0) {
        return false;
    }
    // Units with the terminator: what a measuring conversion to UTF-16 reports, halved.
    unsigned int units = static_cast<unsigned int>(platform.count) + 1;
    unsigned int at = append ? dst.length : 0;
    if (append)
        dst.THIS_Alloc(units + dst.length, true);
    else
        dst.THIS_Alloc(units, false);
    if (platform.count > 0)
        std::memcpy(dst.buffer + at, platform.units, platform.count * sizeof(char16_t));
    dst.length = at + units - 1;
    dst.buffer[dst.length] = 0;
    return true;
}

bool XN_String::XN_StringToCString(char** out, unsigned int& outBytes, Encoding enc, const XN_String& s,
                                   unsigned int start, unsigned int count) {
    outBytes = 0;
    if (out == nullptr)
        return false;
    *out = nullptr;
    std::int64_t bytes = EncodeIntoNewArray(enc, UnitsOf(s, start, count), out);
    if (bytes < 0)
        return false;
    outBytes = static_cast<unsigned int>(bytes);
    return true;
}

long XN_String::XN_StringToCStringLenBytes(Encoding enc, const XN_String& s, unsigned int start,
                                           unsigned int count) {
    if (enc < Encoding_SystemDefault)
        return -1;
    PlatformText text = UnitsOf(s, start, count);
    if (text.count == 0)
        return 0;
    std::int64_t bytes = Encode(enc, text, nullptr, 0, false, true);
    return bytes < 0 ? -1 : static_cast<long>(bytes);
}

XN_CString XN_String::ToCStr(Encoding enc) const {
    XN_CString result;
    ToCStr(result, enc);
    return result;
}

bool XN_String::ToCStr(XN_CString& out, Encoding enc) const {
    char* bytes = nullptr;
    unsigned int count = 0;
    bool converted = XN_StringToCString(&bytes, count, enc, *this, 0, 0);
    out.Adopt(bytes, count, enc);
    return converted;
}

unsigned short XN_String::CharToXN_Char(char c, Encoding enc) {
    char16_t unit[2] = {0, 0};
    std::int64_t bytes = ConvertChangeEncoding(enc, &c, 1, Encoding_UTF16, reinterpret_cast<char*>(unit),
                                               sizeof unit, false, true);
    return bytes >= 2 ? unit[0] : 0;
}

char XN_String::XN_CharToChar(unsigned short c, Encoding enc) {
    char byte = '?';
    std::int64_t bytes = ConvertChangeEncoding(Encoding_UTF16, reinterpret_cast<const char*>(&c), 2, enc,
                                               &byte, 1, false, false);
    return bytes == 1 ? byte : '?';
}

const char* XN_String::GetSystemDefaultEncodingName() {
    return SystemDefault().name.c_str();
}

void XN_String::SetSystemCodeset(const char* codeset) {
    Default().override = codeset != nullptr ? codeset : "";
}

unsigned int XN_String::Length(const char* text) {
    return static_cast<unsigned int>(std::strlen(text));
}
