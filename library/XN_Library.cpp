// The suite's object library in the host, library-part lookup, and the lookups with the user-facing
// alert of XN_General.
#include "XN_Library.hpp"

#include "ACAPinc.h"
#include "DGFolderDialog.hpp"
#include "XN_Dialog.hpp"
#include "XN_General.hpp"
#include "XN_Language.hpp"
#include "XN_Resource.hpp"
#include "sett_Addon.hpp"

#include <cstring>

namespace {

// General strings: the folder dialog's title, the alert of a part that stays unfound.
constexpr long kAskLibraryString = 13;
constexpr long kPartNotFoundString = 85;

XN_String GeneralString(long index) {
    return XN_Resource_GetString(static_cast<short>(XN_RES_GENERAL_TEXTS + gXN_Language), index, true);
}

bool EqualIgnoringCase(const XN_String& a, const XN_String& b) {
    return XN_String::CompareIgnoreCase(a, 0, b, 0, 0) == 0;
}

// The position of the last `unit` in `text`, XN_String::kNotFound when there is none. "." and "/"
// are the same unit in every 8-bit encoding, so no conversion is needed: lookups stay as cheap as the
// host's own search.
unsigned int LastUnit(const XN_String& text, unsigned short unit) {
    for (unsigned int i = text.GetLength(); i-- > 0;)
        if (text.GetBuffer()[i] == unit)
            return i;
    return XN_String::kNotFound;
}

// The text after the last "/"; the whole path without one.
XN_String LastComponent(const XN_String& path) {
    const unsigned int slash = LastUnit(path, '/');
    return slash == XN_String::kNotFound ? path : path.Substring(slash + 1);
}

// The add-on's folder, "/" and the library's name, with room reserved for all of it at once.
XN_String LibraryPath() {
    XN_String path = XN_Location::AddOnLocation(true);
    const XN_String name(kFullLibraryStr);
    path.SetSize(path.GetLength() + name.GetLength() + 2, true); // the separator and the terminator
    path += "/";
    path += name;
    return path;
}

bool AddLibrary(const XN_Location& folder) {
    IO::Location location = folder;
    return ACAPI_Environment(APIEnv_AddLibrariesID, &location) == NoError;
}

// The location a found part's record holds, which is then deleted.
void TakeLocation(API_LibPart& part, XN_Location* into) {
    if (into != nullptr && part.location != nullptr)
        into->Set(*part.location);
    else if (into != nullptr)
        into->SetToNullString();
    delete part.location;
    part.location = nullptr;
}

long IndexFullLib(const XN_String& name, API_LibTypeID type, bool checkLoaded) {
    long index = XN_LibPart::Index(name, type);
    if (index != -1)
        return index;
    XN_Library::Load(checkLoaded);
    index = XN_LibPart::Index(name, type);
    if (index != -1)
        return index;
    if (!XN_Library::Ask(GeneralString(kAskLibraryString), true))
        return -1;
    return XN_LibPart::Index(name, type);
}

bool GetIndex(long index, long& result, bool showAlert, const XN_String& message) {
    result = index;
    if (index >= 0)
        return true;
    if (showAlert)
        XN_Dialog::ShowAlert(-1, XN_String(""),
                             message.IsEmpty() ? GeneralString(kPartNotFoundString) : message, XN_String(""));
    return false;
}

} // namespace

bool XN_Library::Load(bool checkLoaded) {
    const XN_Location library(LibraryPath());
    XN_List<XN_Location> active;
    if (checkLoaded && Libraries(active))
        for (long i = active.GetCount() - 1; i >= 0; --i)
            if (EqualIgnoringCase(active[i], library) ||
                EqualIgnoringCase(LastComponent(active[i]), XN_String(kFullLibraryStr)))
                return true;
    // A suite installed without its library is not a failure here: the part that stays unfound tells.
    if (!library.IsFolder())
        return true;
    return AddLibrary(library);
}

bool XN_Library::Ask(const XN_String& prompt, bool withAddonName) {
    const XN_String title = withAddonName ? XN_String(sett_ADDON_NAME) + ": " + prompt : prompt;
    DG::FolderDialog dialog;
    if (!title.IsEmpty())
        dialog.SetTitle(XN_ToUniString(title));
    if (!dialog.Invoke())
        return false;
    XN_Location chosen;
    chosen.Set(dialog.GetFolder());
    return AddLibrary(chosen);
}

