// CDlgAbout: the About dialog (dialog 32500): the suite's descriptive text and two buttons that open
// the suite's documentation, the PDF files beside the add-on.
#pragma once

#include "DG.h"

class CDlgAbout {
public:
    // Runs the modal dialog; true when it was closed with item 1 (OK).
    bool ShowDialog();
    // Fills the title, the text and the buttons; hides item 2, so one button closes the dialog.
    void SetItems();
    // Items 1 and 2 close the dialog (the item is returned); items 6 and 7 open their document, or
    // show an alert when it cannot be opened, and keep the dialog open (0).
    short MsgClick(short item);

private:
    static short DGCALLBACK Callback(short message, short dialId, short item, DGUserData userData,
                                     DGMessageData msgData);

    short dialogId = 0; // the open dialog, 0 while none is
};
