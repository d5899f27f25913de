// The vendor's versions file: the current release of every add-on and object library of the suite
// and dated messages for the users, as one plain-text file that the update check downloads into
// "__updxn__.tmp" in the host's shared folder.
//
// Grammar, one record per line, words separated by runs of blanks and tabs:
//   * comment                                      a line beginning with "*"
//   MESSAGE [dd/mm/yyyy [dd/mm/yyyy]]              a first word containing "MESSAGE"; its text may
//                                                  end with a link beginning "http://"
//   Name dd/mm/yyyy                                a library (further words ignored)
//   Name a.b.c.d (AC190) dd/mm/yyyy [ita int ...]  an add-on, with the languages it offers
//   # text                                         description lines of the record right above
// Anything else is skipped, and the records before and after it are kept. Dates are read day first
// ("-" may replace "/") and stored in the sortable form yyyymmdd.
//
// Everything here runs on the host's user-interface thread.
#pragma once

#include "GSRoot.hpp"
#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

// Name of the temporary file the update check downloads the versions file into.
#define XN_ADDONUPDATE_TEMP_FILE_NAME "__updxn__.tmp"

// One message block. Strings start empty (not null).
struct XN_AddonUpdate_Message {
    XN_String fromDate; // yyyymmdd, or empty
    XN_String toDate;   // yyyymmdd, or empty
    XN_String text;     // the text before the link, lines joined with "\n"
    XN_String link;     // from the first "http://" of the text to its end, or empty

    XN_AddonUpdate_Message();
};

// One add-on line. Strings start empty, numbers 0, languages empty.
struct XN_AddonUpdate_Addon {
    XN_String name;        // first word, compared with the running add-on's own name
    XN_String versionText; // second word as written, e.g. "19.0.4.2200"
    unsigned short major;  // the four numbers of the version, each kept to 16 bits; missing: 0
    unsigned short minor;
    unsigned short revision;
    unsigned short build;
    unsigned short hostVersion; // host release of the host tag: "(AC190)" gives 19, "(AC200)" 20
    XN_String date;             // yyyymmdd
    XN_String dateText;         // fourth word as written
    XN_List<short> languages;   // indices into gXN_Languages_Suffixes of the language words
    XN_String text;             // description lines joined with "\n"

    XN_AddonUpdate_Addon();
};

// One library line. Strings start empty.
struct XN_AddonUpdate_Library {
    XN_String name;
    XN_String date;     // yyyymmdd
    XN_String dateText; // second word as written
    XN_String text;     // description lines joined with "\n"

    XN_AddonUpdate_Library();
};

// Why the parser passed over a line that is neither a record, a description line, a comment nor
// blank.
enum XN_AddonUpdate_SkipReason {
    XN_AddonUpdate_Skip_Indented,         // begins with a blank or tab: its first word is empty
    XN_AddonUpdate_Skip_StrayText,        // a "#" line that follows no record
    XN_AddonUpdate_Skip_OneWord,          // a single word
    XN_AddonUpdate_Skip_TooFewWords,      // not a library line, and fewer than the four words of an add-on
    XN_AddonUpdate_Skip_VersionParts,     // version with fewer than four dot-separated parts
    XN_AddonUpdate_Skip_VersionNotNumber, // one of the first four version parts is not all digits
    XN_AddonUpdate_Skip_HostTag,          // third word not "(AC" digits ")"
    XN_AddonUpdate_Skip_Date,             // fourth word not dd/mm/yyyy or dd-mm-yyyy
    XN_AddonUpdate_Skip_NotText           // the whole file: not text in its encoding, read as empty
};

// A short English sentence for `reason`, for tools.
const char* XN_AddonUpdate_SkipReasonText(XN_AddonUpdate_SkipReason reason);

// Told about each skipped line: its index (0 for the first line), its text and the reason; a file
// that is not text is told once, as index -1 with the null string.
typedef void (*XN_AddonUpdate_SkipCallback)(long index, const XN_String& line,
                                            XN_AddonUpdate_SkipReason reason, void* userData);

// Where the update check puts the downloaded file: "__updxn__.tmp" in the host's shared folder
// (special location 14), as a POSIX path. Returns 0, or the host's error (`location` unchanged).
GSErrCode XN_AddonUpdate_GetTempFileLocation(XN_Location& location);

// Parses the temporary file into the three lists, appending in file order (callers pass empty lists).
// True when the file could be located and opened, even when it holds no valid line; false, with the
// lists untouched, when the shared folder or the file is missing.
bool XN_AddonUpdate_ReadVersionsFile(XN_List<XN_AddonUpdate_Message>& messages,
                                     XN_List<XN_AddonUpdate_Addon>& addons,
                                     XN_List<XN_AddonUpdate_Library>& libraries);

// The same for any file: read whole (UTF-8 unless it begins with a byte-order mark), split into lines
// and parsed. An unreadable body after a successful open counts as an empty file. `onSkip` (may be
// null) hears of every skipped line.
bool XN_AddonUpdate_ReadVersionsFile(const XN_Location& file, XN_List<XN_AddonUpdate_Message>& messages,
                                     XN_List<XN_AddonUpdate_Addon>& addons,
                                     XN_List<XN_AddonUpdate_Library>& libraries,
                                     XN_AddonUpdate_SkipCallback onSkip, void* userData);

// Parses lines already split (terminators removed) into the three lists; `onSkip` may be null.
void XN_AddonUpdate_ParseVersionsLines(XN_List<XN_String>& lines, XN_List<XN_AddonUpdate_Message>& messages,
                                       XN_List<XN_AddonUpdate_Addon>& addons,
                                       XN_List<XN_AddonUpdate_Library>& libraries,
                                       XN_AddonUpdate_SkipCallback onSkip, void* userData);

// Classifies a line split with XN_String::SplitBySpaces: 0 not a record, 1 add-on line, 2 library
// line. A digit test passes an empty piece, so "19..4.2200" is a valid version (its empty part is 0),
// and the add-on's date word may run on after the year.
int XN_AddonUpdate_CheckVersionFormat(XN_List<XN_String>& words);

// The same with the reason of a 0 in `*reason` (when not null; untouched otherwise). Lines that are
// blank or begin with "*" or "#" are the caller's to tell apart.
int XN_AddonUpdate_CheckVersionFormat(XN_List<XN_String>& words, XN_AddonUpdate_SkipReason* reason);

// Fill a record from a line already classified (any line is safe: missing words leave the defaults).
// Language words are matched ignoring case; numbers are kept to 16 bits without a range check.
void XN_AddonUpdate_SplitAddonVersion(XN_String line, XN_AddonUpdate_Addon& addon);
void XN_AddonUpdate_SplitLibVersion(XN_String line, XN_AddonUpdate_Library& library);

// The description of the record on line `index`: the consecutive following lines that begin with
// "#", less their first two characters, joined with "\n". Lines empty after those two characters are
// dropped while no text has begun. `index` is left on the last line consumed.
XN_String XN_AddonUpdate_ReadText(long& index, XN_List<XN_String>& lines);

// The sortable form of a day-first date word: characters 7-10, 4-5 and 1-2 ("03/08/2018" gives
// "20180803"). A shorter word gives what of those characters it has.
XN_String XN_AddonUpdate_FormatDate(XN_String& date);
