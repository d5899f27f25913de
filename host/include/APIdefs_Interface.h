// Menu items as the add-on addresses them through ACAPI_Interface.
#pragma once

#include "GSRoot.hpp"

// One item of one of the add-on's menus. itemIndex 1 is the first item after the title string.
typedef struct {
    short menuResID;
    short filler_1;
    Int32 itemIndex;
    Int32 filler_2[2];
} API_MenuItemRef;

// Menu item flags (GSFlags) read and written with 'GMIF' and 'SMIF'.
#define API_MenuItemDisabled 0x00000001
#define API_MenuItemChecked 0x00000002

// The function codes of ACAPI_Interface.
typedef enum {
    APIIo_GetMenuItemFlagsID = 'GMIF', // par1 const API_MenuItemRef*, par2 GSFlags* (out)
    APIIo_SetMenuItemFlagsID = 'SMIF', // par1 const API_MenuItemRef*, par2 GSFlags* (in)
    APIIo_GetMenuItemTextID = 'GMIT',  // par1 ref, par2 char* (out, 256 bytes) or par3 GS::UniString*
    APIIo_SetMenuItemTextID = 'SMIT', // par1 ref, par2 const char* or, when par2 is null, par3 GS::UniString*
    APIIo_AddMenuItemTextID = 'AMIT'  // par1 ref, par2 const char* or par3 GS::UniString*
} API_InterfaceID;
