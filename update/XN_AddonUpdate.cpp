// The update check, the automatic-update switch and the result dialog.
#include "XN_AddonUpdate.hpp"

#include "ACAPinc.h"
#include "XN_AddonSettings.hpp"
#include "XN_AddonUpdate_Versions.hpp"
#include "XN_Dialog.hpp"
#include "XN_File.hpp"
#include "XN_Language.hpp"
#include "XN_List.hpp"
#include "XN_Resource.hpp"
#include "sett_Addon.hpp"
#include "sett_Server.hpp"

#include <cstring>
#include <ctime>

namespace {

// The state of the last check, shared by the check and its dialog.
bool sUpdateCalledByUser = false;
bool sHasLibrary = false;
XN_String sUpdateAddonLibName;
XN_String sCurrentAddonVersion;
XN_String sServerAddonVersion; // the matching server line's first four words, or "???"
XN_String sServerAddonLibVersion;
short sUpdateStatus = 0;    // 1 download running, 2 up to date, 3 newer release available
short sUpdateStatusLib = 0; // 1 once a check has completed
short sIDUpdateDialog = 0;
short sUpdateCancelled = 0; // answered to the downloader; reset when the server answers

enum { kStatusRunning = 1, kStatusUpToDate = 2, kStatusNewer = 3 };

const char kAutoUpdateKey[] = "AutoUpdate";
const char kVersionsFile[] = "/update_plugins/versions16.txt";
const char kPlusVersionsFile[] = "/update_plugins/versions_plus.txt";
const char kUpdatesPage[] = "/update_plugins/updates.htm";
constexpr short kLanguageMenuCount = 7;
constexpr GSFlags kPaletteFlags = 7; // enabled in the floor plan, sections and the 3D window

// General strings of the current language.
enum {
    kStrCancel = 5,
    kStrUnreachable = 33,
    kStrNewer = 34,
    kStrUpToDate = 35,
    kStrWebsite = 37,
    kStrDownload = 79,
    kStrAddonUpToDate = 80,
    kStrAddonNewer = 81,
    kStrLibraryCurrent = 82,
    kStrLibraryNewer = 83,
    kStrCheckLibrary = 84
};

XN_String GeneralString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + gXN_Language), index, true);
}

void ShowUnreachableAlert() {
    XN_Dialog::ShowAlert(-1, XN_String(""), GeneralString(kStrUnreachable), XN_String(""));
}

// The host's release number in decimal: "19".
XN_String HostRelease() {
    API_ServerApplicationInfo info;
    std::memset(&info, 0, sizeof info);
    ACAPI_GetReleaseNumber(&info);
    return XN_String::LongToString(static_cast<long>(info.mainVersion));
}

// "LastUpdateCheck_190": when the last download started, in seconds since 1970.
XN_String LastCheckKey() {
    return XN_String("LastUpdateCheck_") + HostRelease() + "0";
}

long ToLong(const XN_String& text) {
    return static_cast<long>(XN_String::ToLong(text.ToCStr().Get()));
}

void CreateDialog() {
    const GSResModule module = ACAPI_GetOwnResModule();
    sIDUpdateDialog =
        DGModelessInit(module, XN_UPDATE_DIALOG_ID, module, XN_AddonUpdate_ResultUpdate_Handler, 0, 0);
}

// The first part of a version word, "19" of "19.0.4.2200", compared as text.
XN_String MajorOf(const XN_String& version) {
    XN_List<XN_String> parts;
    version.Split(parts, '.');
    XN_String major;
    parts.GetData(0, major);
    return major;
}

XN_String Word(XN_List<XN_String>& words, long index) {
    XN_String word;
    words.GetData(index, word);
    return word;
}

