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

// Modeless windows (palettes) registered with ACAPI_RegisterModelessWindow: what the host asks of
// them, and in which windows they stay enabled.
typedef enum {
    APIPalMsg_ClosePalette = 1,
    APIPalMsg_HidePalette_Begin = 2,
    APIPalMsg_HidePalette_End = 3,
    APIPalMsg_DisableItems_Begin = 4,
    APIPalMsg_DisableItems_End = 5,
    APIPalMsg_OpenPalette = 6,
    APIPalMsg_IsPaletteVisible = 7
} API_PaletteMessageID;

#define API_PalEnabled_FloorPlan 0x00000001
#define API_PalEnabled_Section 0x00000002
#define API_PalEnabled_3D 0x00000004
#define API_PalEnabled_SelOnly 0x00000008
#define API_PalEnabled_Detail 0x00000010
#define API_PalEnabled_Layout 0x00000020
#define API_PalEnabled_Worksheet 0x00000040
#define API_PalEnabled_Elevation 0x00000080
#define API_PalEnabled_InteriorElevation 0x00000100

// Called by the host about a registered modeless window, on the user-interface thread.
typedef GSErrCode __ACENV_CALL APIPaletteControlCallBackProc(Int32 referenceID,
                                                             API_PaletteMessageID messageID,
                                                             GS::IntPtr param);
