// What a person does or expects at the host, one line of a script or of the terminal:
// `menu 3`, `expect menu 32501 5 checked`, `click 16`, ... Strings are in double quotes, where a
// backslash escapes a double quote or a backslash; `#` starts a comment. A form whose last part ends
// in "..." takes any number of such parts. Host-side only.
#pragma once

#include "GSRoot.hpp"

#include <string>
#include <utility>
#include <vector>

namespace achost {

enum class Verb {
    Menu,             // menu ITEM
    MenuOf,           // menu RESID ITEM
    ExpectMenuText,   // expect menu RESID ITEM "TEXT"
    ExpectMenuMark,   // expect menu RESID ITEM checked|unchecked
    ExpectRegistered, // expect registered RESID
    Reload,
    Quit,
    Help,
    ExpectDialog,       // expect dialog RESID
    ExpectTitle,        // expect title "T"
    ExpectItemText,     // expect item N "T"
    ExpectItemState,    // expect item N hidden|shown|enabled|disabled
    ExpectListRows,     // expect list N rows K
    ExpectListSelected, // expect list N selected ROW
    Click,              // click N
    Select,             // select N ROW
    Close,
    ExpectAlert, // expect alert "LARGE" "SMALL"
    Ok,
    AnswerSave,        // answer save "PATH"|cancel
    AnswerFolder,      // answer folder "PATH"|cancel
    ExpectOpened,      // expect opened "TEXT"
    WaitDownload,      // wait download
    ExpectDialogState, // expect dialog RESID shown|hidden|closed
    Project,           // project "PATH"|untitled
    ExpectEngine,      // expect engine "NAME"
    Command,           // command DEVID LOCALID "CMD": another add-on answers CMD (ACAPI_Command_Test)
    Library,           // library "DIR"
    Missing,           // missing "NAME"
    Libraries,         // libraries: lists the active libraries (the terminal shows them)
    ExpectLibraries,   // expect libraries "DIR"...
    Picture            // picture "FILE": the front dialog's picture, as PNG
};

struct Action {
    Verb verb = Verb::Quit;
    std::vector<Int64> numbers;     // the numbers of the line, in order
    std::vector<std::string> texts; // its quoted strings and chosen keywords (checked, cancel, ...), in order
    std::string source;             // the line as written, comment removed, as Shown in messages
    std::string file;               // where the line came from ("" when typed)
    int line = 0;
};

enum class ParseResult { Parsed, Empty, Malformed };

// Reads one line (a final carriage return is dropped). Empty for a blank or comment-only line;
// Malformed with a message naming the unknown verb, showing the accepted forms, or saying which number
// is out of range or which control byte the line holds.
GS_HOST_EXPORT ParseResult ParseAction(const std::string& line, Action* action, std::string* error);

// Every accepted form with its meaning and an example, two lines each, then the range of each number.
GS_HOST_EXPORT std::string ActionHelp();
// The example of each form, with the verb it reads as.
GS_HOST_EXPORT std::vector<std::pair<Verb, std::string>> ActionExamples();

// `text` as it may be shown in a message: control bytes as \xNN, cut after `limit` bytes with "...".
GS_HOST_EXPORT std::string Shown(const std::string& text, size_t limit = 80);

} // namespace achost
