#include "XN_AddonUpdate_Versions.hpp"

#include "XN_AddonSettings.hpp"
#include "XN_File.hpp"
#include "XN_Language.hpp"

#include <string>

namespace {

const unsigned short kNoUnits[1] = {0};

// The fixed words of the grammar, converted once.
struct GrammarWords {
    XN_String comment{"*"}, textLine{"#"}, message{"MESSAGE"}, tagStart{"(AC"}, tagEnd{")"}, link{"http://"},
        newline{"\n"};
};

const GrammarWords& Grammar() {
    static const GrammarWords words;
    return words;
}

// The word at `index`, empty (not null) when the line has no such word or the word is null.
XN_String WordAt(XN_List<XN_String>& words, long index) {
    const XN_String* word = words.GetPtr(index);
    return word != nullptr && !word->IsNull() ? *word : XN_String(kNoUnits);
}

bool IsDigit(unsigned short unit) {
    return unit >= '0' && unit <= '9';
}

// Every unit a decimal digit; an empty or null text passes.
bool IsAllDigits(const XN_String& text) {
    for (unsigned int i = 0; i < text.GetLength(); ++i) {
        if (!IsDigit(text.UCharAt(i)))
            return false;
    }
    return true;
}

bool IsDateSeparator(unsigned short unit) {
    return unit == '/' || unit == '-';
}

// dd/mm/yyyy or dd-mm-yyyy in the first ten units; what follows them is not looked at.
bool StartsWithDate(const XN_String& word) {
    if (word.GetLength() < 10 || !IsDateSeparator(word.UCharAt(2)) || !IsDateSeparator(word.UCharAt(5)))
        return false;
    for (unsigned int i : {0u, 1u, 3u, 4u, 6u, 7u, 8u, 9u}) {
        if (!IsDigit(word.UCharAt(i)))
            return false;
    }
    return true;
}

// ToLong of the text, kept to 16 bits without a range check.
// ToLong looks only at ASCII digits and "-", so each unit narrowed to a byte reads the same as a
// conversion of the whole text would, without the converter's cost.
unsigned short ToUShort(const XN_String& text) {
    std::string bytes(text.GetLength(), '?');
    for (unsigned int i = 0; i < text.GetLength(); ++i) {
        if (text.UCharAt(i) < 0x80)
            bytes[i] = static_cast<char>(text.UCharAt(i));
    }
    return static_cast<unsigned short>(XN_String::ToLong(bytes.c_str()));
}

void Skip(XN_AddonUpdate_SkipCallback onSkip, void* userData, long index, const XN_String& line,
          XN_AddonUpdate_SkipReason reason) {
    if (onSkip != nullptr)
        onSkip(index, line, reason, userData);
}

// Blank lines separate records and are no fault.
bool IsBlank(const XN_String& line) {
    for (unsigned int i = 0; i < line.GetLength(); ++i) {
        if (line.UCharAt(i) != ' ' && line.UCharAt(i) != '\t')
            return false;
    }
    return true;
}

void ReadMessage(long& index, XN_List<XN_String>& lines, XN_List<XN_String>& words,
                 XN_AddonUpdate_Message& message) {
    if (words.GetCount() >= 2)
        message.fromDate = XN_AddonUpdate_FormatDate(words[1]);
    if (words.GetCount() >= 3)
        message.toDate = XN_AddonUpdate_FormatDate(words[2]);
    const XN_String text = XN_AddonUpdate_ReadText(index, lines);
    const unsigned int link = text.IndexOf(Grammar().link);
    if (link == XN_String::kNotFound) {
        message.text = text;
        return;
    }
    message.text = link > 0 ? text.Substring(0, link) : XN_String(kNoUnits);
    message.link = text.Substring(link);
}

} // namespace

XN_AddonUpdate_Message::XN_AddonUpdate_Message()
    : fromDate(kNoUnits), toDate(kNoUnits), text(kNoUnits), link(kNoUnits) {}

XN_AddonUpdate_Addon::XN_AddonUpdate_Addon()
    : name(kNoUnits), versionText(kNoUnits), major(0), minor(0), revision(0), build(0), hostVersion(0),
      date(kNoUnits), dateText(kNoUnits), text(kNoUnits) {}

XN_AddonUpdate_Library::XN_AddonUpdate_Library()
    : name(kNoUnits), date(kNoUnits), dateText(kNoUnits), text(kNoUnits) {}

