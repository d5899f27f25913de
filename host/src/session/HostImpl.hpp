// The state of a host run, shared by Host (the driver side) and the add-on interface functions.
#pragma once

#include "ACAPinc.h"
#include "achost/Action.hpp"
#include "achost/Dialogs.hpp"
#include "achost/Host.hpp"
#include "achost/Library.hpp"

#include <functional>
#include <map>
#include <memory>
#include <optional>

namespace achost {

// What the add-on is doing while it calls the host; each host call is allowed in some of these.
enum class Phase { Unloaded, CheckEnvironment, RegisterInterface, Initialize, Idle, Command, FreeData };

struct EntryPoints {
    API_AddonType (*checkEnvironment)(API_EnvirParams*) = nullptr;
    GSErrCode (*registerInterface)() = nullptr;
    GSErrCode (*initialize)() = nullptr;
    GSErrCode (*freeData)() = nullptr;
};

// A dialog while it is open: what the user sees, and how the host reaches the add-on about it.
struct OpenDialog {
    Dialog view;
    bool modal = false;
    bool closing = false; // DG_MSG_CLOSE is being sent: a second close is ignored
};

// The libraries of a host: kept for the Host's life, across the add-on's runs.
struct LibraryState {
    LibraryManager manager;
    int additions = 0; // 'ALIB' calls of the add-on, refused ones included
};

// Who answers while the host waits for the user. Outlives host runs: a script's `reload` goes on
// with the same front end.
struct Session {
    Host* host = nullptr;
    FrontEnd* frontEnd = nullptr;
    bool ended = false;  // quit, the end of input, or the front end stopped after a failure
    bool failed = false; // the front end stopped after a failure
};

struct Host::Impl {
    explicit Impl(HostOptions hostOptions) : options(std::move(hostOptions)) {}

    // Reports a call made in the wrong state; false when `phase` is not one of `allowed`.
    bool Allow(const char* call, std::initializer_list<Phase> allowed);
    void Violation(const std::string& message);

    // The menu for 'STR#' resID, made from the resource on first use; null when there is no such list.
    Menu* MenuFor(short resID);

    // dlopen and look up the four entry points; false (and closed again) when one is missing.
    bool Open(std::string* error);
    std::string LoadPath() const;
    // Runs Initialize; on failure FreeData and unload.
    bool Initialize(std::string* error);
    // Open + Initialize: a later load of a started add-on.
    bool Load(std::string* error);
    // FreeData, then Close; reports an add-on whose library stays mapped after it.
    void Unload();
    // dlclose without any call into the add-on.
    void Close();

    HostOptions options;
    std::string path;
    std::string ownPath; // `path` made absolute, for ACAPI_GetOwnLocation
    void* handle = nullptr;
    EntryPoints entries;
    ResourceSet resources;
    Phase phase = Phase::Unloaded;
    bool started = false;
    bool keepInMemory = false;
    bool builtInLibrary = false;
    int loadCount = 0;
    int stringReads = 0;
    std::string name, description;
    std::map<short, Menu> menus;
    std::map<short, APIMenuCommandProc*> handlers;
    std::vector<std::string> violations;
    Session session;

    // Dialogs and alerts (host/src/DGManager.cpp) ------------------------------------------------

    // The open dialog `dialId`; null, reported with `call`, when there is none.
    OpenDialog* FindDialog(const char* call, short dialId);
    // Item `item` of the open dialog; null, reported, when either does not exist.
    DialogItem* FindItem(const char* call, short dialId, short item);
    // The same for an item that must be a list box.
    DialogItem* FindList(const char* call, short dialId, short item);
    // Builds and opens the dialog of 'GDLG' resId and sends DG_MSG_INIT; its ID, or 0 (reported).
    short CreateDialog(const char* call, GSResModule module, short resId, DGDialCallBack callback,
                       DGUserData userData, bool modal);
    // Sends a message to the dialog's callback; its answer (0 when the dialog is gone).
    short Send(short dialId, short message, short item, DGMessageData data = 0);
    // Sends DG_MSG_CLOSE with `item` and forgets the dialog.
    void CloseDialog(short dialId, short item);
    // Closes every open dialog (innermost first), as when the add-on is unloaded.
    void CloseAllDialogs();
    // The user's click and selection: the messages they send and what their answers do.
    void Click(short dialId, short item);
    void Select(short dialId, short item, short row);
    void CloseBox(short dialId);
    // Waits for the user until the modal dialog closes; returns the item it closed with.
    short RunModal(short dialId);
    // Shows the alert and waits until it is dismissed; returns the button pressed.
    short RunAlert(Alert shown);
    // The dialog the user acts on: the innermost modal one, else the newest visible modeless one.
    OpenDialog* Front();

