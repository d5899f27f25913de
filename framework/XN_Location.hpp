// XN_Location: a file-system location held as its absolute "/"-separated path.
//
// The stored path never ends with "/" (every setter drops one trailing "/"). The null string means
// "no location" and every operation treats it as absent; the empty string "" is a distinct value
// (the parent of a path without "/", or of the root).
#pragma once

#include "Location.hpp"
#include "XN_List.hpp"
#include "XN_String.hpp"

class XN_Location : public XN_String {
public:
    XN_Location() = default;
    explicit XN_Location(const XN_String& path) { Set(path); }

    // A null path makes the location null; one trailing "/" is dropped.
    void Set(const XN_String& path);
    // The host location's path; null when the host cannot give it.
    void Set(const IO::Location& location);

    // The host location of this path (the empty host location when null).
    operator IO::Location() const;

    // Replaces the last path component (everything after the last "/", or the whole path when it
    // holds no "/") by `name`, read in Encoding_SystemDefault. A null location or name: no change.
    void SetLastName(const char* name);

    // The path as the host's UTF-8 POSIX path, decoded; null when the host fails.
    XN_String GetPOSIXPath() const;

    // True only when the location names an existing folder, asked of its parent folder: a location
    // directly under the root ("/a") has the parent "" and is therefore never a folder.
    bool IsFolder() const;

    // The add-on's own file, or with `parentFolder` the text before its last "/" ("" when there
    // is none). Null when the host does not know the add-on's file.
    static XN_Location AddOnLocation(bool parentFolder);

    // Appends this folder's files (of all subfolders too with `recursive`, depth first, each
    // subfolder's files right where the subfolder comes) to `result`, in the host's order. With
    // `extensions`, only files whose extension (the text after a "." that follows the last "/" and
    // is not the last character; "" otherwise) equals one of the entries ignoring case; an empty
    // list lets every file pass. False when this folder cannot be opened or its enumeration fails.
    bool GetFilesInFolder(XN_List<XN_String>* extensions, bool recursive, XN_List<XN_Location>* result) const;
    // The same for subfolders: appends them (all levels with `recursive`), never files.
    bool GetSubFolders(bool recursive, XN_List<XN_Location>* result) const;

private:
    struct Enumeration;
    bool Enumerate(Enumeration& context) const;
};
