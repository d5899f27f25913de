// XN_Library and XN_LibPart: the suite's object library in the host. XN_Library makes sure the
// suite's library folder (kFullLibraryStr, beside the add-on) is one of the host's active libraries,
// and lets the user pick a library folder; XN_LibPart turns a library part's name or file into the
// host's index and back. Everything asks the host afresh and keeps no state; every call runs on the
// host's user-interface thread, inside a menu command or another host callback.
//
// Locations the host allocates in an API_LibPart are deleted before returning, except in the record
// handed back by LibPart and Search on success, whose `location` the caller deletes.
#pragma once

#include "APIdefs.h"
#include "XN_List.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

// The suite's folders beside the add-on: the object library, the documentation, the data.
inline constexpr char kFullLibraryStr[] = "MVL_Library";
inline constexpr char kDocumentationStr[] = "Documentation";
inline constexpr char kz_DATAStr[] = "z_DATA";

// Search's answer for a part the host knows only as a missing definition; no host error has it.
constexpr int kXN_LibPart_Missing = -7003;

class XN_Library {
public:
    // Makes sure the suite's library folder is active. With `checkLoaded`, true at once when an
    // active library is that folder, or any folder named kFullLibraryStr, ignoring case. A library
    // folder that does not exist is not an error: true, and the host is not asked. Otherwise the
    // folder is added ('ALIB'): true when the host accepts it.
    static bool Load(bool checkLoaded);
    // Lets the user pick a folder (title `prompt`, after the add-on's name and ": " with
    // `withAddonName`) and adds it, whatever its name. False when cancelled or refused.
    static bool Ask(const XN_String& prompt, bool withAddonName);
    // Replaces `libraries` by the host's active libraries: the embedded library first, the others in
    // the host's order. False, with the list empty, on a host error.
    static bool Libraries(XN_List<XN_Location>& libraries);
};

class XN_LibPart {
public:
    // Finds the part named like `file`'s name: the text after its last "/" up to the last "." of the
    // whole path (so "/a.b/c" gives the empty name, which is not found).
    static bool LibPart(const XN_Location& file, API_LibTypeID type, API_LibPart& part);
    // Finds the part `name` with its extension (after the last ".") taken off: Door.gsm and Door
    // both find Door, A.B.gsm finds A.B.
    static bool LibPart(const XN_String& name, API_LibTypeID type, API_LibPart& part);
    // Fetches the part of `index`; false for a missing definition.
    static bool LibPart(const long& index, API_LibPart& part);
    // The one host search: clears `part`, asks for `name` (at most 255 units) and `type`. 0, the
    // host's error unchanged, or kXN_LibPart_Missing (the location already deleted).
    static int Search(const XN_String& name, API_LibTypeID type, API_LibPart& part);
    // The index of the part `name` (as LibPart), -1 when not found.
    static long Index(const XN_String& name, API_LibTypeID type);
    // Index, then again after XN_Library::Load(true), then after asking the user for the library
    // folder (general string 13 as the title); -1 when still not found or the user cancels.
    static long IndexFullLib(const XN_String& name, API_LibTypeID type);
    // The same with XN_Library::Load(false): the suite's folder is handed to the host unchecked.
    static long IndexFullLibNoCheckLibs(const XN_String& name, API_LibTypeID type);
    // The file of the part of `index`.
    static bool Location(long index, XN_Location& file);
    // Where the host has the part named like `file` (as LibPart by file).
    static bool Location(const XN_Location& file, API_LibTypeID type, XN_Location& found);
};