    // Modeless dialogs registered as the add-on's palettes (ACAPI_RegisterModelessWindow).
    struct ModelessWindow {
        APIPaletteControlCallBackProc* callback = nullptr;
        GSFlags flags = 0;
    };
    std::map<Int32, ModelessWindow> modelessWindows;

    std::map<short, std::unique_ptr<OpenDialog>> dialogs;
    std::vector<short> modalStack;        // open modal dialogs, innermost last
    std::map<short, short> closedDialogs; // modal dialogs closed, with their item, until RunModal ends
    short nextDialogId = 1;
    std::optional<Alert> alert;
    short alertAnswer = 0;

    // File dialogs, the environment and the desktop (host/src/session/EnvironmentActions.cpp) -----

    // Shows the file dialog and waits for the user: the chosen path, or nothing when cancelled.
    std::optional<std::string> RunFileDialog(FileRequest request);

    std::optional<FileRequest> fileRequest;
    std::optional<std::optional<std::string>> fileAnswer; // set by the user's answer
    int currentEngine = 1;
    int engineChanges = 0;
    std::vector<std::string> opened;
    std::vector<size_t> openFailures; // indices into `opened` whose launch failed
    std::shared_ptr<LibraryState> library = std::make_shared<LibraryState>();

    // Sessions (host/src/Session.cpp) -----------------------------------------------------------

    // Waits for one action and carries it out; false when the session has ended.
    bool Step();
    // Carries out one action in the state the host is in; false with what was seen instead.
    bool Perform(const Action& action, std::string* message);
};

// Gives the interface functions the running host's state.
struct HostAccess {
    static Host::Impl* Of(Host& host);
};

// The running host's state, with `call` allowed in one of `phases`; null (reported) otherwise.
Host::Impl* RunningHost(const char* call, std::initializer_list<Phase> phases);

// Dialog and alert actions of a session (host/src/DialogActions.cpp): false with what was seen
// instead, or why the action is not possible.
bool IsDialogVerb(Verb verb);
bool PerformOnDialog(Host::Impl& s, const Action& action, std::string* message);
bool PerformOnAlert(Host::Impl& s, const Action& action, std::string* message);
// `picture "FILE"`: the front dialog's picture, whatever else is open.
bool PerformPicture(Host::Impl& s, const Action& action, std::string* message);
// The session verbs about the environment and file dialogs (project, engines, opened documents,
// answers to a file dialog), possible in any state.
bool IsEnvironmentVerb(Verb verb);
bool PerformOnEnvironment(Host::Impl& s, const Action& action, std::string* message);
// The session verbs about libraries (library, missing, libraries, expect libraries), possible in any
// state (host/src/session/LibraryActions.cpp).
bool IsLibraryVerb(Verb verb);
bool PerformOnLibraries(Host::Impl& s, const Action& action, std::string* message);
// `text` in double quotes, with quotes and backslashes escaped as in a script.
std::string Quoted(const std::string& text);

// The main run loop (host/src/services/RunLoop.cpp): libuv's default loop. Add-on code its callbacks
// reach runs as a command does.
// Turns the loop once without waiting.
void TurnRunLoop(Host::Impl& s);
// Turns the loop, waiting for its events, until no transfer or timer of the add-on is pending (the
// loop holds no referenced handle or request) or `limitSeconds` have passed; false on the limit.
bool TurnRunLoopUntilIdle(Host::Impl& s, double limitSeconds);
// Turns the loop, waiting for its events, until `fd` is readable or `changed` answers true.
void TurnRunLoopUntilReadable(Host::Impl& s, int fd, const std::function<bool()>& changed);

// The resource module handle the add-on receives for its own resources.
constexpr GSResModule kOwnResModule = 1;

} // namespace achost
