// The add-on's menu: one menu per language (resources 32500 + language), six items whose texts come
// from the string lists 32510 + language, and the command dispatch.
#pragma once

#include "APIdefs.h"
#include "XN_String.hpp"

#define XN_MENU_BASE 32500
#define XN_MENU_ITEM_COUNT 6

// The items, top to bottom.
enum XN_MenuItem {
    kMenuItem_About = 1,
    kMenuItem_Nothing = 2,
    kMenuItem_Language = 3,
    kMenuItem_UpdateNow = 4,
    kMenuItem_AutoUpdate = 5,
    kMenuItem_Information = 6
};

// Sets the text of one item through the host; returns the host's result. A null string sets "".
GSErrCode XN_Menu_SetText(short menuResID, int itemIndex, const XN_String& text);

// Sets all six items of all seven language menus from the current language's list (failures ignored).
void MenuUpdate();

// Runs one command of menu `menuID`. A command that belongs to another menu is ignored entirely.
// The first command of a host run re-reads the language first; every command clears gXN_AskLanguage.
void MenuCommandHandler(const API_MenuParams* params, const short& menuID);

// The handlers installed for the language menus 32500..32505. The Russian menu (32506) has none:
// its items reach no handler, as in the add-on's released versions.
GSErrCode MenuCommandHandler_ITA(const API_MenuParams* params);
GSErrCode MenuCommandHandler_INT(const API_MenuParams* params);
GSErrCode MenuCommandHandler_FRA(const API_MenuParams* params);
GSErrCode MenuCommandHandler_GER(const API_MenuParams* params);
GSErrCode MenuCommandHandler_ESP(const API_MenuParams* params);
GSErrCode MenuCommandHandler_JAP(const API_MenuParams* params);