// Reads and deletes the downloaded versions file and compares the server's lines with the add-on's
// own line; fills the state and shows the dialog when there is something to show.
void CompareWithServer() {
    XN_Location location;
    XN_File file;
    if (XN_AddonUpdate_GetTempFileLocation(location) != NoError ||
        file.Open(location, XN_File_ReadMode) != 0) {
        ShowUnreachableAlert();
        return;
    }
    XN_String text;
    file.ReadFullText(text, true, XN_String::Encoding_SystemDefault);
    file.Close();
    XN_File::Delete(location);
    XN_List<XN_String> lines;
    text.SplitLines(lines, true, true);

    XN_List<XN_String> own;
    sCurrentAddonVersion.SplitBySpaces(own);
    if (XN_AddonUpdate_CheckVersionFormat(own) != 1) {
        ShowUnreachableAlert();
        return;
    }
    const XN_String ownName = Word(own, 0), ownTag = Word(own, 2), ownMajor = MajorOf(Word(own, 1));
    XN_String ownDateWord = Word(own, 3);
    const XN_String ownDate = XN_AddonUpdate_FormatDate(ownDateWord);
    sServerAddonVersion = "???";
    sServerAddonLibVersion = "???";
    bool newer = false;
    // The version numbers after the major are never compared: a later date alone makes a release
    // newer, so a rebuild counts and a higher number with an older date does not.
    for (long i = 0; i < lines.GetCount(); ++i) {
        if (lines[i].IsEmpty())
            continue;
        XN_List<XN_String> words;
        lines[i].SplitBySpaces(words);
        if (XN_AddonUpdate_CheckVersionFormat(words) != 1 || Word(words, 0) != ownName ||
            Word(words, 2) != ownTag || MajorOf(Word(words, 1)) != ownMajor)
            continue;
        XN_String dateWord = Word(words, 3);
        newer = newer || XN_AddonUpdate_FormatDate(dateWord) > ownDate;
        sServerAddonVersion = Word(words, 0) + " " + Word(words, 1) + " " + Word(words, 2) + " " + dateWord;
    }
    // An automatic check that finds nothing new shows nothing: its dialog stays hidden, not closed.
    if (!newer && !sUpdateCalledByUser)
        return;
    sUpdateStatus = newer ? kStatusNewer : kStatusUpToDate;
    sUpdateStatusLib = 1;
    // The user may have closed the dialog while the transfer ran on: it is shown again.
    if (DGIsDialogOpen(sIDUpdateDialog) == 0)
        CreateDialog();
    if (sIDUpdateDialog == 0) // the host made no dialog: there is nothing to fill or show
        return;
    XN_AddonUpdate_ResultUpdateInit(sIDUpdateDialog);
    DGShowModelessDialog(sIDUpdateDialog, DG_DF_FIRST);
}

// The seven language menus' item, from `menuResID` on.
API_MenuItemRef MenuItem(short menuResID, short offset, short itemIndex) {
    API_MenuItemRef ref;
    std::memset(&ref, 0, sizeof ref);
    ref.menuResID = static_cast<short>(menuResID + offset);
    ref.itemIndex = itemIndex;
    return ref;
}

void OpenUpdatesPage(bool forLibrary) {
    // Nothing in the query is escaped: the add-on's name has no blanks. The library's own version is
    // not sent, deliberately: the page answers for the literal "Unknown".
    XN_String query = XN_String("?acver=") + HostRelease() +
                      "&lang=" + XN_String::LongToString(gXN_Language) + "&addon=" + sett_ADDON_NAME;
    if (forLibrary)
        query += "&lib=Unknown";
    XN_General::LaunchURLByPath(XN_String(sett_UPDATE_SERVER) + kUpdatesPage + query);
}

} // namespace

