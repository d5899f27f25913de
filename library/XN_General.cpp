// The host utilities: the open project's title, the rendering engine, and opening documents, folders
// and web addresses through the desktop's default applications.
#include "XN_General.hpp"

#include "ACAPinc.h"
#include "Desktop.hpp"
#include "File.hpp"
#include "XN_Resource.hpp"
#include "exp.h"

#include <cstring>

namespace {

// The longest project title and web address handed on, in characters.
constexpr unsigned int kMaxTitleLength = 255;
constexpr unsigned int kMaxURLLength = 255;

// True when `text` holds `part` anywhere, ignoring case; every text holds the empty one.
bool Contains(const XN_String& text, const XN_String& part) {
    return part.GetLength() == 0 || text.IndexOfIgnoreCase(part) != XN_String::kNotFound;
}

XN_String EngineMenuName(const MDID& id) {
    GS::UniString menu;
    EXPGetRendMenuStr(id, &menu);
    return XN_String(menu.ToUStr());
}

// Asks for the rendering effects; false on a host error.
bool GetRendering(API_RendEffects* rendering) {
    std::memset(rendering, 0, sizeof *rendering);
    return ACAPI_Environment(APIEnv_GetRenderingSetsID, rendering,
                             reinterpret_cast<void*>(static_cast<GS::IntPtr>(APIRendSet_EffectsID))) ==
           NoError;
}

// Hands `target` to the desktop as one argument: no shell reads it, so quotes, spaces and other
// characters of a path need no escaping. The desktop's own result is not looked at, as callers only
// promise that the request was made.
void XN_General_LaunchDoc(const XN_String& target) {
    Desktop::OpenWithDefaultApplication(XN_ToUniString(target));
}

// The host's file check: the file exists and may be accessed.
bool IsAccessibleFile(const XN_Location& file) {
    const IO::File hostFile(file);
    return hostFile.GetStatus() == NoError;
}

} // namespace

bool XN_General::ArchiCADProjectTitle(XN_String& title, bool* untitled) {
    title = "";
    if (untitled != nullptr)
        *untitled = true;
    API_ProjectInfo info;
    std::memset(&info, 0, sizeof info);
    const GSErrCode error = ACAPI_Environment(APIEnv_ProjectID, &info);
    if (error == NoError && !info.untitled && info.location != nullptr) {
        XN_Location project;
        project.Set(*info.location);
        title = project.Substring(project.LastIndexOf('/') + 1);
        if (title.GetLength() > kMaxTitleLength)
            title.SetLength(kMaxTitleLength);
        if (untitled != nullptr)
            *untitled = false;
    }
    delete info.location;
    delete info.location_team;
    return error == NoError;
}

short XN_General::CheckCurrentRenderingEngine(const XN_String& name) {
    API_RendEffects rendering;
    if (!GetRendering(&rendering))
        return -1;
    const MDID current(rendering.rendererID.developerID, rendering.rendererID.localID);
    return Contains(EngineMenuName(current), name) ? 1 : 0;
}

bool XN_General::SetRenderingEngine(const XN_String& name) {
    const Int32 count = EXPGetRendNum();
    MDID found;
    bool any = false;
    for (Int32 number = 1; number <= count && !any; ++number) {
        EXPGetRendMDID(static_cast<short>(number), &found);
        any = Contains(EngineMenuName(found), name);
    }
    API_RendEffects rendering;
    if (!any || !GetRendering(&rendering))
        return false;
    if (rendering.rendererID.developerID == found.developerID &&
        rendering.rendererID.localID == found.localID)
        return true;
    rendering.rendererID.developerID = found.developerID;
    rendering.rendererID.localID = found.localID;
    return ACAPI_Environment(APIEnv_ChangeRenderingSetsID, &rendering,
                             reinterpret_cast<void*>(static_cast<GS::IntPtr>(APIRendSet_EffectsID))) ==
           NoError;
}

bool XN_General::OpenFolderByLoc(XN_Location& folder) {
    if (!folder.IsFolder())
        return false;
    XN_General_LaunchDoc(folder.GetPOSIXPath());
    return true;
}

bool XN_General::LaunchDocByLoc(const XN_Location& file) {
    if (!IsAccessibleFile(file))
        return false;
    XN_General_LaunchDoc(file.GetPOSIXPath());
    return true;
}

bool XN_General::LaunchDocByPath(const XN_String& path) {
    const XN_Location file(path);
    if (!IsAccessibleFile(file))
        return false;
    XN_General_LaunchDoc(file);
    return true;
}

bool XN_General::LaunchURLByPath(const XN_String& url) {
    // The address travels as 8-bit text counted in 16 bits and cut to 255 characters, as a
    // length-prefixed string would carry it.
    const XN_CString bytes = url.ToCStr();
    const unsigned short counted =
        static_cast<unsigned short>(bytes.Get() != nullptr ? std::strlen(bytes.Get()) : 0);
    const unsigned int length = counted > kMaxURLLength ? kMaxURLLength : counted;
    if (length == 0)
        return false;
    const XN_String address(bytes.Get(), length);
    return Desktop::OpenWithDefaultApplication(XN_ToUniString(address)) == NoError;
}
