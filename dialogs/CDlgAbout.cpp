#include "CDlgAbout.hpp"

#include "ACAPinc.h"
#include "XN_Dialog.hpp"
#include "XN_General.hpp"
#include "XN_Language.hpp"
#include "XN_Resource.hpp"

namespace {

constexpr short kAboutDialog = 32500;
constexpr short kWidth = 960, kHeight = 510;

constexpr short kItemText = 4;
constexpr short kItemFirstGuide = 6;
constexpr short kItemSecondGuide = 7;

// The documentation files, looked for in the folder that holds the add-on.
const char* const kGuideFiles[] = {"01 - Libreria Moravel.pdf", "02 - Libreria Moravel.pdf"};

// Information strings: the title, the eight pieces of the text, the guide buttons, the alert.
constexpr long kTitleString = 4;
constexpr long kFirstTextString = 5, kLastTextString = 12;
constexpr long kFirstGuideString = 13;
constexpr long kCannotOpenString = 15;
// General strings.
constexpr long kOKString = 64, kCancelString = 5;

XN_String InfoString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_INFO_TEXTS + gXN_Language), index, true);
}

XN_String GeneralString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + gXN_Language), index, true);
}

} // namespace

bool CDlgAbout::ShowDialog() {
    dialogId = 0;
    return DGModalDialog(ACAPI_GetOwnResModule(), kAboutDialog, ACAPI_GetOwnResModule(), Callback,
                         reinterpret_cast<DGUserData>(this)) == DG_OK;
}

void CDlgAbout::SetItems() {
    XN_String text("");
    for (long index = kFirstTextString; index <= kLastTextString; ++index)
        text += InfoString(index);
    DGSetDialogTitle(dialogId, XN_ToUniString(InfoString(kTitleString)));
    DGSetItemText(dialogId, DG_OK, XN_ToUniString(GeneralString(kOKString)));
    DGSetItemText(dialogId, DG_CANCEL, XN_ToUniString(GeneralString(kCancelString)));
    DGSetItemText(dialogId, kItemText, XN_ToUniString(text));
    DGSetItemText(dialogId, kItemFirstGuide, XN_ToUniString(InfoString(kFirstGuideString)));
    DGSetItemText(dialogId, kItemSecondGuide, XN_ToUniString(InfoString(kFirstGuideString + 1)));
    DGHideItem(dialogId, DG_CANCEL);
}

short CDlgAbout::MsgClick(short item) {
    switch (item) {
    case DG_OK:
    case DG_CANCEL:
        return item;
    case kItemFirstGuide:
    case kItemSecondGuide: {
        XN_Location guide = XN_Location::AddOnLocation(false);
        guide.SetLastName(kGuideFiles[item - kItemFirstGuide]);
        if (!XN_General::LaunchDocByLoc(guide))
            XN_Dialog::ShowAlert(
                DG_ERROR, XN_String(""),
                XN_Dialog::SetPrefixString(InfoString(kCannotOpenString), true, XN_String(": "), true),
                XN_String(""));
        return 0;
    }
    default:
        return 0;
    }
}

short DGCALLBACK CDlgAbout::Callback(short message, short dialId, short item, DGUserData userData,
                                     DGMessageData /*msgData*/) {
    CDlgAbout& dialog = *reinterpret_cast<CDlgAbout*>(userData);
    return XN_Dialog::ModalMessage(dialog, dialog.dialogId, message, dialId, item, kWidth, kHeight);
}
