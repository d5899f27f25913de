// XN_General: small services of the host and the desktop that the suite's add-ons share. Each
// section is implemented in its own file. Every function runs on the host's user-interface thread,
// inside a menu command or another host callback, and reports failure only through its result.
#pragma once

#include "XN_Location.hpp"
#include "XN_String.hpp"

class XN_General {
public:
    // Host utilities (XN_General.cpp) -----------------------------------------------------------

    // The file name of the open project (last path component, at most 255 characters) into `title`;
    // an untitled project leaves it empty. `untitled` (when given) tells which. False on a host error.
    static bool ArchiCADProjectTitle(XN_String& title, bool* untitled);
    // 1 when the host's current rendering engine's menu name contains `name` (ignoring case), 0 when
    // not, -1 on a host error.
    static short CheckCurrentRenderingEngine(const XN_String& name);
    // Makes the first engine (lowest number) whose menu name contains `name` current; true when it is
    // current afterwards.
    static bool SetRenderingEngine(const XN_String& name);
    // Shows an existing folder in the desktop's file browser; false for anything else.
    static bool OpenFolderByLoc(XN_Location& folder);
    // Opens an existing, accessible file with its default application; false when it is not there.
    static bool LaunchDocByLoc(const XN_Location& file);
    static bool LaunchDocByPath(const XN_String& path);
    // Opens a web address (its first 255 characters) in the default browser.
    static bool LaunchURLByPath(const XN_String& url);

    // Library-part lookup with the user-facing alert (XN_Library.cpp) ---------------------------

    // URL download on the host's main run loop (update/XN_URLDownload.cpp) ----------------------
};
