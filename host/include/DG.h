// The host's dialog manager: modal and modeless dialogs built from the add-on's 'GDLG' resources,
// their items and list boxes, and alerts. C++ linkage, as in the host's own interface.
//
// Every call is made on the host's user-interface thread from inside an entry point or a callback
// of the add-on. Dialogs are named by the ID their creating call returned (not the resource ID);
// items by their number in the resource (1, 2, ... in order of appearance); list rows by their
// 1-based position. A call that names a dialog that is not open, an item the dialog does not have,
// or a list row the list does not have changes nothing, answers the neutral value given below, and
// is reported by the host with the call's name.
#pragma once

#include "GSRoot.hpp"
#include "UniString.hpp"

typedef GS::IntPtr DGUserData;
typedef GS::IntPtr DGMessageData;

// A dialog's callback: told each event of the dialog `dialId` it was given to. For DG_MSG_CLICK a
// non-zero answer closes the dialog with that item (DG_OK, DG_CANCEL, or any item number); for the
// other messages the answer is ignored. userData is the value given when the dialog was created.
typedef short(DGCALLBACK* DGDialCallBack)(short message, short dialId, short itemId, DGUserData userData,
                                          DGMessageData msgData);

// Messages --------------------------------------------------------------------------------------
#define DG_MSG_NULL 0
#define DG_MSG_INIT 1         // the dialog is built and filled from its resource, not yet shown
#define DG_MSG_CLOSEREQUEST 2 // not sent by this host
#define DG_MSG_CLOSE 3        // the dialog closes; itemId is the item it closes with
#define DG_MSG_CLICK 4        // itemId was clicked (DG_CLOSEBOX: a modeless dialog's close box)
#define DG_MSG_DOUBLECLICK 5  // not sent by this host
#define DG_MSG_CHANGE 6       // the selection of list itemId changed
#define DG_MSG_USER 0x3FFF

// Item IDs --------------------------------------------------------------------------------------
#define DG_ALL_ITEMS 0
#define DG_NO_ITEM -1
#define DG_OK 1
#define DG_CANCEL 2
#define DG_THIRD 3
#define DG_CLOSEBOX -1
#define DG_ABORT -2

// List rows: where DGListInsertItem inserts.
#define DG_LIST_TOP 1
#define DG_LIST_BOTTOM -1

// Alert kinds (DGAlert's alertType).
#define DG_ERROR -1
#define DG_WARNING -2
#define DG_INFORMATION -3

// Dialog references.
#define DG_TOP_MODAL 0
#define DG_ALL_DIALOGS -32768
#define DG_DF_FIRST -32768
#define DG_DF_FIRSTVISIBLE -32767
#define DG_DF_LAST -32766

// DGSetDialogSize: which rectangle, and the point that stays in place.
#define DG_CLIENT 0
#define DG_FRAME 1
#define DG_CENTER 0
#define DG_TOPLEFT 1

// Item fonts, justification and truncation (list tab fields).
#define DG_IS_LARGE 0x0000
#define DG_IS_SMALL 0x0004
#define DG_IS_EXTRASMALL 0x0008
#define DG_IS_PLAIN 0x0000
#define DG_IS_BOLD 0x0010
#define DG_IS_LEFT 0x0000
#define DG_IS_CENTER 0x0100
#define DG_IS_RIGHT 0x0200
#define DG_IS_NOTRUNC 0x0000
#define DG_IS_TRUNCEND 0x1000
#define DG_IS_TRUNCMIDDLE 0x2000

namespace DG {

// An image resource of a resource module: a 'GICN' for icons. A plain value; the host resolves it
// when it is used.
class Image {
public:
    Image() = default;
    Image(GSResModule resModule, short resId) : resModule(resModule), resId(resId) {}
    GSResModule GetResourceModule() const { return resModule; }
    short GetResourceId() const { return resId; }
    bool IsEmpty() const { return resId == 0; }

private:
    GSResModule resModule = 0;
    short resId = 0;
};

class Icon : public Image {
public:
    Icon() = default;
    Icon(GSResModule resModule, short resId) : Image(resModule, resId) {}
};

} // namespace DG

// Dialogs -----------------------------------------------------------------------------------------

// Builds the dialog of 'GDLG' resId in dialResModule, sends DG_MSG_INIT, shows it and waits until
// the callback's answer to a click closes it, or the user closes it with the close box (the callback
// then gets DG_MSG_CLOSE and the result is DG_CANCEL). The host's run loop keeps turning meanwhile.
// Returns the closing item; 0 when the resource does not exist (reported). iconResModule is where
// icon items find their 'GICN's. When the user's session has ended (or none runs), the dialog closes
// at once as by its close box.
GS_HOST_EXPORT short DGModalDialog(GSResModule dialResModule, short resId, GSResModule dialIconResModule,
                                   const DGDialCallBack dCallBack, DGUserData userData);

// Builds a modeless dialog (a 'GDLG' of kind Modeless or Palette) and sends DG_MSG_INIT; shown at
// once when show is non-zero, else hidden. Returns its dialog ID, valid until it is closed; 0 when the
// resource does not exist (reported).
GS_HOST_EXPORT short DGModelessInit(GSResModule dialResModule, short resId, GSResModule dialIconResModule,
                                    const DGDialCallBack dCallBack, DGUserData userData, short show);
