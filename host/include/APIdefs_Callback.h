// Callbacks the host calls in the add-on.
#pragma once

#include "APIdefs_Interface.h"

// What a menu handler receives: the item that was chosen.
typedef struct {
    API_MenuItemRef menuItemRef;
} API_MenuParams;

// A menu handler: called on the host's user-interface thread when an item of the menu it was
// installed for is chosen; the pointer is valid during the call only. Returns NoError or an error code.
typedef GSErrCode __ACENV_CALL APIMenuCommandProc(const API_MenuParams* menuParams);
