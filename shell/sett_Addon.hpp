// The add-on's identity: the build-time constants that make this add-on of the suite itself. The
// framework's shared code reads them; every other add-on of the suite has its own copy of this file.
#pragma once

// Name registered with the host and used in titles and library lookups.
inline constexpr char sett_ADDON_NAME[32] = "MoravelLibrary";
// Description registered with the host.
inline constexpr char sett_ADDON_NAME_EXTENDED_STRING[32] = "MoravelLibrary 19.0 (AC190)";
// Base name of the add-on's own settings file and presence markers.
inline constexpr char sett_ADDON_SETTINGS_FILE_NAME[32] = "MoravelLibrary_190";
// 1: the language is kept in the add-on's own settings file rather than the suite's shared one.
inline constexpr unsigned char sett_ADDON_HAS_OWN_LANGUAGE = 1;
// The languages the language dialog offers, as space-separated suffixes.
inline constexpr char sett_ADDON_SHOWED_LANGUAGES[] = "ita int";
// Languages supported beyond the five standard ones (suffixes), none here. XN_EXTRA_LANGUAGES gives
// them to a build that shows every language of the resources (the pictures of the dialogs).
#ifdef XN_EXTRA_LANGUAGES
inline constexpr char sett_ADDON_SUPP_EXTRA_LANGUAGES[] = XN_EXTRA_LANGUAGES;
#else
inline constexpr char sett_ADDON_SUPP_EXTRA_LANGUAGES[] = "";
#endif
// 1: only the "plus" versions file applies to this add-on.
inline constexpr unsigned char sett_ADDON_ONLY_PLUS_VERSION = 0;

// Version texts, 8-bit in the system's default encoding.
// The identity line compared with the update server's versions file.
inline constexpr char kAddon_VersionLine[] = "MoravelLibrary 19.0.4.2200 (AC190) 03/08/2018";
// The suite's library name given to the update service.
inline constexpr char kAddon_LibraryName[] = "Moravel";
// Shown in the language dialog.
inline constexpr char kAddon_LanguageDialogVersion[] = "Version: Norvane Develop (03/08/2018)";
