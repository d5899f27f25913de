// XN_String: the framework's one text type. UTF-16 code units in an owned heap buffer, with a null
// string (no buffer) that is distinct from the empty string (a buffer holding only the terminator)
// and sorts before it. Copies are deep. Lengths and indices are always in UTF-16 code units.
//
// Conversions to and from other encodings go through the platform converter (ICU). Every 8-bit
// overload without an encoding argument reads and writes Encoding_SystemDefault, the user's 8-bit
// encoding, in which every byte is one character: the codeset of the current locale when that is a
// single-byte encoding, windows-1252 otherwise (UTF-8, C and POSIX locales). windows-1252 reads all
// 256 byte values and writes them back, so no byte string fails to read and bytes round-trip.
//
// Failures are values (false, negative codes, the null string, 0xFFFFFFFF for "not found"); only
// memory exhaustion propagates, as the allocator's exception.
#pragma once

#include <cstdint>

class XN_CString;
template <class T>
class XN_List;

class XN_String {
public:
    // Values are fixed: they are stored in files and passed around as numbers. Any value the
    // converter does not know (3 to 9 among them) is treated as Encoding_SystemDefault.
    enum Encoding : std::int32_t {
        Encoding_Unknown = 0, // converting from it fails with -4, to it with -5
        Encoding_Unsupported =
            1, // a Unicode form that byte-order-mark detection recognises but we do not convert
        Encoding_SystemDefault = 2,
        Encoding_UTF7 = 10,
        Encoding_UTF8 = 11,
        Encoding_UTF16 = 12, // machine byte order: the internal form
        Encoding_UTF16BE = 13,
        Encoding_UTF32 = 14, // machine byte order
        Encoding_UTF32BE = 15,
        Encoding_ASCII = 100,
        Encoding_MacRoman = 101,
        Encoding_WindowsLatin1 = 102, // Windows code page 1252
        Encoding_ISOLatin1 = 103
    };

    // Result of a search that found nothing.
    static constexpr unsigned int kNotFound = 0xFFFFFFFFu;

    // ---- Construction ------------------------------------------------------------------------

    XN_String();
    // Converts `text` (null gives the null string, "" the empty string). A byte count of 0 means
    // "up to the terminating 0 byte". An unmappable character becomes "?"; a source the converter
    // cannot read at all leaves the null string.
    XN_String(const char* text, Encoding enc = Encoding_SystemDefault);
    XN_String(const char* text, unsigned int byteCount, Encoding enc = Encoding_SystemDefault);
    // Copies a 0-terminated UTF-16 text; null gives the null string.
    explicit XN_String(const unsigned short* text);
    // Copies `count` units as they are (0 units included); null text or count 0 gives the null string.
    XN_String(const unsigned short* text, unsigned int count);
    XN_String(const XN_String& other);
    XN_String(XN_String&& other) noexcept;
    // Takes over the buffer of `source` and leaves `source` the null string.
    explicit XN_String(XN_String* source);
    ~XN_String();

    // ---- Assignment and concatenation (8-bit operands in Encoding_SystemDefault) ---------------

    XN_String& operator=(const char* text);
    XN_String& operator=(const XN_String& other);
    XN_String& operator=(XN_String&& other) noexcept;
    XN_String operator+(const char* text) const;
    XN_String operator+(const XN_String& other) const;
    XN_String& operator+=(const char* text);
    XN_String& operator+=(const XN_String& other);

    // Replaces the text by a conversion, as the constructor does. False (text unchanged) when the
    // converter cannot read the source.
    bool Set(const char* text, unsigned int byteCount = 0, Encoding enc = Encoding_SystemDefault);
    // Becomes the concatenation of up to three 8-bit pieces; each piece is taken when its pointer is
    // not null, `n` bytes of it (0 or more than its length: all of it). All null: the null string.
    void SetCat(const char* a, unsigned int na, const char* b = nullptr, unsigned int nb = 0,
                const char* c = nullptr, unsigned int nc = 0);
    void SetToNullString();

