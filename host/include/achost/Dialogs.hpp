// The dialogs and alerts the host shows, as a person (or a test) sees them: built from the add-on's
// 'GDLG' resources and changed by the add-on's DG calls. Host-side only.
#pragma once

#include "DG.h"

#include <string>
#include <vector>

namespace achost {

enum class DialogKind { Modal, Modeless, Palette };

struct ListRow {
    std::vector<std::string> tabs; // UTF-8 text of each tab field
    short icon = 0;                // 'GICN' ID, 0 for none
    std::string iconName;          // the icon's name from its resource
};

// Where a list's tab field lies in its row, in pixels from the row's left edge (DGListSetTabFieldData).
struct TabField {
    short begin = 0, end = 0;
};

struct DialogItem {
    std::string kind; // the resource's item type: "Button", "LeftText", "SingleSelList", ...
    std::string text; // UTF-8
    // The item's frame in the dialog's client area, as the 'GDLG' gives it, and its font there
    // ("LargePlain", "SmallBold", ...; empty when the resource names none).
    short left = 0, top = 0, width = 0, height = 0;
    std::string font;
    bool visible = true;
    bool enabled = true;
    Int32 value = 0;
    short icon = 0; // the 'GICN' of an Icon or IconButton item

    // List boxes
    std::vector<ListRow> rows;
    short selected = 0; // row number, 0 for none
    short tabFields = 1;
    std::vector<TabField> tabLayout; // the fields placed so far, by field number - 1
    short rowHeight = 0;
    int drawSuspended = 0; // DGDisableDraw calls not yet matched by DGEnableDraw

    bool IsList() const { return kind == "SingleSelList" || kind == "MultiSelList"; }
};

struct Dialog {
    short id = 0;
    short resID = 0;
    DialogKind kind = DialogKind::Modal;
    std::string title;
    short width = 0, height = 0;   // the client area: the 'GDLG' frame until DGSetDialogSize
    std::vector<DialogItem> items; // item n is items[n - 1]
    bool visible = true;
    short focus = DG_NO_ITEM;
    DGDialCallBack callback = nullptr;
    DGUserData userData = 0;

    // Item `n`, or null.
    DialogItem* Item(short n) {
        return n >= 1 && static_cast<size_t>(n) <= items.size() ? &items[n - 1] : nullptr;
    }
    const DialogItem* Item(short n) const { return const_cast<Dialog*>(this)->Item(n); }
};

struct Alert {
    short type = DG_ERROR;
    std::string title, largeText, smallText;
    std::vector<std::string> buttons; // never empty
};

// A file dialog (DG::FileDialog) as the user sees it while it waits for an answer.
struct FileRequest {
    std::string kind = "save";           // what it asks for
    std::string title, folder, fileName; // UTF-8; empty when not set
    std::vector<std::string> filters;    // each filter's text and extensions: "Text Files (*.txt) [TXT]"
    size_t selectedFilter = 0;
};

GS_HOST_EXPORT const char* DialogKindName(DialogKind kind);

} // namespace achost
