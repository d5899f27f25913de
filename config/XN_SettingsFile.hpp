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

// Appends the plain image of `records` to `image`. False, with `image` unchanged, when the image would
// exceed XN_SETTINGS_IMAGE_MAX bytes or a key would be written empty, which the reader refuses.
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
    XN_SettingsFile_ReadError, // the file could not be read, or is not a regular file
    XN_SettingsFile_TooLarge,  // larger than XN_SETTINGS_IMAGE_MAX: only its first part was parsed
    XN_SettingsFile_Malformed, // a malformed record (at badOffset)
};

// What a read found, beyond its status.
struct XN_SettingsFile_Report {
    bool exists = false;         // something is at the path
    unsigned long badOffset = 0; // Malformed: the byte where parsing stopped
    std::string reason;          // why the status is not OK, in words (the system's text for its errors)
};

// Whether the format can carry `key`: not empty, no ":" (the reader cuts the key there), no line
// break and no 0 unit. Setters refuse any other key, so that the writer never writes what the reader
// refuses or reads back otherwise.
bool XN_SettingsFile_IsStorableKey(const XN_String& key);

// Reads the scrambled file and appends its records. A missing file reads as empty (OK, exists
// false). Only a regular file (or a link to one) is read; it is opened without blocking, so a FIFO
// or a device at the path is a ReadError, never a hang. On TooLarge the records of the first
// XN_SETTINGS_IMAGE_MAX bytes are appended.
XN_SettingsFile_Status XN_SettingsFile_Read(const XN_Location& file, XN_List<XN_Setting>& records,
                                            XN_SettingsFile_Report* report = nullptr);

// Writes `records` scrambled to `file`, keeping the file as it was, only newer: a symbolic link stays
// a link and its target is written; mode and owner are kept where the writer may. The image goes to
// a temporary file in the target's folder, which is synced and renamed over it (a crash leaves the
// old file or the new one). When the folder takes no new file, or the new file could not get the old
// one's owner, the file is written in place. Refused, with the file untouched: an image over
// XN_SETTINGS_IMAGE_MAX, a key the reader would refuse, a file that is read-only or not a regular
// file. On false `*why` (when non-null) says why, and no temporary file is left behind.
bool XN_SettingsFile_Write(const XN_Location& file, const XN_List<XN_Setting>& records,
                           std::string* why = nullptr);

// Where the copy of an unreadable settings file is kept: beside it, with ".unreadable" added.
XN_String XN_SettingsFile_CopyName(const XN_Location& file);

// Copies `file` as it is to XN_SettingsFile_CopyName, replacing an earlier copy. Made before a store
// whose file does not parse is written back with only the records before the fault.
bool XN_SettingsFile_KeepCopy(const XN_Location& file);
