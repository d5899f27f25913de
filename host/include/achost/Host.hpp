// The host: loads one add-on, follows the entry-point protocol, keeps the add-on's menus and serves
// the add-on's calls. This class is also the C++ driver of tests: load an add-on, choose items,
// read menus. One Host per process at a time; the add-on's calls reach the one that exists.
// Host-side only: tests and achost include this, the add-on never does.
#pragma once

#include "APIdefs.h"
#include "achost/Dialogs.hpp"
#include "achost/Resources.hpp"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace achost {

class FrontEnd;
class LibraryManager;

// A command another add-on answers through ACAPI_Command_Test: the add-on's identifier, the command
// and the highest command version it accepts.
struct DeclaredCommand {
    API_ModulID module = {0, 0};
    GSType command = 0;
    Int32 version = 1;
};

// Reads "DEVID:LOCALID:CMD[:VERSION]" (decimal identifiers, a four-character command, version 1 when
// left out). False for anything else.
GS_HOST_EXPORT bool ParseDeclaredCommand(const std::string& text, DeclaredCommand* result);

struct HostOptions {
    // The kind of host application the add-on is told about (0 = the CAD application).
    API_ApplicationTypeID hostKind = APIAppl_ArchiCADID;
    // Called with "<call>: <what went wrong>" whenever the add-on calls the host in a state where the
    // call is not allowed. The default prints to stderr. Tests make it fail the test.
    std::function<void(const std::string&)> onViolation;
    // The other add-ons' commands this session answers (ACAPI_Command_Test); none by default.
    std::vector<DeclaredCommand> commands;
    // The open project's file ('PROJ'); empty for an untitled project, the default.
    std::string project;
    // The menu names of the rendering engines ('GREN', 'CREN', EXPGetRend...), numbered from 1;
    // engine 1 is current when a run starts.
    std::vector<std::string> engines = {"Internal Engine", "Sketch Engine"};
    // With true the desktop opener starts xdg-open for each request; otherwise it only records them.
    bool launch = false;
    // The active library folders when the Host is made, in order (AddLibrary each; one that cannot be
    // added is reported to onViolation); none by default.
    std::vector<std::string> libraries;
    // The missing definitions of the open project (AddMissingDefinition each); none by default.
    std::vector<std::string> missing;
    // Where 'GLIB' reports the add-on's built-in library among the active folders (0: first); past
    // the last folder, the default, it comes last.
    size_t builtInLibraryAt = SIZE_MAX;
};

struct MenuItem {
    std::string text;  // UTF-8, control suffixes (^G, ^M, ...) removed
    GSFlags flags = 0; // API_MenuItemDisabled, API_MenuItemChecked
};

// One of the add-on's menus as the host shows it: its 'STR#' with the title string(s) taken off.
struct Menu {
    short resID = 0;
    std::string title; // empty for a one-item menu
    std::vector<MenuItem> items;
    bool registered = false; // placed in the host's menu tree by ACAPI_Register_Menu
    APIMenuCodeID position = MenuCode_UserDef;
    GSFlags menuFlags = 0;
};

// The exit status of a process whose add-on let an exception escape into the host.
constexpr int kAddonFaultStatus = 3;

// Makes a crash in the add-on's code (SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT) print which add-on
// and which of its calls (entry point, menu command, dialog callback, run-loop callback) was running,
// before the signal takes its course as it would have without the report. For a program's main().
GS_HOST_EXPORT void InstallCrashReport();

class GS_HOST_EXPORT Host {
public:
    explicit Host(HostOptions options = {});
    ~Host(); // ends the run (Quit)
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    // The host whose add-on is being served, or null.
    static Host* Current();

    // Starts a host run with the add-on file at `path`: reads its resources, loads it, checks that it
    // exports the four entry points (nothing is called when one is missing), then CheckEnvironment,
    // RegisterInterface and Initialize. False with one clear message when the add-on cannot run;
    // the host is then stopped again.
    bool Start(const std::string& path, std::string* error);
    // Ends the run: FreeData when the add-on is loaded, then unloads it; menus and registrations go.
    void Quit();
    // Quit, then Start again with the same add-on file.
    bool Reload(std::string* error);

    // Chooses an item as a person would: loads the add-on first (with Initialize) when it was
    // unloaded, calls the handler installed for the menu (nothing when none is), then unloads the
    // add-on unless it asked to be kept in memory. False with a message for an item that does not
    // exist or is disabled.
    bool ChooseMenuItem(short menuResID, Int32 itemIndex, std::string* error);
    // The same for an item of the registered menu.
    bool ChooseMenuItem(Int32 itemIndex, std::string* error);

    bool IsStarted() const;
    bool IsLoaded() const;
    // How many times the add-on was loaded in this Host's life (each load runs Initialize).
    int LoadCount() const;
    const std::string& AddonPath() const;
    const std::string& AddonName() const;        // written by CheckEnvironment
    const std::string& AddonDescription() const; // written by CheckEnvironment
    bool BuiltInLibraryRegistered() const;
    const ResourceSet& Resources() const;

    // The add-on's menus the host knows (registered, with a handler, or addressed by the add-on),
    // by resource ID.
    std::vector<const Menu*> Menus() const;
    const Menu* FindMenu(short menuResID) const;
    // The first registered menu, or null.
    const Menu* RegisteredMenu() const;
    // "Design > Design Extras" for MenuCode_Extras, and so on.
    static std::string PositionName(APIMenuCodeID position);

    // How many ACAPI_Resource_* string reads the add-on made since Start.
    int ResourceStringReads() const;

    // Every call made in a wrong state since Start, as reported to onViolation.
    const std::vector<std::string>& Violations() const;

    // Declares one more command answered by another add-on, for the rest of this host's life.
    void DeclareCommand(const DeclaredCommand& command);

    // Sets the open project's file (empty: untitled) for the rest of this host's life.
    void SetProject(const std::string& path);
    // The current rendering engine's number (1-based) and how many times the add-on changed it
    // ('CREN') in this run.
    int CurrentEngine() const;
    int EngineChanges() const;
    // Everything the add-on asked the desktop to open in this run, in order.
    const std::vector<std::string>& Opened() const;
    // Whether the desktop failed to open Opened()[index] (a launching session only).
    bool OpenFailed(size_t index) const;
    // The file dialog waiting for the user, or null.
    const FileRequest* OpenFileDialog() const;

    // Libraries (host/src/session/LibraryActions.cpp); they last for this Host's life, across reloads.
    // Makes `folder` the last active library, as a person does in the host's library manager
    // (relative: from the working directory); false with the reason when it is not a readable folder.
    bool AddLibrary(const std::string& folder, std::string* error);
    // Declares `name` a missing definition of the open project.
    void AddMissingDefinition(const std::string& name);
    // The active libraries as 'GLIB' lists them: the folders, then the add-on's file when the add-on
    // registered its built-in library.
    std::vector<std::string> ActiveLibraries() const;
    const LibraryManager& Library() const;
    // How many times the add-on asked to add a library folder ('ALIB'), refused requests included.
    int LibraryAdditions() const;

    // Dialogs open now, oldest first.
    std::vector<const Dialog*> Dialogs() const;
    // The dialog the user acts on: the innermost modal dialog, else the newest visible modeless one;
    // null when none is open.
    const Dialog* FrontDialog() const;
    // The alert waiting for the user, or null.
    const Alert* OpenAlert() const;

    struct Impl; // the state the add-on's calls reach (host/src)

private:
    friend struct HostAccess;
    std::unique_ptr<Impl> impl;
};

} // namespace achost
