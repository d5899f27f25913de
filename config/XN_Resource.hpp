// Localized resource strings: the one way the add-on gets a text of its resource file.
#pragma once

#include "UniString.hpp"
#include "XN_String.hpp"

// First IDs of the localized string-list families; a family's list for language L is base + L.
#define XN_RES_MENU_TEXTS 32510
#define XN_RES_INFO_TEXTS 32530
#define XN_RES_GENERAL_TEXTS 32710

// String `index` of string list `resID` of the add-on's own resources. Never fails: a list or string
// missing in the current language is taken from the International list (base + 1); when that is
// missing too the result is "_ERR_NO_". Lists below 32710 are the add-on's own localized lists and
// are read only with `localized`; without it the result is "_ERR_DPT_" and no resource is read.
XN_String XN_Resource_GetString(short resID, long index, bool localized);

// The host's string of `text` (an empty one for the null string), for dialog and menu calls.
GS::UniString XN_ToUniString(const XN_String& text);
