// What a person does or expects at the host, one line of a script or of the terminal:
// `menu 3`, `expect menu 32501 5 checked`, `click 16`, ... Strings are in double quotes, where a
// backslash escapes a double quote or a backslash; `#` starts a comment. Host-side only.
#pragma once

#include "GSRoot.hpp"

#include <string>
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
    AnswerSave,   // answer save "PATH"|cancel
    AnswerFolder, // answer folder "PATH"|cancel
    ExpectOpened, // expect opened "TEXT"
    WaitDownload, // wait download
    Command       // command DEVID LOCALID "CMD": another add-on answers CMD (ACAPI_Command_Test)
};

struct Action {
    Verb verb = Verb::Quit;
    std::vector<Int64> numbers;     // the numbers of the line, in order
    std::vector<std::string> texts; // its quoted strings and chosen keywords (checked, cancel, ...), in order
    std::string source;             // the line as written, comment removed
    std::string file;               // where the line came from ("" when typed)
    int line = 0;
};

enum class ParseResult { Parsed, Empty, Malformed };

// Reads one line. Empty for a blank or comment-only line; Malformed with a message naming the
// unknown verb or showing the accepted forms.
GS_HOST_EXPORT ParseResult ParseAction(const std::string& text, Action* action, std::string* error);

// Every accepted form, one per line, for `help`.
GS_HOST_EXPORT std::vector<std::string> ActionForms();

} // namespace achost