const char* XN_AddonUpdate_SkipReasonText(XN_AddonUpdate_SkipReason reason) {
    switch (reason) {
    case XN_AddonUpdate_Skip_Indented:
        return "indented: a record line must begin with its name";
    case XN_AddonUpdate_Skip_StrayText:
        return "a \"#\" line that follows no record";
    case XN_AddonUpdate_Skip_OneWord:
        return "a single word is no record";
    case XN_AddonUpdate_Skip_TooFewWords:
        return "neither a library (name, date) nor an add-on (name, version, host tag, date)";
    case XN_AddonUpdate_Skip_VersionParts:
        return "the version needs four dot-separated parts (a.b.c.d)";
    case XN_AddonUpdate_Skip_VersionNotNumber:
        return "a part of the version is not a number";
    case XN_AddonUpdate_Skip_HostTag:
        return "the host tag must be \"(AC\" digits \")\", e.g. (AC190)";
    case XN_AddonUpdate_Skip_Date:
        return "the date must be dd/mm/yyyy or dd-mm-yyyy";
    case XN_AddonUpdate_Skip_NotText:
        return "not UTF-8 text (nor marked as UTF-16 or UTF-32): no line of it is read";
    }
    return "not a record";
}

GSErrCode XN_AddonUpdate_GetTempFileLocation(XN_Location& location) {
    XN_Location folder;
    const GSErrCode err = XN_AddonSettings_GetFolder(folder);
    if (err != NoError)
        return err;
    const XN_String path = folder.GetPOSIXPath();
    if (path.IsNull())
        return Error;
    location.Set(path + "/" + XN_ADDONUPDATE_TEMP_FILE_NAME);
    return NoError;
}

bool XN_AddonUpdate_ReadVersionsFile(XN_List<XN_AddonUpdate_Message>& messages,
                                     XN_List<XN_AddonUpdate_Addon>& addons,
                                     XN_List<XN_AddonUpdate_Library>& libraries) {
    XN_Location file;
    if (XN_AddonUpdate_GetTempFileLocation(file) != NoError)
        return false;
    return XN_AddonUpdate_ReadVersionsFile(file, messages, addons, libraries, nullptr, nullptr);
}

bool XN_AddonUpdate_ReadVersionsFile(const XN_Location& file, XN_List<XN_AddonUpdate_Message>& messages,
                                     XN_List<XN_AddonUpdate_Addon>& addons,
                                     XN_List<XN_AddonUpdate_Library>& libraries,
                                     XN_AddonUpdate_SkipCallback onSkip, void* userData) {
    XN_String text;
    {
        XN_File reader;
        if (reader.Open(file, XN_File_ReadMode) != 0)
            return false;
        if (reader.ReadFullText(text, false, XN_String::Encoding_UTF8) != 0)
            text = XN_String(kNoUnits);
        else if (text.IsNull() && onSkip != nullptr) // bytes that are no text in their encoding
            onSkip(-1, XN_String(), XN_AddonUpdate_Skip_NotText, userData);
    }
    XN_List<XN_String> lines;
    text.SplitLines(lines, true, true);
    XN_AddonUpdate_ParseVersionsLines(lines, messages, addons, libraries, onSkip, userData);
    return true;
}

void XN_AddonUpdate_ParseVersionsLines(XN_List<XN_String>& lines, XN_List<XN_AddonUpdate_Message>& messages,
                                       XN_List<XN_AddonUpdate_Addon>& addons,
                                       XN_List<XN_AddonUpdate_Library>& libraries,
                                       XN_AddonUpdate_SkipCallback onSkip, void* userData) {
    const GrammarWords& grammar = Grammar();
    XN_List<XN_String> words;
    for (long index = 0; index < lines.GetCount(); ++index) {
        const XN_String& line = lines[index];
        if (line.StartsWith(grammar.comment))
            continue;
        line.SplitBySpaces(words);
        if (words.GetCount() > 0 && words[0].IndexOf(grammar.message) != XN_String::kNotFound) {
            XN_AddonUpdate_Message message;
            ReadMessage(index, lines, words, message);
            messages.AddData(message, -1);
            continue;
        }
        XN_AddonUpdate_SkipReason reason = XN_AddonUpdate_Skip_TooFewWords;
        switch (XN_AddonUpdate_CheckVersionFormat(words, &reason)) {
        case 1: {
            XN_AddonUpdate_Addon addon;
            XN_AddonUpdate_SplitAddonVersion(line, addon);
            addon.text = XN_AddonUpdate_ReadText(index, lines);
            addons.AddData(addon, -1);
            break;
        }
        case 2: {
            XN_AddonUpdate_Library library;
            XN_AddonUpdate_SplitLibVersion(line, library);
            library.text = XN_AddonUpdate_ReadText(index, lines);
            libraries.AddData(library, -1);
            break;
        }
        default:
            if (line.StartsWith(grammar.textLine))
                Skip(onSkip, userData, index, line, XN_AddonUpdate_Skip_StrayText);
            else if (!IsBlank(line))
                Skip(onSkip, userData, index, line, reason);
            break;
        }
    }
}

