// XN_Dialog: the framework's helpers that tell the user something or ask for a file: the one-button
// alert, the labelled message, and the save-file dialog. Everything runs on the host's user-interface
// thread and returns once the user has answered.
#pragma once

#include "DG.h"
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

    // The messages of the suite's modal dialog classes (CDlgAbout, CDlgInfo), answered alike: the
    // init message remembers the dialog's id in `dialogId`, fills the dialog (SetItems), sizes its
    // client area to `width` by `height` and focuses no item; a click answers MsgClick(item) (the
    // item closes the dialog, 0 keeps it open); the close message forgets the id. Memory running out
    // in the add-on's code makes the message do nothing: no exception reaches the host.
    template <class Dialog>
    static short ModalMessage(Dialog& dialog, short& dialogId, short message, short dialId, short item,
                              short width, short height) {
        try {
            switch (message) {
            case DG_MSG_INIT:
                dialogId = dialId;
                dialog.SetItems();
                DGSetDialogSize(dialId, DG_CLIENT, width, height, DG_TOPLEFT, true);
                DGSetFocus(dialId, DG_NO_ITEM);
                return 0;
            case DG_MSG_CLICK:
                return dialog.MsgClick(item);
            case DG_MSG_CLOSE:
                dialogId = 0;
                return 0;
            default:
                return 0;
            }
        } catch (...) {
            return 0;
        }
    }

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
