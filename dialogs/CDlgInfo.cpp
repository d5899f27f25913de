#include "CDlgInfo.hpp"

#include "ACAPinc.h"
#include "XN_Dialog.hpp"
#include "XN_File.hpp"
#include "XN_General.hpp"
#include "XN_Language.hpp"
#include "XN_Resource.hpp"
#include "sett_Addon.hpp"
#include "sett_Server.hpp"

namespace {

constexpr short kInfoDialog = 32501;
constexpr short kWidth = 705, kHeight = 503;

constexpr short kItemSuite = 4, kItemVersion = 5, kItemDate = 6, kItemSystem = 7, kItemHost = 8;
constexpr short kItemUpdatePage = 15, kItemSave = 16;

// Information strings.
constexpr long kVersionLabel = 16, kDateLabel = 17, kSystemLabel = 18;
constexpr long kSaveString = 20, kDefaultFileName = 21;
constexpr long kCannotSave = 22, kNotATextFile = 23, kCannotWrite = 24;
// General strings.
constexpr long kOKString = 64, kCancelString = 5;

// The saved file's type: its filter in the save dialog.
const char kTextFilesType[] = "Text Files (*.txt)";
const char kTextExtension[] = "TXT";
constexpr long kMacTypeTEXT = 'TEXT';

// The operating-system family the add-on was built for, and the update page on the vendor's site.
const char kSystemFamily[] = XN_BUILD_SYSTEM_FAMILY;
const char kUpdatePagePath[] = "/update/update.html";

XN_String InfoString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_INFO_TEXTS + gXN_Language), index, true);
}

XN_String GeneralString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + gXN_Language), index, true);
}

// The text after the last "." when that "." follows the last "/" and is not the last character.
XN_String Extension(const XN_String& path) {
    const unsigned int dot = path.LastIndexOf('.');
    const unsigned int slash = path.LastIndexOf('/');
    const bool has = dot != XN_String::kNotFound && (slash == XN_String::kNotFound || dot > slash) &&
                     dot + 1 < path.GetLength();
    return has ? path.Substring(dot + 1) : XN_String("");
}

void ShowSaveAlert(long reason) {
    XN_Dialog::ShowAlert(DG_ERROR, InfoString(kCannotSave), InfoString(reason), XN_String(""));
}

} // namespace

void CDlgInfo::Reset() {
    dialogId = 0;
    identity = XN_AddonUpdate_Addon();
}

bool CDlgInfo::ShowDialog() {
    Reset();
    XN_AddonUpdate_SplitAddonVersion(XN_String(kAddon_VersionLine), identity);
    return DGModalDialog(ACAPI_GetOwnResModule(), kInfoDialog, ACAPI_GetOwnResModule(), Callback,
                         reinterpret_cast<DGUserData>(this)) == DG_OK;
}

XN_String CDlgInfo::GetSuiteStr() {
    return XN_String(sett_ADDON_NAME);
}

XN_String CDlgInfo::GetVersionStr() {
    return InfoString(kVersionLabel) + " " + identity.versionText;
}

XN_String CDlgInfo::GetDateStr() {
    return InfoString(kDateLabel) + " " + identity.dateText;
}

XN_String CDlgInfo::GetSystemStr() {
    return InfoString(kSystemLabel) + " " + kSystemFamily;
}

XN_String CDlgInfo::GetACVersionStr() {
    return XN_String("ArchiCAD ") + XN_String::LongToString(identity.hostVersion);
}

void CDlgInfo::SetItems() {
    DGSetDialogTitle(dialogId, XN_ToUniString(XN_String(sett_ADDON_NAME)));
    DGSetItemText(dialogId, DG_OK, XN_ToUniString(GeneralString(kOKString)));
    DGSetItemText(dialogId, DG_CANCEL, XN_ToUniString(GeneralString(kCancelString)));
    DGSetItemText(dialogId, kItemSuite, XN_ToUniString(GetSuiteStr()));
    DGSetItemText(dialogId, kItemSave, XN_ToUniString(InfoString(kSaveString)));
    DGSetItemText(dialogId, kItemVersion, XN_ToUniString(GetVersionStr()));
    DGSetItemText(dialogId, kItemDate, XN_ToUniString(GetDateStr()));
    DGSetItemText(dialogId, kItemSystem, XN_ToUniString(GetSystemStr()));
    DGSetItemText(dialogId, kItemHost, XN_ToUniString(GetACVersionStr()));
}

short CDlgInfo::MsgClick(short item) {
    switch (item) {
    case DG_OK:
    case DG_CANCEL:
        return item;
    case kItemUpdatePage:
        XN_General::LaunchURLByPath(XN_String(sett_VENDOR_SITE) + kUpdatePagePath);
        return 0;
    case kItemSave:
        Save();
        return 0;
    default:
        return 0;
    }
}

void CDlgInfo::Save() {
    XN_Location file;
    bool cancelled = false;
    while (!AskForFileSave(file, cancelled))
        ShowSaveAlert(kNotATextFile);
    if (cancelled)
        return;
    XN_List<XN_String> lines;
    BuildData(lines);
    if (!WriteData(file, lines))
        ShowSaveAlert(kCannotWrite);
}

bool CDlgInfo::AskForFileSave(XN_Location& file, bool& cancelled) {
    cancelled = false;
    if (!XN_Dialog::SaveFile(file, XN_String(kTextFilesType), XN_String(kTextExtension), kMacTypeTEXT,
                             InfoString(kSaveString), InfoString(kDefaultFileName))) {
        cancelled = true;
        return true;
    }
    return XN_String::CompareIgnoreCase(Extension(file), 0, XN_String(kTextExtension), 0, 0) == 0;
}

void CDlgInfo::BuildData(XN_List<XN_String>& lines) {
    lines.Reset();
    const XN_String newLine("\n");
    for (const XN_String& line :
         {GetSuiteStr(), GetVersionStr(), GetDateStr(), GetSystemStr(), GetACVersionStr()})
        lines.AddData(line + newLine, -1);
    lines.AddData(newLine, -1);
}

bool CDlgInfo::WriteData(XN_Location& file, XN_List<XN_String>& lines) {
    XN_File writer;
    if (writer.Open(file, XN_File_WriteEmptyMode) != 0)
        return false;
    for (long i = 0; i < lines.GetCount(); ++i)
        if (writer.WriteFullText(lines[i], XN_String::Encoding_UTF8, false, nullptr) != 0)
            return false; // the writer closes the file
    return writer.Close() == 0;
}

short DGCALLBACK CDlgInfo::Callback(short message, short dialId, short item, DGUserData userData,
                                    DGMessageData /*msgData*/) {
    CDlgInfo& dialog = *reinterpret_cast<CDlgInfo*>(userData);
    return XN_Dialog::ModalMessage(dialog, dialog.dialogId, message, dialId, item, kWidth, kHeight);
}