int XN_AddonUpdate_CheckVersionFormat(XN_List<XN_String>& words) {
    return XN_AddonUpdate_CheckVersionFormat(words, nullptr);
}

int XN_AddonUpdate_CheckVersionFormat(XN_List<XN_String>& words, XN_AddonUpdate_SkipReason* reason) {
    if (words.GetCount() < 2) {
        if (reason != nullptr)
            *reason = XN_AddonUpdate_Skip_OneWord;
        return 0;
    }
    if (words[1].GetLength() == 10 && StartsWithDate(words[1]))
        return 2;
    XN_AddonUpdate_SkipReason why = XN_AddonUpdate_Skip_TooFewWords;
    if (words.GetCount() >= 4) {
        XN_List<XN_String> parts;
        words[1].Split(parts, '.');
        const XN_String& tag = words[2];
        if (parts.GetCount() < 4)
            why = XN_AddonUpdate_Skip_VersionParts;
        else if (!IsAllDigits(parts[0]) || !IsAllDigits(parts[1]) || !IsAllDigits(parts[2]) ||
                 !IsAllDigits(parts[3]))
            why = XN_AddonUpdate_Skip_VersionNotNumber;
        else if (!tag.StartsWith(Grammar().tagStart) || !tag.EndsWith(Grammar().tagEnd) ||
                 tag.GetLength() < 4 || !IsAllDigits(tag.Substring(3, tag.GetLength() - 4)))
            why = XN_AddonUpdate_Skip_HostTag;
        else if (!StartsWithDate(words[3]))
            why = XN_AddonUpdate_Skip_Date;
        else
            return 1;
    }
    // An indented line fails because its words have moved one place; say so rather than which test.
    if (reason != nullptr)
        *reason = words[0].IsEmpty() ? XN_AddonUpdate_Skip_Indented : why;
    return 0;
}

void XN_AddonUpdate_SplitAddonVersion(XN_String line, XN_AddonUpdate_Addon& addon) {
    XN_List<XN_String> words;
    line.SplitBySpaces(words);
    addon.name = WordAt(words, 0);
    addon.versionText = WordAt(words, 1);
    XN_List<XN_String> parts;
    addon.versionText.Split(parts, '.');
    unsigned short* const numbers[] = {&addon.major, &addon.minor, &addon.revision, &addon.build};
    for (long i = 0; i < 4; ++i)
        *numbers[i] = i < parts.GetCount() ? ToUShort(parts[i]) : 0;
    // "(AC190)": the digits from the fourth character to the third-last, i.e. without the last digit.
    const XN_String tag = WordAt(words, 2);
    addon.hostVersion = tag.GetLength() > 5 ? ToUShort(tag.Substring(3, tag.GetLength() - 5)) : 0;
    addon.dateText = WordAt(words, 3);
    addon.date = XN_AddonUpdate_FormatDate(addon.dateText);
    for (long i = 4; i < words.GetCount(); ++i) {
        for (short language = 0; language < XN_LANGUAGE_COUNT; ++language) {
            if (XN_String::CompareIgnoreCase(words[i], 0, gXN_Languages_Suffixes[language], 0, 0) == 0) {
                addon.languages.AddData(language, -1);
                break;
            }
        }
    }
}

void XN_AddonUpdate_SplitLibVersion(XN_String line, XN_AddonUpdate_Library& library) {
    XN_List<XN_String> words;
    line.SplitBySpaces(words);
    library.name = WordAt(words, 0);
    library.dateText = WordAt(words, 1);
    library.date = XN_AddonUpdate_FormatDate(library.dateText);
}

XN_String XN_AddonUpdate_ReadText(long& index, XN_List<XN_String>& lines) {
    XN_String text(kNoUnits);
    while (index + 1 < lines.GetCount() && lines[index + 1].StartsWith(Grammar().textLine)) {
        ++index;
        if (!text.IsEmpty())
            text += Grammar().newline;
        const XN_String& line = lines[index];
        if (line.GetLength() > 2)
            text += line.Substring(2);
    }
    return text;
}

XN_String XN_AddonUpdate_FormatDate(XN_String& date) {
    XN_String sortable(kNoUnits);
    const struct { unsigned int start, count; } pieces[] = {{6, 4}, {3, 2}, {0, 2}};
    for (const auto& piece : pieces) {
        if (piece.start < date.GetLength())
            sortable += date.Substring(piece.start, piece.count);
    }
    return sortable;
}
