// XN_String splitting into lists. Empty pieces are appended as null strings.
#include "XN_List.hpp"
#include "XN_String.hpp"

namespace {

bool IsSpaceOrTab(unsigned short c) {
    return c == ' ' || c == '\t';
}

// Units [start, end) of `s`; the null string when the range is empty.
XN_String Piece(const XN_String& s, unsigned int start, unsigned int end) {
    return end > start ? s.Substring(start, end - start) : XN_String();
}

// Length of the line end at `i` < length (CR LF, LF or a lone CR), 0 when there is none.
unsigned int LineEndLength(const XN_String& s, unsigned int i) {
    const unsigned short* units = s.GetBuffer();
    if (units[i] == '\r')
        return i + 1 < s.GetLength() && units[i + 1] == '\n' ? 2 : 1;
    return units[i] == '\n' ? 1 : 0;
}

} // namespace

void XN_String::Split(XN_List<XN_String>& out, char sep) const {
    out.Reset();
    unsigned short separator = CharToXN_Char(sep);
    unsigned int start = 0;
    for (unsigned int i = 0; i < length; ++i) {
        if (buffer[i] == separator) {
            out.AddData(Piece(*this, start, i), -1);
            start = i + 1;
        }
    }
    out.AddData(Piece(*this, start, length), -1);
}

void XN_String::SplitLines(XN_List<XN_String>& out, bool removeEOL, bool reset) const {
    if (reset)
        out.Reset();
    unsigned int start = 0;
    for (unsigned int i = 0; i < length;) {
        unsigned int end = LineEndLength(*this, i);
        if (end == 0) {
            ++i;
            continue;
        }
        out.AddData(Piece(*this, start, removeEOL ? i : i + end), -1);
        i += end;
        start = i;
    }
    out.AddData(Piece(*this, start, length), -1);
}

void XN_String::SplitBySpaces(XN_List<XN_String>& out) const {
    out.Reset();
    unsigned int start = 0;
    for (unsigned int i = 0; i < length;) {
        if (!IsSpaceOrTab(buffer[i])) {
            ++i;
            continue;
        }
        out.AddData(Piece(*this, start, i), -1);
        while (i < length && IsSpaceOrTab(buffer[i]))
            ++i;
        start = i;
    }
    out.AddData(Piece(*this, start, length), -1);
}
