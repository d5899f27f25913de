// XN_Location: path operations on the text, folder questions and enumeration through the host.
#include "XN_Location.hpp"

#include "ACAPinc.h"
#include "Folder.hpp"

namespace {

// The text of `path` before its last "/" and after it; "" and the whole path when there is none.
void SplitAtLastSlash(const XN_String& path, XN_String& parent, XN_String& name) {
    const unsigned int slash = path.LastIndexOf('/');
    if (slash == XN_String::kNotFound) {
        parent = "";
        name = path;
        return;
    }
    parent = slash == 0 ? XN_String("") : path.Substring(0, slash);
    name = path.Substring(slash + 1);
}

XN_String ExtensionOf(const XN_String& path) {
    const unsigned int dot = path.LastIndexOf('.');
    const unsigned int slash = path.LastIndexOf('/');
    const bool afterSlash = slash == XN_String::kNotFound || dot > slash;
    if (dot == XN_String::kNotFound || !afterSlash || dot + 1 == path.GetLength())
        return XN_String("");
    return path.Substring(dot + 1);
}

bool PassesFilter(const XN_String& path, XN_List<XN_String>* extensions) {
    if (extensions == nullptr || extensions->count == 0)
        return true;
    const XN_String extension = ExtensionOf(path);
    for (long i = 0; i < extensions->count; ++i)
        if (XN_String::CompareIgnoreCase(extension, 0, (*extensions)[i], 0, 0) == 0)
            return true;
    return false;
}

GS::UniString ToUniString(const XN_String& text) {
    return text.IsNull() ? GS::UniString() : GS::UniString(text.GetBuffer(), text.GetLength());
}

} // namespace

// What one enumeration collects; shared by the callback down the recursion.
struct XN_Location::Enumeration {
    bool recursive;
    XN_List<XN_Location>* result;
    XN_List<XN_String>* extensions; // null: no filter; always null for subfolders
    bool wantFolders;

    static bool CCALL Visit(const IO::Folder& folder, const IO::Name& name, bool isFolder, void* data);
};

void XN_Location::Set(const XN_String& path) {
    if (path.IsNull()) {
        SetToNullString();
        return;
    }
    const unsigned int length = path.GetLength();
    XN_String::operator=(length > 0 && path.UCharAt(length - 1) == '/' ? path.Substring(0, length - 1)
                                                                       : path);
}

void XN_Location::Set(const IO::Location& location) {
    GS::UniString path;
    if (location.ToPath(&path) != NoError) {
        SetToNullString();
        return;
    }
    const unsigned int length = path.GetLength();
    Set(length == 0 ? XN_String("") : XN_String(path.ToUStr(), length));
}

XN_Location::operator IO::Location() const {
    return IO::Location(ToUniString(*this));
}

void XN_Location::SetLastName(const char* name) {
    if (IsNull() || name == nullptr)
        return;
    const unsigned int slash = LastIndexOf('/');
    Set(slash == kNotFound ? XN_String(name) : Substring(0, slash + 1) + XN_String(name));
}

XN_String XN_Location::GetPOSIXPath() const {
    IO::Path path;
    if (IO::Location(*this).ToUTF8POSIXPath(&path) != NoError)
        return XN_String();
    return XN_String(path.ToCStr(), Encoding_UTF8);
}

bool XN_Location::IsFolder() const {
    if (IsNull())
        return false;
    XN_String parent;
    XN_String name;
    SplitAtLastSlash(*this, parent, name);
    const IO::Folder folder{IO::Location(ToUniString(parent))};
    if (folder.GetStatus() != NoError)
        return false;
    IO::Folder::EntryType type;
    return folder.GetType(IO::Name(ToUniString(name)), &type) == NoError && type == IO::Folder::FolderEntry;
}

XN_Location XN_Location::AddOnLocation(bool parentFolder) {
    IO::Location own;
    XN_Location location;
    if (ACAPI_GetOwnLocation(&own) != NoError)
        return location;
    location.Set(own);
    if (parentFolder && !location.IsNull()) {
        XN_String parent;
        XN_String name;
        SplitAtLastSlash(location, parent, name);
        location.XN_String::operator=(parent);
    }
    return location;
}

bool XN_Location::GetFilesInFolder(XN_List<XN_String>* extensions, bool recursive,
                                   XN_List<XN_Location>* result) const {
    Enumeration context{recursive, result, extensions, false};
    return Enumerate(context);
}

bool XN_Location::GetSubFolders(bool recursive, XN_List<XN_Location>* result) const {
    Enumeration context{recursive, result, nullptr, true};
    return Enumerate(context);
}

bool XN_Location::Enumerate(Enumeration& context) const {
    if (context.result == nullptr)
        return false;
    const IO::Folder folder{IO::Location(*this)};
    if (folder.GetStatus() != NoError)
        return false;
    return folder.Enumerate(Enumeration::Visit, &context) == NoError;
}

bool CCALL XN_Location::Enumeration::Visit(const IO::Folder& folder, const IO::Name& name, bool isFolder,
                                           void* data) {
    Enumeration& context = *static_cast<Enumeration*>(data);
    IO::Location folderLocation;
    folder.GetLocation(&folderLocation);
    const IO::Location entryLocation(folderLocation, name);
    XN_Location entry;
    entry.Set(entryLocation);
    if (isFolder) {
        if (context.wantFolders)
            context.result->AddData(entry, -1);
        if (context.recursive) {
            const IO::Folder subfolder(entryLocation);
            if (subfolder.GetStatus() != NoError || subfolder.Enumerate(Visit, data) != NoError)
                return false;
        }
        return true;
    }
    if (!context.wantFolders && PassesFilter(entry, context.extensions))
        context.result->AddData(entry, -1);
    return true;
}
