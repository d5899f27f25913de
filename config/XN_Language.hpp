// The add-on's interface language: the current choice, its reading and writing through the settings
// store, the check against the languages this add-on supports, and the dialog that lets the user pick.
//
// Language indexes, in table order: 0 ita (Italian), 1 int (International English, the default),
// 2 fra, 3 ger, 4 spa, 5 jap, 6 rus. Localized string lists lie at their base number + the index.
// Everything here runs on the host's user-interface thread.
#pragma once

#include "XN_String.hpp"

// Number of interface languages and entries of gXN_Languages_Suffixes.
#define XN_LANGUAGE_COUNT 7

// The current language index; 1 until the first XN_Language_Read.
extern short gXN_Language;
// While true the menu's language command does nothing; the menu handler clears it at every command.
extern bool gXN_AskLanguage;
// The file suffixes of the languages, indexed by language: "ita", "int", "fra", "ger", "spa", "jap",
// "rus". They are the values stored under "Language_str".
extern const XN_String gXN_Languages_Suffixes[XN_LANGUAGE_COUNT];

// Sets gXN_Language from the settings. With reload, the shared store is first read again from disk
// (another add-on of the suite may have rewritten it). "Language_str" (a suffix, any case) wins;
// without it the older numeric "Language" is used. Unknown or unsupported values give 1. Returns
// false only when neither key exists (the language is then 1).
bool XN_Language_Read(bool reload);

// Stores the current language as "Language_str" and saves the store at once. An index outside the
// table (7 or more, or negative) is first reset to 1. After storing, an unsupported language falls back to 1
// in memory only.
void XN_Language_Write();

// True when "Language_str" or "Language" is present in the language's store (loaded on demand).
bool XN_Language_Exists();

// Falls back to 1 when the current language is not one this add-on supports (indexes 5 and 6 need
// their suffix in sett_ADDON_SUPP_EXTRA_LANGUAGES).
void XN_Language_CheckSupportedLanguage();

// Runs the modal language dialog. `info` (the add-on's version text) travels with the dialog but is
// not shown. Returns true when the user confirmed with OK; a changed language is then stored.
bool XN_Dlg_Language(const XN_String& info);
