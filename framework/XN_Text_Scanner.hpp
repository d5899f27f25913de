// XN_Text_Scanner: a cursor over a private copy of a text, reading lines, tokens, integers and
// double-quoted strings.
//
// Skip modes, passed to the reads: 0 nothing, 1 spaces and tabs, 2 white space (space, tab, LF, CR),
// 3 white space and "/* ... */" comments (no nesting, no line comments). Token delimiters are
// exactly space, tab, LF and CR. With `advance` false a read only looks ahead, except where a
// function says otherwise. Reads past the end give the null string or false.
#pragma once

#include "XN_String.hpp"

class XN_Text_Scanner {
public:
    XN_Text_Scanner() = default;
    ~XN_Text_Scanner();
    XN_Text_Scanner(const XN_Text_Scanner&) = delete;
    XN_Text_Scanner& operator=(const XN_Text_Scanner&) = delete;

    // Scans a copy of `text` from position 0; a null text leaves an empty scanner.
    void Set(const XN_String& text);

    unsigned long GetPosition() const { return position; }
    unsigned long GetLength() const { return length; }

    // Skips white space and comments from the position and returns where that ends; stores it only
    // with `advance`. Quirks kept, callers are written around them: passing a comment stores the
    // position behind its "*/" even without `advance`; an unterminated comment stores the end of
    // the text and the scan restarts at index 1 of the text (the -1 of the failed search plus one,
    // stepped). Meeting an unterminated comment a second time ends the scan at the end of the text.
    unsigned long SkipSpacesTabsEOLsComments(bool advance);

    // Index of the first occurrence of `needle` (converted from `enc`) at or after `from`, or -1.
    // A 0 unit in the text never matches. With `move`, the position goes behind the match, by the
    // needle's length in BYTES (not in converted units, so it may pass the text's end, where every
    // read finds nothing), or to the end when there is no match. A null or empty needle, or `from` at or past
    // the end: -1, no move.
    long FindText(const char* needle, unsigned long from, bool move,
                  XN_String::Encoding enc = XN_String::Encoding_SystemDefault);

    // The run of non-delimiters after skipping; null when empty. With `advance` the position goes
    // to the token's end.
    XN_String ReadToken(short skipMode, bool advance);

    // The text up to the next LF, CR, CR LF or the end (with that line end when `withEOL`); with
    // `advance` the position goes behind the line end. At the end of the text: the null string.
    XN_String ReadLine(bool withEOL, bool advance);

    // Reads an integer token (see IsInteger). The skipped position is stored in any case. Success:
    // `value` set, and the position behind the token with `advance`, back at the start without.
    // Failure: `value` unchanged, the position at the skipped position with `advance` (white space
    // stays consumed), at the start without.
    bool ReadLong(long& value, short skipMode, bool advance);

    // Reads "...": the closing quote is the first one not preceded by a backslash; the value is
    // the units between the quotes as they stand (backslashes kept). With `advance` the skipped
    // position is stored, and on success the position goes behind the closing quote.
    bool ReadDoubleQuotedString(XN_String& value, short skipMode, bool advance);

    // An optional "-" then only the digits 0-9. Kept: the empty token and "-" alone count as
    // integers (and read as 0).
    static bool IsInteger(XN_String& token);

private:
    // Where the read starts after skipping per `skipMode` (not stored, but see mode 3).
    unsigned long Skip(short skipMode);
    // Units [start, end) as a string: an empty range gives "" when `emptyIsNull` is false.
    XN_String Units(unsigned long start, unsigned long end, bool emptyIsNull) const;

    unsigned short* text = nullptr; // `length` units and a 0 unit
    unsigned long length = 0;
    unsigned long position = 0;
};
