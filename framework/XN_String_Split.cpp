// XN_String splitting into lists. Empty pieces are appended as null strings.
#include "XN_List.hpp"
#include "XN_String.hpp"

#include <vector>

namespace {

bool IsSpaceOrTab(unsigned short c) {
    return c == ' ' || c == '\t';
}

// The pieces the last scan found, as start and end (exclusive) of each. Kept for the module's life so
// that splitting does not allocate it each time; strings are used on the host's main thread only.
std::vector<unsigned int> sBounds;

void AddPiece(unsigned int start, unsigned int end) {
    sBounds.push_back(start);
    sBounds.push_back(end);
}

// Appends the pieces found to `out` (replacing its elements with `replace`), with one resize of the
// list's block. An empty piece is the null string.
void AppendPieces(const unsigned short* units, XN_List<XN_String>& out, bool replace) {
    out.AppendMade(
        static_cast<long>(sBounds.size() / 2),
        [units](long i) {
            const unsigned int start = sBounds[2 * i], end = sBounds[2 * i + 1];
            return end > start ? XN_String(units + start, end - start) : XN_String();
        },
        replace);
}

} // namespace

void XN_String::Split(XN_List<XN_String>& out, char sep) const {
    const unsigned short separator = CharToXN_Char(sep);
    sBounds.clear();
    unsigned int start = 0;
    for (unsigned int i = 0; i < length; ++i) {
        if (buffer[i] == separator) {
            AddPiece(start, i);
            start = i + 1;
        }
    }
    AddPiece(start, length);
    AppendPieces(buffer, out, true);
}

void XN_String::SplitLines(XN_List<XN_String>& out, bool removeEOL, bool reset) const {
    sBounds.clear();
    unsigned int start = 0;
    for (unsigned int i = 0; i < length;) {
        const unsigned short c = buffer[i];
        if (c != '\r' && c != '\n') {
            ++i;
            continue;
        }
        const unsigned int end = c == '\r' && i + 1 < length && buffer[i + 1] == '\n' ? 2 : 1;
        AddPiece(start, removeEOL ? i : i + end);
        i += end;
        start = i;
    }
    AddPiece(start, length);
    AppendPieces(buffer, out, reset);
}

// A run of spaces and tabs counts as one separator.
void XN_String::SplitBySpaces(XN_List<XN_String>& out) const {
    sBounds.clear();
    unsigned int start = 0;
    for (unsigned int i = 0; i < length;) {
        if (!IsSpaceOrTab(buffer[i])) {
            ++i;
            continue;
        }
        AddPiece(start, i);
        while (i < length && IsSpaceOrTab(buffer[i]))
            ++i;
        start = i;
    }
    AddPiece(start, length);
    AppendPieces(buffer, out, true);
}