bool XN_AddonUpdate_CheckForUpdate(long /*mode*/, bool byUser, const XN_String& nameVersion,
                                   const XN_String& suite) {
    sUpdateCalledByUser = byUser;
    const XN_String key = LastCheckKey();
    sHasLibrary = !suite.IsEmpty();
    if (sHasLibrary)
        sUpdateAddonLibName = suite;
    XN_AddonSettings_Load(XN_AddonSettings_Addon, true);
    if (!byUser) {
        const long stored = XN_AddonSettings_GetLong(XN_AddonSettings_Addon, key, false);
        if (stored != 0 &&
            std::difftime(std::time(nullptr), static_cast<std::time_t>(stored)) < XN_UPDATE_INTERVAL_SECONDS)
            return true;
    }
    sCurrentAddonVersion = nameVersion;
    if (nameVersion.IsEmpty())
        return false;
    XN_Location destination;
    if (XN_AddonUpdate_GetTempFileLocation(destination) != NoError)
        return false;
    const XN_String address = XN_String(sett_UPDATE_SERVER) +
                              (sett_ADDON_ONLY_PLUS_VERSION != 0 ? kPlusVersionsFile : kVersionsFile);
    if (!XN_General::URLDownload(address, destination, XN_AddonUpdate_UpdateCallBack, nullptr)) {
        ShowUnreachableAlert();
        return true;
    }
    sUpdateStatus = kStatusRunning;
    CreateDialog(); // hidden until the check has something to show
    XN_AddonSettings_SetLong(XN_AddonSettings_Addon, key, static_cast<long>(std::time(nullptr)), true);
    XN_AddonSettings_Save(XN_AddonSettings_Addon);
    return true;
}

bool XN_AddonUpdate_AutoUpdate(long mode, const XN_String& nameVersion, const XN_String& suite) {
    const XN_String value = XN_AddonSettings_Get(XN_AddonSettings_Addon, XN_String(kAutoUpdateKey), true);
    if (value.IsEmpty()) {
        XN_AddonSettings_LoadSetSave(XN_AddonSettings_Addon, XN_String(kAutoUpdateKey), XN_String("1"), true);
        return true;
    }
    return ToLong(value) == 1 ? XN_AddonUpdate_CheckForUpdate(mode, false, nameVersion, suite) : true;
}

bool XN_AddonUpdate_SwitchAutoUpdateValue(short menuResID, short itemIndex) {
    // Each menu flips from its own mark: the seven stay in step because they are always set together.
    for (short m = 0; m < kLanguageMenuCount; ++m) {
        API_MenuItemRef ref = MenuItem(menuResID, m, itemIndex);
        GSFlags flags = 0;
        if (ACAPI_Interface(APIIo_GetMenuItemFlagsID, &ref, &flags) != NoError)
            continue;
        const bool checked = (flags & API_MenuItemChecked) != 0;
        flags = checked ? flags & ~static_cast<GSFlags>(API_MenuItemChecked) : flags | API_MenuItemChecked;
        XN_AddonSettings_LoadSetSave(XN_AddonSettings_Addon, XN_String(kAutoUpdateKey),
                                     XN_String(checked ? "0" : "1"), true);
        ACAPI_Interface(APIIo_SetMenuItemFlagsID, &ref, &flags);
    }
    return true;
}

bool XN_AddonUpdate_SetMenuUpdateCheck(short menuResID, short itemIndex) {
    const XN_String value = XN_AddonSettings_Get(XN_AddonSettings_Addon, XN_String(kAutoUpdateKey), true);
    const long on = value.IsEmpty() ? 1 : ToLong(value);
    for (short m = 0; m < kLanguageMenuCount; ++m) {
        API_MenuItemRef ref = MenuItem(menuResID, m, itemIndex);
        GSFlags flags = 0;
        if (ACAPI_Interface(APIIo_GetMenuItemFlagsID, &ref, &flags) != NoError)
            continue;
        if (on == 0)
            flags &= ~static_cast<GSFlags>(API_MenuItemChecked);
        else if (on == 1)
            flags |= API_MenuItemChecked;
        ACAPI_Interface(APIIo_SetMenuItemFlagsID, &ref, &flags);
    }
    return true;
}

int XN_AddonUpdate_UpdateCallBack(XN_URL_Message message, double /*progress*/, void* /*userData*/) {
    switch (message) {
    case XN_URL_Opened:
        sUpdateCancelled = 0;
        break;
    case XN_URL_Failed:
        if (DGIsDialogOpen(sIDUpdateDialog) != 0)
            DGModelessClose(sIDUpdateDialog);
        ShowUnreachableAlert();
        break;
    case XN_URL_Closed:
        if (DGIsDialogOpen(sIDUpdateDialog) != 0)
            DGModelessClose(sIDUpdateDialog);
        break;
    case XN_URL_Completed:
        CompareWithServer();
        break;
    default:
        break;
    }
    return sUpdateCancelled;
}

