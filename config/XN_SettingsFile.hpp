// The settings file format, shared by the settings store, the suite's marker files and the
// xn-settings tool, so that what one writes the others read.
//
// A plain image is a sequence of records "$" key ": " value LF in the default 8-bit encoding, where
// every line break inside a value (LF, CR, or CR LF) is followed by "#". On disk every byte has its
// two 4-bit halves exchanged. Every add-on of the suite reads an image into a fixed buffer of
// XN_SETTINGS_IMAGE_MAX bytes.
#pragma once

#include "XN_AddonSettings.hpp"

#include <string>

// Exchanges the two 4-bit halves of every byte; its own inverse.
void XN_SettingsFile_ExchangeHalves(char* bytes, unsigned long size);

// Appends the plain image of `records` to `image`. Keys are written as they are (a key with ":" is
// read back cut at it). False, with `image` unchanged, when the image would exceed
// XN_SETTINGS_IMAGE_MAX bytes.
bool XN_SettingsFile_BuildImage(const XN_List<XN_Setting>& records, std::string& image);

// Parses the plain image bytes[0..size) and appends its records to `records`; bytes[size] must be
// a 0 byte (the reader's end mark). A record cut by the end of the image is dropped without error.
// On a malformed record returns false with *badOffset (when non-null) at the byte where parsing
// stopped; the records before it are kept.
bool XN_SettingsFile_ParseImage(const char* bytes, unsigned long size, XN_List<XN_Setting>& records,
                                unsigned long* badOffset);

// Index of the first record whose key is exactly `key` (case-sensitive), or -1.
long XN_SettingsFile_IndexOf(XN_List<XN_Setting>& records, const XN_String& key);

enum XN_SettingsFile_Status {
    XN_SettingsFile_OK = 0,
    XN_SettingsFile_ReadError, // the host could not read the file
    XN_SettingsFile_TooLarge,  // larger than XN_SETTINGS_IMAGE_MAX: only its first part was parsed
    XN_SettingsFile_Malformed, // a malformed record (at *badOffset)
};

// Reads the scrambled file and appends its records. A missing file reads as empty (OK, *exists
// false); anything else at the path that cannot be read, a folder among them, is a ReadError. On TooLarge the
// records of the first XN_SETTINGS_IMAGE_MAX bytes are appended.
XN_SettingsFile_Status XN_SettingsFile_Read(const XN_Location& file, XN_List<XN_Setting>& records,
                                            bool* exists, unsigned long* badOffset);

// Writes `records` scrambled to `file`, replacing it atomically: the image goes to a temporary file
// in the same folder, which is then renamed over `file`. False, with `file` untouched, when the
// image is too large or any step fails.
bool XN_SettingsFile_Write(const XN_Location& file, const XN_List<XN_Setting>& records);
