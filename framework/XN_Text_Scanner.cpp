// XN_Text_Scanner: positions and quirks are part of the contract (see the header).
#include "XN_Text_Scanner.hpp"

#include <algorithm>
#include <cstring>

namespace {

bool IsSpaceOrTab(unsigned short c) {
    return c == ' ' || c == '\t';
}
bool IsWhiteSpace(unsigned short c) {
    return IsSpaceOrTab(c) || c == '\n' || c == '\r';
}

} // namespace

XN_Text_Scanner::~XN_Text_Scanner() {
    delete[] text;
}

void XN_Text_Scanner::Set(const XN_String& source) {
    delete[] text;
    text = nullptr;
    length = 0;
    position = 0;
    if (source.IsNull())
        return;
    length = source.GetLength();
    text = new unsigned short[length + 1];
    std::memcpy(text, source.GetBuffer(), length * sizeof(unsigned short));
    text[length] = 0;
}

unsigned long XN_Text_Scanner::SkipSpacesTabsEOLsComments(bool advance) {
    if (position >= length)
        return position;
    bool restarted = false;
    unsigned long i = position;
    for (; i < length; ++i) {
        if (IsWhiteSpace(text[i]))
            continue;
        if (text[i] != '/' || i + 1 >= length || text[i + 1] != '*')
            break;
        const long end = FindText("*/", i + 2, true);
        if (end < 0 && restarted) {
            i = length;
            break;
        }
        restarted = restarted || end < 0;
        // The step of the loop moves behind "*/"; after a failed search it lands on index 1.
        i = static_cast<unsigned long>(end) + 1;
    }
    if (advance)
        position = i;
    return i;
}

long XN_Text_Scanner::FindText(const char* needle, unsigned long from, bool move, XN_String::Encoding enc) {
    if (needle == nullptr || *needle == '\0' || from >= length)
        return -1;
    const XN_String converted(needle, enc);
    const unsigned int units = converted.GetLength();
    if (units == 0)
        return -1;
    const unsigned short* wanted = converted.GetBuffer();
    for (unsigned long i = from; i < length; ++i) {
        unsigned int k = 0;
        while (k < units && text[i + k] != 0 && text[i + k] == wanted[k])
            ++k;
        if (k == units) {
            if (move)
                position = i + std::strlen(needle); // bytes, not units: may pass the end (kept)
            return static_cast<long>(i);
        }
    }
    if (move)
        position = length;
    return -1;
}

unsigned long XN_Text_Scanner::Skip(short skipMode) {
    if (skipMode == 3)
        return SkipSpacesTabsEOLsComments(false);
    unsigned long i = position;
    if (skipMode == 1 || skipMode == 2)
        while (i < length && (skipMode == 1 ? IsSpaceOrTab(text[i]) : IsWhiteSpace(text[i])))
            ++i;
    return i;
}

XN_String XN_Text_Scanner::Units(unsigned long start, unsigned long end, bool emptyIsNull) const {
    if (end <= start)
        return emptyIsNull ? XN_String() : XN_String("");
    return XN_String(text + start, static_cast<unsigned int>(end - start));
}

XN_String XN_Text_Scanner::ReadToken(short skipMode, bool advance) {
    const unsigned long start = Skip(skipMode);
    unsigned long end = start;
    while (end < length && !IsWhiteSpace(text[end]))
        ++end;
    if (advance)
        position = end;
    return Units(start, end, true);
}

XN_String XN_Text_Scanner::ReadLine(bool withEOL, bool advance) {
    if (position >= length)
        return XN_String();
    unsigned long end = position;
    while (end < length && text[end] != 0 && text[end] != '\n' && text[end] != '\r')
        ++end;
    unsigned long next = length; // at the end of the text (a 0 unit ends it too)
    unsigned long lineEnd = end;
    if (end < length && text[end] != 0) {
        next = end + (text[end] == '\r' && end + 1 < length && text[end + 1] == '\n' ? 2 : 1);
        if (withEOL)
            lineEnd = next;
    }
    const XN_String line = Units(position, lineEnd, false);
    if (advance)
        position = next;
    return line;
}

bool XN_Text_Scanner::ReadLong(long& value, short skipMode, bool advance) {
    const unsigned long start = position;
    const unsigned long skipped = Skip(skipMode);
    position = skipped;
    XN_String token = ReadToken(0, true);
    if (!IsInteger(token)) {
        position = advance ? skipped : start;
        return false;
    }
    value = static_cast<long>(XN_String::ToLong(token.ToCStr().Get()));
    if (!advance)
        position = start;
    return true;
}

bool XN_Text_Scanner::ReadDoubleQuotedString(XN_String& value, short skipMode, bool advance) {
    const unsigned long skipped = Skip(skipMode);
    if (advance)
        position = skipped;
    if (skipped >= length || text[skipped] != '"')
        return false;
    long close = FindText("\"", skipped + 1, false);
    while (close > 0 && text[close - 1] == '\\')
        close = FindText("\"", static_cast<unsigned long>(close) + 1, false);
    if (close < 0)
        return false;
    value = Units(skipped + 1, static_cast<unsigned long>(close), false);
    if (advance)
        position = static_cast<unsigned long>(close) + 1;
    return true;
}

bool XN_Text_Scanner::IsInteger(XN_String& token) {
    const unsigned int n = token.GetLength();
    for (unsigned int i = 0; i < n; ++i) {
        const char c = token.CharAt(i);
        if (!(c >= '0' && c <= '9') && !(i == 0 && c == '-'))
            return false;
    }
    return true;
}
