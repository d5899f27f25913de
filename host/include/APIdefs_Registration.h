// Registration: what CheckEnvironment answers and where a menu goes.
#pragma once

#include "GSRoot.hpp"

// The answer of CheckEnvironment. Only APIAddon_DontRegister keeps the add-on out of the host.
typedef enum {
    APIAddon_DontRegister = 0,
    APIAddon_Normal = 1,
    APIAddon_Preload = 2, // loaded at host start and kept registered
    APIAddon_TypeReg = 3,
    APIAddon_FuncLibDll = 4,
    APIAddon_VBServer = 5,
    APIAddon_Automation = 6,
    APIAddon_Customizing = 7,
    APIAddon_Unknown = 9999
} API_AddonType;

// Where ACAPI_Register_Menu places a menu in the host's menu tree.
typedef enum {
    MenuCode_UserDef = 0, // a menu of its own: the first string is its title
    MenuCode_File = 1,
    MenuCode_Edit1 = 2,
    MenuCode_Edit2 = 3,
    MenuCode_Edit3 = 4,
    MenuCode_Tools = 5,
    MenuCode_Options1 = 6,
    MenuCode_Options2 = 7,
    MenuCode_Image = 8,
    MenuCode_Calculate = 9,
    MenuCode_TeamWork = 10,
    MenuCode_Display = 11,
    MenuCode_Palettes = 12,
    MenuCode_Extras = 13, // the Design > Design Extras submenu
    MenuCode_Hotlink = 14,
    MenuCode_GDLObjects = 15,
    MenuCode_3DView = 16,
    MenuCode_DocExtras = 17,
    MenuCode_Interoperability = 18
} APIMenuCodeID;

#define MenuFlag_Default 0x0000
#define MenuFlag_SeparatorBefore 0x0001
#define MenuFlag_SeparatorAfter 0x0002
#define MenuFlag_InsertIntoSame 0x0004