bool XN_Library::Libraries(XN_List<XN_Location>& libraries) {
    libraries.Reset();
    GS::Array<API_LibraryInfo> infos;
    Int32 embedded = -1;
    if (ACAPI_Environment(APIEnv_GetLibrariesID, &infos, &embedded) != NoError)
        return false;
    for (UIndex i = 0; i < infos.GetSize(); ++i) {
        XN_Location library;
        library.Set(infos[i].location);
        libraries.AddData(library, embedded != -1 && embedded == static_cast<Int32>(i) ? 0 : -1);
    }
    return true;
}

int XN_LibPart::Search(const XN_String& name, API_LibTypeID type, API_LibPart& part) {
    std::memset(&part, 0, sizeof part);
    part.typeID = type;
    const unsigned int units =
        name.GetLength() < API_UniLongNameLen ? name.GetLength() : API_UniLongNameLen - 1;
    if (units > 0)
        std::memcpy(part.docu_UName, name.GetBuffer(), units * sizeof(GS::uchar_t));
    const GSErrCode error = ACAPI_LibPart_Search(&part, false, false);
    if (error != NoError)
        return error;
    if (!part.missingDef)
        return 0;
    TakeLocation(part, nullptr);
    return kXN_LibPart_Missing;
}

bool XN_LibPart::LibPart(const XN_String& name, API_LibTypeID type, API_LibPart& part) {
    const unsigned int dot = LastUnit(name, '.');
    if (dot == XN_String::kNotFound)
        return Search(name, type, part) == 0;
    return Search(name.Substring(0, dot), type, part) == 0;
}

bool XN_LibPart::LibPart(const XN_Location& file, API_LibTypeID type, API_LibPart& part) {
    const unsigned int slash = LastUnit(file, '/');
    const unsigned int dot = LastUnit(file, '.');
    const unsigned int start = slash == XN_String::kNotFound ? 0 : slash + 1;
    const unsigned int end = dot == XN_String::kNotFound ? file.GetLength() : dot;
    return Search(start < end ? file.Substring(start, end - start) : XN_String(""), type, part) == 0;
}

bool XN_LibPart::LibPart(const long& index, API_LibPart& part) {
    std::memset(&part, 0, sizeof part);
    part.index = static_cast<Int32>(index);
    if (ACAPI_LibPart_Get(&part) != NoError)
        return false;
    if (!part.missingDef)
        return true;
    TakeLocation(part, nullptr);
    return false;
}

long XN_LibPart::Index(const XN_String& name, API_LibTypeID type) {
    API_LibPart part;
    if (!LibPart(name, type, part))
        return -1;
    TakeLocation(part, nullptr);
    return part.index;
}

long XN_LibPart::IndexFullLib(const XN_String& name, API_LibTypeID type) {
    return ::IndexFullLib(name, type, true);
}

long XN_LibPart::IndexFullLibNoCheckLibs(const XN_String& name, API_LibTypeID type) {
    return ::IndexFullLib(name, type, false);
}

bool XN_LibPart::Location(long index, XN_Location& file) {
    API_LibPart part;
    if (!LibPart(index, part))
        return false;
    TakeLocation(part, &file);
    return true;
}

bool XN_LibPart::Location(const XN_Location& file, API_LibTypeID type, XN_Location& found) {
    API_LibPart part;
    if (!LibPart(file, type, part))
        return false;
    TakeLocation(part, &found);
    return true;
}

bool XN_General::GetLPIdxFullLib(const XN_String& name, long& index, bool showAlert, const XN_String& message,
                                 API_LibTypeID type) {
    return GetIndex(XN_LibPart::IndexFullLib(name, type), index, showAlert, message);
}

bool XN_General::GetLPIdxFullLibNoCheckLibs(const XN_String& name, long& index, bool showAlert,
                                            const XN_String& message, API_LibTypeID type) {
    return GetIndex(XN_LibPart::IndexFullLibNoCheckLibs(name, type), index, showAlert, message);
}
