// A test add-on built on the shell's library: its menu items run the shell's functions inside a real
// host, with inputs the test chooses, and show the results as item texts.
#include "AddonFixture.hpp"
#include "ResourceCases.hpp"
#include "XN_AddonSettings.hpp"
#include "XN_Language.hpp"
#include "XN_Location.hpp"
#include "XN_Menu.hpp"
#include "XN_Resource.hpp"

namespace {

constexpr short kProbeMenu = 32500;

// Calls the shell's dispatcher as the International menu's handler would, with any menu and item.
void SendCommand(short menuResID, Int32 itemIndex) {
    API_MenuParams params;
    std::memset(&params, 0, sizeof params);
    params.menuItemRef.menuResID = menuResID;
    params.menuItemRef.itemIndex = itemIndex;
    MenuCommandHandler(&params, 32501);
}

GSErrCode ProbeMenu(const API_MenuParams* params) {
    const Int32 item = params->menuItemRef.itemIndex;
    if (item <= kResourceCaseCount) {
        const ResourceCase& c = kResourceCases[item - 1];
        gXN_Language = c.language;
        const XN_String text = XN_Resource_GetString(c.resID, c.index, c.localized);
        gXN_Language = 1;
        XN_Menu_SetText(kProbeMenu, item, text);
    } else if (item == kResourceCaseCount + 1) {
        SendCommand(32502, 1);
    } else if (item == kResourceCaseCount + 2) {
        SendCommand(32501, 7);
        XN_Menu_SetText(kProbeMenu, item, XN_AddonSettings_Get(XN_AddonSettings_AllAddons, "Probe", false));
    } else {
        XN_Menu_SetText(kProbeMenu, item,
                        XN_Location::AddOnLocation(true) + "|" + XN_Location::AddOnLocation(false));
    }
    return NoError;
}

} // namespace

FIXTURE_ONE_MENU_ENTRY_POINTS(kProbeMenu, ProbeMenu)
