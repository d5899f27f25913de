#include "XN_Menu.hpp"

#include "ACAPinc.h"
#include "CDlgAbout.hpp"
#include "XN_AddonUpdate.hpp"
#include "CDlgInfo.hpp"
#include "XN_Language.hpp"
#include "XN_Resource.hpp"
#include "sett_Addon.hpp"

#include <cstring>

namespace {

constexpr short kLanguageMenuCount = 7;

// The command of one item. About, Language, the update commands and Information open dialogs and
// services that are wired in here as they are built; until then their items do nothing.
void RunCommand(Int32 item) {
    switch (item) {
    case kMenuItem_Language:
        // The registered menu stays the old language's until the host restarts; its texts change now.
        if (!gXN_AskLanguage && XN_Dlg_Language(XN_String(kAddon_LanguageDialogVersion))) {
            XN_Language_Read(true);
            MenuUpdate();
        }
        break;
    case kMenuItem_About: {
        CDlgAbout about;
        about.ShowDialog();
        break;
    }
    case kMenuItem_Information: {
        CDlgInfo info;
        info.ShowDialog();
        break;
    }
    case kMenuItem_UpdateNow:
        XN_AddonUpdate_CheckForUpdate(3, true, XN_String(kAddon_VersionLine), XN_String(kAddon_LibraryName));
        break;
    case kMenuItem_AutoUpdate:
        XN_AddonUpdate_SwitchAutoUpdateValue(XN_MENU_BASE, kMenuItem_AutoUpdate);
        break;
    default:
        break;
    }
}

} // namespace

GSErrCode XN_Menu_SetText(short menuResID, int itemIndex, const XN_String& text) {
    API_MenuItemRef ref;
    std::memset(&ref, 0, sizeof ref);
    ref.menuResID = menuResID;
    ref.itemIndex = itemIndex;
    GS::UniString unicode = XN_ToUniString(text);
    return ACAPI_Interface(APIIo_SetMenuItemTextID, &ref, nullptr, &unicode);
}

void MenuUpdate() {
    for (short menu = 0; menu < kLanguageMenuCount; ++menu)
        for (int item = 1; item <= XN_MENU_ITEM_COUNT; ++item)
            XN_Menu_SetText(
                static_cast<short>(XN_MENU_BASE + menu), item,
                XN_Resource_GetString(static_cast<short>(XN_RES_MENU_TEXTS + gXN_Language), item, true));
}

void MenuCommandHandler(const API_MenuParams* params, const short& menuID) {
    // False at load, true once the first command of this host run has completed.
    static bool firstTime = false;
    if (params->menuItemRef.menuResID != menuID)
        return;
    ACAPI_KeepInMemory(true);
    if (!firstTime) {
        XN_Language_Read(true);
        gXN_AskLanguage = false;
    }
    const Int32 item = params->menuItemRef.itemIndex;
    RunCommand(item);
    gXN_AskLanguage = false;
    if (!firstTime) {
        // The automatic update check runs once per host run, after the first command, unless that was
        // the manual check. Its alert may deliver another command, which then has set firstTime.
        if (item != kMenuItem_UpdateNow) {
            XN_AddonUpdate_AutoUpdate(3, XN_String(kAddon_VersionLine), XN_String(kAddon_LibraryName));
            if (firstTime)
                return;
        }
        firstTime = true;
    }
}

// Each handler answers NoError, as the host expects of a command that ran; an exception (memory
// exhaustion) never crosses into the host: the command is simply cut short.
#define XN_MENU_HANDLER(name, menuID)                                                                        \
    GSErrCode name(const API_MenuParams* params) {                                                           \
        try {                                                                                                \
            MenuCommandHandler(params, menuID);                                                              \
        } catch (...) {                                                                                      \
        }                                                                                                    \
        return NoError;                                                                                      \
    }

XN_MENU_HANDLER(MenuCommandHandler_ITA, 32500)
XN_MENU_HANDLER(MenuCommandHandler_INT, 32501)
XN_MENU_HANDLER(MenuCommandHandler_FRA, 32502)
XN_MENU_HANDLER(MenuCommandHandler_GER, 32503)
XN_MENU_HANDLER(MenuCommandHandler_ESP, 32504)
XN_MENU_HANDLER(MenuCommandHandler_JAP, 32505)
