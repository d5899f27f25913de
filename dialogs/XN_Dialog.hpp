// XN_Dialog: the framework's helpers that tell the user something or ask for a file: the one-button
// alert, the labelled message, and the save-file dialog. Everything runs on the host's user-interface
// thread and returns once the user has answered.
#pragma once

#include "FileTypeManager.hpp"
#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

class XN_Dialog {
public:
    // Shows a modal alert of `kind` (the host's alert kinds; the suite passes -1) with the three texts
    // and one button, general string 64 ("OK"); returns when the user has dismissed it.
    static void ShowAlert(short kind, const XN_String& largeText, const XN_String& smallText,
                          const XN_String& guideText);

    // General string 10 ("Error") when `isError`, else 14 ("Warning"), then `separator`, then `text`
    // with its first character lowered (`lowerFirst`) or raised. An empty text or separator gives "".
    static XN_String SetPrefixString(const XN_String& text, bool isError, const XN_String& separator,
                                     bool lowerFirst);

    // Save-file dialogs (XN_SaveFile.cpp) -------------------------------------------------------

    // Asks for a file to save of one type: `typeName` ("Text Files (*.txt)") and `extension` as the
    // dialog's one filter, `title` (when not empty) as its title, `defaultPath` ("folder/name" or a
    // bare name) as the folder and file name it starts with. True with `file` set when the user
    // chose; false when cancelled.
    static bool SaveFile(XN_Location& file, const XN_String& typeName, const XN_String& extension,
                         long macType, const XN_String& title, const XN_String& defaultPath);
    // The general form: one filter per type of `types` (when given), the starting `folder` and the
    // preselected `fileName` (when given). `selectedType` (when given) receives the index of the
    // filter in force when the user chose.
    static bool SaveFile(XN_Location& file, const XN_Location* folder, const XN_Location* fileName,
                         const XN_String& title, XN_List<FTM::GeneralID>* types, long* selectedType);
};
