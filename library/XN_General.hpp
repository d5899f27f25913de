// XN_General: small services of the host and the desktop that the suite's add-ons share. Each
// section is implemented in its own file. Every function runs on the host's user-interface thread,
// inside a menu command or another host callback, and reports failure only through its result.
#pragma once

#include "APIdefs.h"
#include "XN_Location.hpp"
#include "XN_String.hpp"

// What a download reports to its callback (XN_General::URLDownload), in this order: Opened once when
// the server has answered; Progress (0.5: the total is not tracked) after each block written; then
// exactly one of Completed (the server ended the body) or Failed; nothing after that. The downloader
// never sends Closed; receivers treat it as a request to close their progress display.
enum XN_URL_Message {
    XN_URL_Opened = 0,
    XN_URL_Failed = 1,
    XN_URL_Progress = 2,
    XN_URL_Completed = 3,
    XN_URL_Closed = 4
};

// A download's callback. Its answer matters only to XN_URL_Opened: 1 cancels the transfer before the
// destination is created, and nothing more is reported.
typedef int (*XN_URL_Callback)(XN_URL_Message message, double progress, void* userData);

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

    // Sets `index` to XN_LibPart::IndexFullLib(name, type); true when a part was found. Otherwise,
    // with `showAlert`, tells the user in an alert: `message`, or general string 85 when it is empty.
    static bool GetLPIdxFullLib(const XN_String& name, long& index, bool showAlert, const XN_String& message,
                                API_LibTypeID type);
    // The same through XN_LibPart::IndexFullLibNoCheckLibs.
    static bool GetLPIdxFullLibNoCheckLibs(const XN_String& name, long& index, bool showAlert,
                                           const XN_String& message, API_LibTypeID type);

    // URL download on the host's main run loop (update/XN_URLDownload.cpp) ----------------------

    // Starts fetching `url` (http or https) into `destination` and returns at once: the host's main
    // run loop carries the transfer on and reports to `callback` (null: nothing is reported) with
    // `userData`. Percent escapes in `url` are undone and the address escaped again uniformly in
    // UTF-8; redirections are followed; proxies come from the standard variables (http_proxy, ...);
    // https certificates are verified. The body is written as it arrives, in blocks of at most
    // 16 KiB, to `destination`, which is created (or emptied) only after XN_URL_Opened was answered
    // with 0. HTTP status codes are not inspected: an error page is a body like any other. The whole
    // transfer has 60 seconds from this call, data flowing or not. A body partly written stays on
    // disk after a failure. True: the callbacks follow. False: nothing started (a malformed address,
    // a scheme other than http and https) and no callback will come.
    static bool URLDownload(const XN_String& url, const XN_Location& destination, XN_URL_Callback callback,
                            void* userData);
};