    // ---- State ---------------------------------------------------------------------------------

    bool IsNull() const { return buffer == nullptr; }
    // True for the null string and for a string of length 0.
    bool IsEmpty() const { return length == 0; }
    unsigned int GetLength() const { return length; }
    // Units allocated, terminator included; 0 for the null string.
    unsigned int GetCapacity() const { return capacity; }
    // The units, 0-terminated at GetLength(); null for the null string. Valid until the string changes.
    const unsigned short* GetBuffer() const { return buffer; }
    // Writable units, for filling a buffer prepared with SetSize; finish with SetLength.
    unsigned short* GetBuffer() { return buffer; }
    // Sets the length and writes the terminator; false (no change) unless `units` < capacity.
    bool SetLength(unsigned int units);

    // ---- Comparison ----------------------------------------------------------------------------

    // -1, 0 or 1. The null string sorts before every other string, two null strings are equal.
    // Units are compared as unsigned values from the two start indices, for `count` units (0: no
    // limit) or until an equal pair of 0 units. Positions past a string's end read as 0.
    static int Compare(const XN_String& a, unsigned int aStart, const XN_String& b, unsigned int bStart,
                       unsigned int count);
    // The same with every unit through XN_CharToLowerCase.
    static int CompareIgnoreCase(const XN_String& a, unsigned int aStart, const XN_String& b,
                                 unsigned int bStart, unsigned int count);
    bool operator<(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) < 0; }
    bool operator>(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) > 0; }
    bool operator<=(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) <= 0; }
    bool operator>=(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) >= 0; }
    bool operator==(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) == 0; }
    bool operator!=(const XN_String& other) const { return Compare(*this, 0, other, 0, 0) != 0; }

    // ---- Element access (out of range: 0 or no change) -----------------------------------------

    unsigned short UCharAt(unsigned int i) const;
    void SetUCharAt(unsigned int i, unsigned short c);
    // The unit as one byte in Encoding_SystemDefault; "?" when it has no one-byte form.
    char CharAt(unsigned int i) const;
    // Stores the byte read in Encoding_SystemDefault; a byte that does not convert stores 0.
    void SetCharAt(unsigned int i, char c);
    // Case mapping of one unit by the C library (towlower/towupper, current locale), cut to 16 bits.
    static unsigned short XN_CharToLowerCase(unsigned short c);
    static unsigned short XN_CharToUpperCase(unsigned short c);
    // One byte in `enc` to one UTF-16 unit; 0 when nothing converts.
    static unsigned short CharToXN_Char(char c, Encoding enc = Encoding_SystemDefault);
    // One unit to one byte in `enc`; "?" when it has no one-byte form.
    static char XN_CharToChar(unsigned short c, Encoding enc = Encoding_SystemDefault);

    // ---- Sizing ----------------------------------------------------------------------------------

    // Always allocates exactly `newCapacity` units, also when smaller. With `keep`, the text is cut
    // to newCapacity - 1 units and terminated; without, the length is 0 and nothing is written (the
    // caller fills the buffer). Returns true.
    bool SetSize(unsigned int newCapacity, bool keep);

    // ---- Sub-strings (new strings; out of range gives the null string) --------------------------

    // From `start` to the end; an empty string when start == length.
    XN_String Substring(unsigned int start) const;
    // At most `count` units from `start`.
    XN_String Substring(unsigned int start, unsigned int count) const;
    // The `count` units that end `skip` units before the end.
    XN_String EndSubstring(unsigned int count, unsigned int skip = 0) const;

    // ---- Conversions -----------------------------------------------------------------------------

    // Converts `text` into `dst` (replacing, or appending when `append`). Unmappable characters
    // become "?". False, with `dst` unchanged, when the converter cannot read the source. A null
    // `text` makes `dst` null (unless appending) and returns true.
    static bool CStringToXN_String(XN_String& dst, const char* text, unsigned int byteCount, Encoding enc,
                                   bool append);
    // `count` units of `s` from `start` (0: up to the terminator; a null `s` converts as empty),
    // lossy, with terminator, into a new[] array that the caller releases with delete[].
    // `outBytes` counts the terminator. False (out null, outBytes 0) on failure.
    static bool XN_StringToCString(char** out, unsigned int& outBytes, Encoding enc, const XN_String& s,
                                   unsigned int start, unsigned int count);
    // Bytes the text would take in `enc`, lossy, terminator excluded; -1 on failure.
    static long XN_StringToCStringLenBytes(Encoding enc, const XN_String& s, unsigned int start = 0,
                                           unsigned int count = 0);
    // The whole string, lossy, with terminator.
    XN_CString ToCStr(Encoding enc = Encoding_SystemDefault) const;
    // The same into `out`, whose old bytes are released. False when the conversion fails.
    bool ToCStr(XN_CString& out, Encoding enc = Encoding_SystemDefault) const;

    // The conversion engine. Converts `srcBytes` bytes of `src` in `from` (below 1: up to a 0 unit
    // of `from`'s width) into `dst` in `to`, or only measures when `dst` is null. Lossy mode writes
    // "?" for a character `to` cannot hold. With `addTerminator`, a 0 unit of `to`'s width (1, 2 or 4
    // bytes) follows the text and is counted. Returns the bytes written or needed, or:
    //   -1 nothing converted (unreadable source, or not even the first character fits)
    //   -2 destination too small, or a character not representable without `lossy`
    //   -3 no source (a 0 byte is written at `dst` when it is not null)
    //   -4 bad source encoding, -5 bad destination encoding (Unknown or Unsupported).
    static std::int64_t ConvertChangeEncoding(Encoding from, const char* src, long srcBytes, Encoding to,
                                              char* dst, long dstBytes, bool addTerminator, bool lossy);
    // Bytes before the terminating 0; `text` must not be null.
    static unsigned int Length(const char* text);

    // The converter's name of the encoding Encoding_SystemDefault stands for now.
    static const char* GetSystemDefaultEncodingName();
    // Makes the default follow `codeset` (a name as nl_langinfo(CODESET) gives it) instead of the
    // locale's, with the same rule; null goes back to the locale. Main thread only, like every
    // conversion.
    static void SetSystemCodeset(const char* codeset);

    // ---- Search (kNotFound when nothing matches) -------------------------------------------------

    unsigned int IndexOf(const XN_String& sub, unsigned int from = 0) const;
    // Both texts through XN_CharToLowerCase.
    unsigned int IndexOfIgnoreCase(const XN_String& sub, unsigned int from = 0) const;
    // The last position at or before `from` where `sub` starts (the match may extend past `from`).
    unsigned int LastIndexOf(const XN_String& sub, unsigned int from) const;
    unsigned int LastIndexOf(const XN_String& sub) const;
    // `c` is read in Encoding_SystemDefault; 0 never matches.
    unsigned int IndexOf(char c, unsigned int from = 0) const;
    unsigned int LastIndexOf(char c, unsigned int from) const;
    unsigned int LastIndexOf(char c) const;
    bool StartsWith(const XN_String& prefix, unsigned int from = 0) const;
    bool EndsWith(const XN_String& suffix) const;

    // ---- Transformations (new strings; a null source gives the null string) ----------------------

    XN_String ToLowerCase() const;
    XN_String ToUpperCase() const;
    // Every unit equal to `a` becomes `b` (both read in Encoding_SystemDefault).
    XN_String Replace(char a, char b) const;
    // Every occurrence of `find`, left to right without overlap; null if any of the three is null.
    XN_String Replace(const XN_String& find, const XN_String& repl) const;
    XN_String Replace(const char* find, const char* repl) const;
    // Without leading and/or trailing spaces (and tabs with `tabsToo`); all blank gives "".
    XN_String THIS_Trim(bool left, bool right, bool tabsToo) const;
    // `s` repeated `n` times; null for a negative `n` or a null `s`.
    static XN_String RepeatedSequence(const XN_String& s, long n);

    // In place: units `first` to `last` (1-based, inclusive; `last` clamped to the length) become
    // `repl`. False, no change, unless 1 <= first <= last and first <= length.
    // When the capacity cannot hold the result the buffer is replaced WITHOUT carrying the old text
    // over: the result keeps its new length, but only the replacement holds text; every unit before
    // and after it is 0. Kept as it is: callers that need the rest of the text reserve capacity
    // first (SetSize with keep).
    bool Replace(unsigned int first, unsigned int last, const XN_String& repl);

    // ---- Splitting (empty pieces are appended as null strings) ----------------------------------

    // Clears `out`, then appends the pieces between the separators ("a,,b": "a", null, "b").
    void Split(XN_List<XN_String>& out, char sep) const;
    // Appends the lines (ends LF, CR LF, lone CR), with or without their ends; the text after the
    // last end is always appended ("a\n": "a", null). Clears `out` first only when `reset`.
    void SplitLines(XN_List<XN_String>& out, bool removeEOL, bool reset) const;
    // Clears `out`, then appends the words between runs of spaces and tabs. A leading run gives a
    // null first word and a trailing run a null last word (" a  b ": null, "a", "b", null).
    void SplitBySpaces(XN_List<XN_String>& out) const;

    // ---- 8-bit helpers ---------------------------------------------------------------------------

    // False if either is null; equal bytes up to and including the terminator (`n` != 0: at most n).
    static bool Equals(const char* a, const char* b);
    static bool Equals(const char* a, const char* b, unsigned int n);
    static bool EqualsIgnoreCase(const char* a, const char* b);
    // Unlike Equals, a count of 0 gives false.
    static bool EqualsIgnoreCase(const char* a, const char* b, unsigned int n);
    // -1, 0, 1 with bytes as signed 8-bit values; -10 when either is null.
    static int Compare(const char* a, const char* b);
    static int CompareIgnoreCase(const char* a, const char* b);

    // ---- Numbers ---------------------------------------------------------------------------------

    // The first run of digits, negative when a "-" right before it was met while skipping to it;
    // no digit at all gives INT64_MAX, a "-" not followed by a digit gives 0; null or "" gives 0.
    static std::int64_t ToLong(const char* text);
    // The first run of digits; no digit gives UINT64_MAX; null or "" gives 0.
    static std::uint64_t ToULong(const char* text);
    // Digits with "." or "," as separator and an exponent only as "e+" or "e-"; no digit, or a
    // separator not followed by a digit, gives DBL_MAX; null or "" gives 0.
    static double ToDouble(const char* text);
    // Optional blanks and sign, then only digits. The text must not be null.
    static bool IsIntegerNumber(const char* text);
    static bool IsIntegerNumber(const XN_String& text);
    // As IsIntegerNumber, with at most one "." or "," that a digit follows.
    static bool IsNumber(const char* text);
    static bool IsNumber(const XN_String& text);
    // "%ld", or right-aligned in `width` columns.
    static XN_String LongToString(const long& value, unsigned int width = 0);
    // printf with `width` (0: none) and `decimals` ("%g" when 0).
    static XN_String DoubleToString(double value, unsigned int width, unsigned int decimals);
    // "%.<decimals>f", or "%g" when `decimals` is negative: 0 decimals differ from the other form.
    static XN_String DoubleToString(double value, int decimals);
    // printf into 2048 bytes (longer output is cut), read in Encoding_SystemDefault.
    static XN_String Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

    // ---- Byte-order marks and encoding detection --------------------------------------------------

    // The mark of a Unicode encoding (UTF-8, UTF-16/32 in either order); empty for any other.
    static XN_CString GetBOM(Encoding enc);
    // Length in bytes of the mark that starts `bytes` (0: none, `enc` untouched) and its encoding.
    // Marks of forms we do not convert (SCSU, UTF-1, BOCU-1, GB 18030, UTF-EBCDIC) give
    // Encoding_Unsupported.
    static unsigned int DetectBOM(const void* bytes, unsigned int n, Encoding& enc);
    // Well-formed UTF-8 (up to the terminator, or `n` bytes). A pure-ASCII text counts only when
    // `requireMultiByte` is false. Null gives false.
    static bool IsUTF8(const char* text, bool requireMultiByte);
    static bool IsUTF8(const char* text, unsigned int n, bool requireMultiByte);
    // Decodes a whole file's bytes into `dst` and returns the encoding decided on: the byte-order
    // mark's, else `fallback` without `detect`, else a guess. Encoding_Unknown means the bytes were
    // read as Encoding_SystemDefault for want of a better guess. Bytes that are no text in the
    // encoding decided on leave `dst` as it was.
    static Encoding TextToString(XN_String& dst, const char* bytes, unsigned int n, bool detect,
                                 Encoding fallback);