void XN_AddonUpdate_ResultUpdateInit(short dialogID) {
    const XN_String name(sett_ADDON_NAME);
    DGBeginMoveGrowItems(dialogID);
    DGSetDialogSize(dialogID, DG_CLIENT, 655, 172, DG_TOPLEFT, true);
    DGSetDialogTitle(dialogID, XN_ToUniString(name));
    DGSetItemText(dialogID, 2, XN_ToUniString(GeneralString(kStrCancel)));
    DGSetItemText(dialogID, 1, XN_ToUniString(GeneralString(kStrWebsite)));
    DGSetItemText(dialogID, 5, XN_ToUniString(GeneralString(kStrDownload)));
    DGSetItemText(dialogID, 7, XN_ToUniString(GeneralString(kStrDownload)));
    if (sUpdateStatus == kStatusRunning) {
        for (short item : {1, 5, 7, 4, 6})
            DGHideItem(dialogID, item);
    } else {
        for (short item : {1, 4, 6, 5})
            DGShowItem(dialogID, item);
        if (sUpdateStatus == kStatusUpToDate)
            DGDisableItem(dialogID, 5);
        else
            DGEnableItem(dialogID, 5);
        const bool upToDate = sUpdateStatus == kStatusUpToDate;
        if (sHasLibrary) {
            DGShowItem(dialogID, 7);
            DGSetItemText(
                dialogID, 3,
                XN_ToUniString(GeneralString(upToDate && sUpdateStatusLib == 1 ? kStrUpToDate : kStrNewer)));
            DGSetItemText(dialogID, 4,
                          XN_ToUniString(GeneralString(upToDate ? kStrAddonUpToDate : kStrAddonNewer)
                                             .Replace(XN_String("ADDONNAME"), name)));
            const long libraryText = sUpdateStatusLib == 1 ? kStrLibraryCurrent : kStrLibraryNewer;
            if (sUpdateStatusLib == 1)
                DGSetItemText(dialogID, 7, XN_ToUniString(GeneralString(kStrCheckLibrary)));
            else
                DGEnableItem(dialogID, 7);
            DGSetItemText(
                dialogID, 6,
                XN_ToUniString(
                    GeneralString(libraryText).Replace(XN_String("ADDONLIBNAME"), sUpdateAddonLibName)));
            DGShowItem(dialogID, 7);
        } else {
            for (short item : {7, 6, 3})
                DGHideItem(dialogID, item);
            DGSetItemText(dialogID, 4, XN_ToUniString(GeneralString(upToDate ? kStrUpToDate : kStrNewer)));
        }
    }
    DGEndMoveGrowItems(dialogID);
    DGRedrawItem(dialogID, DG_ALL_ITEMS);
}

short XN_AddonUpdate_ResultUpdate_Handler(short message, short dialogID, short item, DGUserData /*userData*/,
                                          DGMessageData /*msgData*/) {
    switch (message) {
    case DG_MSG_INIT:
        ACAPI_RegisterModelessWindow(dialogID, nullptr, kPaletteFlags, APINULLGuid);
        XN_AddonUpdate_ResultUpdateInit(dialogID);
        return 0;
    case DG_MSG_CLOSE:
        ACAPI_UnregisterModelessWindow(dialogID);
        return 1;
    case DG_MSG_CLICK:
        break;
    default:
        return 0;
    }
    switch (item) {
    case 1:
        DGModelessClose(dialogID);
        XN_General::LaunchURLByPath(XN_String(sett_VENDOR_SITE));
        return 1;
    case 2:
        // Closes the dialog only: the downloader heeds the flag just when the server answers, and the
        // flag is cleared then, so the transfer runs on and its result is shown again (kept).
        sUpdateCancelled = 1;
        DGModelessClose(dialogID);
        return 2;
    case 5:
    case 7:
        DGModelessClose(dialogID);
        OpenUpdatesPage(item == 7);
        return item;
    case DG_CLOSEBOX:
        return DG_CLOSEBOX;
    default:
        return 0;
    }
}
