// Entry-point calls out of order, for the validator.
#include "achost/Probes.hpp"
#include "HostImpl.hpp"

#include <dlfcn.h>

#include <cstring>

namespace achost {

namespace {

// Calls `handler` with item `itemIndex` of menu `resID` as a command would be.
void RunCommand(Host::Impl& s, APIMenuCommandProc* handler, short resID, Int32 itemIndex) {
    API_MenuParams params;
    std::memset(&params, 0, sizeof params);
    params.menuItemRef.menuResID = resID;
    params.menuItemRef.itemIndex = itemIndex;
    const Phase before = s.phase;
    s.phase = Phase::Command;
    handler(&params);
    s.phase = before;
}

const char* BaseOf(const void* address) {
    Dl_info info;
    std::memset(&info, 0, sizeof info);
    return dladdr(address, &info) != 0 ? static_cast<const char*>(info.dli_fbase) : nullptr;
}

// Stops the host after a probe: FreeData when `freeData`, then the library is closed.
void Stop(Host::Impl& s, bool freeData) {
    s.CloseAllDialogs();
    if (freeData) {
        s.phase = Phase::FreeData;
        s.entries.freeData();
    }
    s.handlers.clear();
    if (s.handle != nullptr)
        s.Close();
    s.started = false;
    s.menus.clear();
}

} // namespace

const char* WrongOrderCallName(WrongOrderCall call) {
    switch (call) {
    case WrongOrderCall::CommandBeforeInitialize:
        return "a command before Initialize";
    case WrongOrderCall::FreeDataTwice:
        return "FreeData twice";
    default:
        return "a command after an unload";
    }
}

bool CallOutOfOrder(Host& host, WrongOrderCall call, Int32 itemIndex, std::string* error) {
    Host::Impl& s = *HostAccess::Of(host);
    const Menu* menu = host.RegisteredMenu();
    if (!s.started || s.handle == nullptr) {
        *error = "the add-on is not loaded";
        return false;
    }
    if (call == WrongOrderCall::FreeDataTwice) {
        s.phase = Phase::FreeData;
        s.entries.freeData();
        Stop(s, true);
        return true;
    }
    const auto handler = menu != nullptr ? s.handlers.find(menu->resID) : s.handlers.end();
    if (handler == s.handlers.end()) {
        *error = menu == nullptr ? "the add-on registered no menu" : "the registered menu has no handler";
        return false;
    }
    const short resID = menu->resID;
    APIMenuCommandProc* proc = handler->second;
    if (call == WrongOrderCall::CommandAfterUnload) {
        s.phase = Phase::FreeData;
        s.entries.freeData();
        s.phase = Phase::Idle;
        RunCommand(s, proc, resID, itemIndex);
        Stop(s, false);
        return true;
    }
    // The same handler in a fresh load: the same offset from the library's base address.
    const char* oldBase = BaseOf(reinterpret_cast<const void*>(proc));
    const std::ptrdiff_t offset = reinterpret_cast<const char*>(proc) - oldBase;
    host.Quit();
    if (oldBase == nullptr || !s.Open(error))
        return false;
    const char* newBase = BaseOf(reinterpret_cast<const void*>(s.entries.checkEnvironment));
    API_EnvirParams envir;
    std::memset(&envir, 0, sizeof envir);
    ACAPI_GetReleaseNumber(&envir.serverInfo);
    envir.serverInfo.serverApplication = s.options.hostKind;
    s.phase = Phase::CheckEnvironment;
    s.entries.checkEnvironment(&envir);
    s.phase = Phase::RegisterInterface;
    s.entries.registerInterface();
    s.phase = Phase::Idle;
    RunCommand(s, reinterpret_cast<APIMenuCommandProc*>(const_cast<char*>(newBase + offset)), resID,
               itemIndex);
    Stop(s, true);
    return true;
}

} // namespace achost