protected:
    // Ensures room for `units` units. A large enough buffer is left alone (length too, whatever
    // `keep` says). Otherwise a new buffer of exactly `units`: with `keep` the old units are copied,
    // without the length becomes 0. Returns true.
    bool THIS_Alloc(unsigned int units, bool keep);
    // Appends `count` units as they are (0 units included). Null or 0: no change.
    bool THIS_Append(const unsigned short* text, unsigned int count);
    bool THIS_Append(const char* text, unsigned int byteCount, Encoding enc);
    void THIS_CopyString(const XN_String& src);
    void THIS_CopyString(const XN_String& src, unsigned int start, unsigned int count);
    void THIS_SetToConcatenatedString(const XN_String& a, const XN_String& b);
    // Forgets the buffer without releasing it (its ownership went elsewhere).
    void THIS_SetToNullString();
    void THIS_DeallocSetNullString();

private:
    // UTF-32 units (any alignment) to UTF-16; counts only when `dst` is null. `count` <= 0 means up
    // to a 0 unit. Surrogate values and values above U+10FFFF become U+FFFD.
    static unsigned int UTF32toUTF16(const void* src, unsigned short* dst, long count, bool swap);
    // A new buffer of exactly `units` units holding the first `keptUnits` units of the old one,
    // which is released; the length is the caller's to set.
    void Reallocate(unsigned int units, unsigned int keptUnits);
    void TakeOver(XN_String& source);
    XN_String MapUnits(unsigned short (*map)(unsigned short)) const;
    unsigned int FindForward(const XN_String& sub, unsigned int from, bool ignoreCase) const;

    unsigned short* buffer;
    std::uint32_t length;
    std::uint32_t capacity;
};

XN_String operator+(const char* text, const XN_String& s);

// An owned 8-bit (or other encoding's) result of a conversion. The byte count includes the
// terminator bytes; an empty result has no bytes at all.
class XN_CString {
public:
    XN_CString() = default;
    XN_CString(const XN_CString& other);
    XN_CString(XN_CString&& other) noexcept;
    XN_CString& operator=(const XN_CString& other);
    XN_CString& operator=(XN_CString&& other) noexcept;
    ~XN_CString() { delete[] bytes; }

    // The bytes (terminated when they came from a conversion); null for an empty result.
    const char* Get() const { return bytes; }
    unsigned int GetByteCount() const { return byteCount; }
    XN_String::Encoding GetEncoding() const { return encoding; }

private:
    friend class XN_String;
    // Takes ownership of a new[] array.
    void Adopt(char* newBytes, unsigned int count, XN_String::Encoding enc);

    char* bytes = nullptr;
    std::uint32_t byteCount = 0;
    XN_String::Encoding encoding = XN_String::Encoding_Unknown;
};
