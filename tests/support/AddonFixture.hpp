// Shared by the fixture add-ons, which are built as real add-ons are (no test framework in them): the
// attribute of their exports, setting a menu item's text, and the four entry points of a fixture with
// one menu whose items all go to one handler.
#pragma once

#include "ACAPinc.h"

#include <cstring>
#include <string>

#define FIXTURE_EXPORT extern "C" __attribute__((visibility("default")))

// Sets the text of item `item` of menu `menu`.
inline GSErrCode SetMenuItemText(short menu, Int32 item, const std::string& text) {
    API_MenuItemRef ref;
    std::memset(&ref, 0, sizeof ref);
    ref.menuResID = menu;
    ref.itemIndex = item;
    return ACAPI_Interface(APIIo_SetMenuItemTextID, &ref, const_cast<char*>(text.c_str()));
}

// The entry points of a fixture whose one menu, `id`, goes under Extras with `handler` for its items.
// clang-format off
#define FIXTURE_ONE_MENU_ENTRY_POINTS(id, handler) \
    FIXTURE_EXPORT API_AddonType CheckEnvironment(API_EnvirParams*) { return APIAddon_Normal; } \
    FIXTURE_EXPORT GSErrCode RegisterInterface() { return ACAPI_Register_Menu(id, 0, MenuCode_Extras, 0); } \
    FIXTURE_EXPORT GSErrCode Initialize() { return ACAPI_Install_MenuHandler(id, handler); } \
    FIXTURE_EXPORT GSErrCode FreeData() { return NoError; }
// clang-format on
