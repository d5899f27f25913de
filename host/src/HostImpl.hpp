// The state of a host run, shared by Host (the driver side) and the add-on interface functions.
#pragma once

#include "ACAPinc.h"
#include "achost/Host.hpp"

#include <map>

namespace achost {

// What the add-on is doing while it calls the host; each host call is allowed in some of these.
enum class Phase { Unloaded, CheckEnvironment, RegisterInterface, Initialize, Idle, Command, FreeData };

struct EntryPoints {
    API_AddonType (*checkEnvironment)(API_EnvirParams*) = nullptr;
    GSErrCode (*registerInterface)() = nullptr;
    GSErrCode (*initialize)() = nullptr;
    GSErrCode (*freeData)() = nullptr;
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
    // Runs Initialize; on failure FreeData and unload.
    bool Initialize(std::string* error);
    // Open + Initialize: a later load of a started add-on.
    bool Load(std::string* error);
    // FreeData, then Close.
    void Unload();
    // dlclose without any call into the add-on.
    void Close();

    HostOptions options;
    std::string path;
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
};

// Gives the interface functions the running host's state.
struct HostAccess {
    static Host::Impl* Of(Host& host);
};

// The resource module handle the add-on receives for its own resources.
constexpr GSResModule kOwnResModule = 1;

} // namespace achost
