// The settings store: small key/value settings kept between host runs, in two independent stores.
//
// Store 1 is the add-on's own ("<sett_ADDON_SETTINGS_FILE_NAME>.cfg"); any other type selects the
// store shared by every add-on of the suite ("Quillane.cfg"). Both files lie in the host's shared
// folder (special location 14). A store is held in memory as a list of records, loaded from its
// file on first use or on demand, changed in memory, and written back whole.
//
// The file format is described in XN_SettingsFile.hpp. Every add-on of the suite reads the file into
// a fixed buffer of XN_SETTINGS_IMAGE_MAX bytes, so no larger image is ever written.
//
// Everything here runs on the host's user-interface thread; the shared file is rewritten by every
// add-on without locking (the last writer wins).
#pragma once

#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

// Size of the buffer every add-on of the suite reads a settings image into.
#define XN_SETTINGS_IMAGE_MAX 100000

// Selects a store; passed as a 32-bit value. Only 1 selects the add-on's own store.
enum XN_AddonSettings_Type : int {
    XN_AddonSettings_AllAddons = 0,
    XN_AddonSettings_Addon = 1,
};

// One record of a store. Keys compare exactly (case-sensitive).
struct XN_Setting {
    XN_String key;
    XN_String value;

    XN_Setting();
    XN_Setting(const XN_String& key, const XN_String& value);
};

// The folder of both settings files and of the suite's marker files: the host's shared folder
// (special location 14). Returns 0, or the host's error (`folder` is then unchanged).
GSErrCode XN_AddonSettings_GetFolder(XN_Location& folder);

// Where the store's file lies. Returns 0, or the host's error when it cannot give the shared folder
// (`location` is then unchanged).
GSErrCode XN_AddonSettings_GetLocation(XN_AddonSettings_Type type, XN_Location& location);

// Reads the store's file. With onlyIfNotLoaded and the store already loaded, returns true at once.
// Otherwise the store is emptied and filled from the file: a missing or empty file gives an empty
// store and true. A malformed record, an unreadable file or one larger than XN_SETTINGS_IMAGE_MAX
// gives false, keeping the records parsed before the fault, and the store is not marked loaded.
// A file with a malformed record is first copied beside itself (XN_SettingsFile_KeepCopy): the
// next save writes back only the records before the fault.
bool XN_AddonSettings_Load(XN_AddonSettings_Type type, bool onlyIfNotLoaded);

// Writes the whole store to its file, replacing it atomically (a crash never leaves a torn file) and
// keeping its link, mode and owner (XN_SettingsFile_Write). False, with the file untouched, when the
// image would exceed XN_SETTINGS_IMAGE_MAX, the file is read-only or not a regular file, or any step
// of the write fails.
bool XN_AddonSettings_Save(XN_AddonSettings_Type type);

// Looks `key` up. With `load` and the store not loaded yet, loads it first (false if that fails).
// Copies the value into *value when non-null; false when the key is absent.
bool XN_AddonSettings_Get(XN_AddonSettings_Type type, XN_String key, XN_String* value, bool load);
// The value, or "" when the key is absent or loading failed.
XN_String XN_AddonSettings_Get(XN_AddonSettings_Type type, XN_String key, bool load);
// As Get, then the value parsed with XN_String::ToLong; *value is untouched when false.
bool XN_AddonSettings_GetLong(XN_AddonSettings_Type type, XN_String key, long* value, bool load);
// ToLong of the value ("" when absent, so what ToLong gives for "").
long XN_AddonSettings_GetLong(XN_AddonSettings_Type type, XN_String key, bool load);
// As GetLong with XN_String::ToDouble.
bool XN_AddonSettings_GetDouble(XN_AddonSettings_Type type, XN_String key, double* value, bool load);
double XN_AddonSettings_GetDouble(XN_AddonSettings_Type type, XN_String key, bool load);

// Replaces the value of an existing key; appends a new record when absent and `create`. Returns true
// also when nothing was stored: callers rely on that. Only a key the file cannot carry (empty, or
// with ":", a line break or a 0 unit) is refused: false, nothing changes. Neither loads nor saves.
bool XN_AddonSettings_Set(XN_AddonSettings_Type type, XN_String key, XN_String value, bool create);
// Set with the decimal text of `value`.
bool XN_AddonSettings_SetLong(XN_AddonSettings_Type type, XN_String key, long value, bool create);
// Set with XN_String::DoubleToString(value, 0, 0).
bool XN_AddonSettings_SetDouble(XN_AddonSettings_Type type, XN_String key, double value, bool create);
// Load (only if not loaded), Set, Save: the one call that persists a change at once. Returns what
// Save returns; false without saving when Set refuses the key.
bool XN_AddonSettings_LoadSetSave(XN_AddonSettings_Type type, XN_String key, XN_String value, bool create);

// Deletes the first record with `key` from memory; false when there is none. Does not save.
bool XN_AddonSettings_Remove(XN_AddonSettings_Type type, XN_String key);
// Empties the store in memory; the loaded flag stays as it is and nothing is saved.
void XN_AddonSettings_Clear(XN_AddonSettings_Type type);
// Number of records in memory (never loads).
long XN_AddonSettings_GetCount(XN_AddonSettings_Type type);
// Copies out record `index` (each part only when its pointer is non-null); false outside
// 0..count-1. Never loads.
bool XN_AddonSettings_Get(XN_AddonSettings_Type type, long index, XN_String* key, XN_String* value);
