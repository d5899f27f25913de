// CDlgInfo: the Information dialog (dialog 32501): which add-on this is, its version and date, the
// system and host it was built for; saves the same lines as a text file and opens the vendor's
// update page.
#pragma once

#include "DG.h"
#include "XN_AddonUpdate_Versions.hpp"
#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

class CDlgInfo {
public:
    CDlgInfo() { Reset(); }

    // Runs the modal dialog; true when it was closed with item 1 (OK).
    bool ShowDialog();

    // The five information lines: the add-on's name, "Version: 19.0.4.2200", "Date: 03/08/2018",
    // "System: Linux" and "ArchiCAD 19" (labels in the current language).
    XN_String GetSuiteStr();
    XN_String GetVersionStr();
    XN_String GetDateStr();
    XN_String GetSystemStr();
    XN_String GetACVersionStr();

    void SetItems();
    // Items 1 and 2 close the dialog; 15 opens the update page; 16 saves the information. Everything
    // but closing keeps the dialog open (0).
    short MsgClick(short item);

    // Asks for the file to save to. True when the user cancelled (`cancelled`) or chose a name ending
    // in ".txt" (any case); false for any other name.
    bool AskForFileSave(XN_Location& file, bool& cancelled);
    // The five lines, each ended by "\n", then one "\n" alone: the saved file ends with an empty line.
    void BuildData(XN_List<XN_String>& lines);
    // Writes the lines to `file` in UTF-8 without a byte-order mark, replacing what it held; false when
    // it cannot be opened or written (a partly written file is left as it is).
    bool WriteData(XN_Location& file, XN_List<XN_String>& lines);

private:
    void Reset();
    void Save();
    static short DGCALLBACK Callback(short message, short dialId, short item, DGUserData userData,
                                     DGMessageData msgData);

    short dialogId;                // the open dialog, 0 while none is
    XN_AddonUpdate_Addon identity; // the add-on's own identity line, split
};