// Closes a modeless dialog: DG_MSG_CLOSE (item 0), then its ID is no longer valid.
GS_HOST_EXPORT void DGModelessClose(short dialId);
// Shows a modeless dialog in front (refDialId: DG_DF_FIRST).
GS_HOST_EXPORT void DGShowModelessDialog(short dialId, short refDialId);
GS_HOST_EXPORT void DGHideModelessDialog(short dialId);
// 1 when the modeless dialog is shown, 0 when hidden or not open (never reported).
GS_HOST_EXPORT short DGIsModelessDialogVisible(short dialId);
// 1 when a dialog with this ID is open, else 0 (never reported: this is how to ask).
GS_HOST_EXPORT short DGIsDialogOpen(short dialId);

// Shows a modal alert of alertType (DG_ERROR, DG_WARNING, DG_INFORMATION) and waits until the user
// dismisses it. Empty button texts are left out; with none at all the alert has one "OK" button.
// Returns the number of the button pressed (1 = button1).
GS_HOST_EXPORT short DGAlert(short alertType, const GS::UniString& title = "",
                             const GS::UniString& largeText = "", const GS::UniString& smallText = "",
                             const GS::UniString& button1 = "", const GS::UniString& button2 = "",
                             const GS::UniString& button3 = "");

// Dialog and items --------------------------------------------------------------------------------

GS_HOST_EXPORT void DGSetDialogTitle(short dialId, const GS::UniString& title);
// Sets the dialog's size; rectType DG_CLIENT or DG_FRAME, fixPoint DG_CENTER or DG_TOPLEFT (where the
// dialog stays put). Both rectangles are the same on this host.
GS_HOST_EXPORT void DGSetDialogSize(short dialId, short rectType, short hSize, short vSize, short fixPoint,
                                    bool keepOld);

// Bracket a series of item moves and size changes so they show at once; nothing else changes here.
GS_HOST_EXPORT void DGBeginMoveGrowItems(short dialId);
GS_HOST_EXPORT void DGEndMoveGrowItems(short dialId);

// The text of a button, static text, edit or group; a list's row text is set with DGListSetItemText.
GS_HOST_EXPORT void DGSetItemText(short dialId, short item, const GS::UniString& text);
// The item's text; empty when the item does not exist.
GS_HOST_EXPORT GS::UniString DGGetItemText(short dialId, short item);
// Visibility and enabled state; item DG_ALL_ITEMS means every item of the dialog.
GS_HOST_EXPORT void DGShowItem(short dialId, short item);
GS_HOST_EXPORT void DGHideItem(short dialId, short item);
GS_HOST_EXPORT void DGEnableItem(short dialId, short item);
GS_HOST_EXPORT void DGDisableItem(short dialId, short item);
// Gives the keyboard focus to the item; DG_NO_ITEM takes it from every item.
GS_HOST_EXPORT void DGSetFocus(short dialId, short item);
// Asks for the item to be drawn again (DG_ALL_ITEMS: the whole dialog).
GS_HOST_EXPORT void DGRedrawItem(short dialId, short item);
// The value of a check box, radio button, edit or popup; 0 for an item that never had one.
GS_HOST_EXPORT void DGSetItemValLong(short dialId, short item, Int32 value);
GS_HOST_EXPORT Int32 DGGetItemValLong(short dialId, short item);

// Suspends and resumes drawing of an item (used around filling a list); the pairs nest. A dialog
// must not close with drawing still suspended.
GS_HOST_EXPORT void DGDisableDraw(short dialId, short item);
GS_HOST_EXPORT void DGEnableDraw(short dialId, short item);

// List boxes (SingleSelList, MultiSelList) ---------------------------------------------------------

// Inserts an empty row before listItem (DG_LIST_TOP, a row number, or DG_LIST_BOTTOM to append).
// False when the position is outside the list.
GS_HOST_EXPORT bool DGListInsertItem(short dialId, short item, short listItem);
// Deletes row listItem, or every row with DG_ALL_ITEMS. The selection moves with its row and is lost
// with it.
GS_HOST_EXPORT void DGListDeleteItem(short dialId, short item, short listItem);
GS_HOST_EXPORT short DGListGetItemCount(short dialId, short item);
// The row's text; tab fields are separated by '\t' (setting fills the fields in order; getting leaves
// out empty fields at the end).
GS_HOST_EXPORT void DGListSetItemText(short dialId, short item, short listItem, const GS::UniString& text);
GS_HOST_EXPORT GS::UniString DGListGetItemText(short dialId, short item, short listItem);
// The text of one tab field (1-based) of the row.
GS_HOST_EXPORT void DGListSetTabItemText(short dialId, short item, short listItem, short tabIndex,
                                         const GS::UniString& text);
// The icon shown at the start of the row; an empty icon removes it.
GS_HOST_EXPORT void DGListSetItemIcon(short dialId, short item, short listItem, const DG::Icon& icon);
// Selects the row (0: no row). Does not send DG_MSG_CHANGE: only the user's selections do.
GS_HOST_EXPORT void DGListSelectItem(short dialId, short item, short listItem);
// The first selected row after listItem (0: from the start); 0 when there is none.
GS_HOST_EXPORT short DGListGetSelected(short dialId, short item, short listItem);
// Sets the number of tab fields of every row. False for a count below 1.
GS_HOST_EXPORT bool DGListSetTabFieldCount(short dialId, short item, short nTabFields);
// Places tab field tabIndex (1-based) from begPos to endPos, with its justification and truncation.
GS_HOST_EXPORT void DGListSetTabFieldData(short dialId, short item, short tabIndex, short begPos,
                                          short endPos, short justFlag, short truncFlag, bool hasSeparator,
                                          bool status);
// The height of every row, in pixels.
GS_HOST_EXPORT void DGListSetItemHeight(short dialId, short item, short itemHeight);
