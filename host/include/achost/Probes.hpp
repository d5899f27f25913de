// Entry-point calls made out of order on purpose: a validator makes them to prove that an add-on
// answers them without crashing, as it must when a host misbehaves. Host-side only.
#pragma once

#include "achost/Host.hpp"

namespace achost {

enum class WrongOrderCall {
    // A fresh load gets CheckEnvironment and RegisterInterface, then a command of its registered
    // menu before any Initialize (the handler found at the same place as in the previous load).
    CommandBeforeInitialize,
    // FreeData twice in a row before the library is closed.
    FreeDataTwice,
    // A command of the registered menu after FreeData, the library still mapped.
    CommandAfterUnload,
};

// The name used in reports: "a command before Initialize", ...
GS_HOST_EXPORT const char* WrongOrderCallName(WrongOrderCall call);

// Makes `call` with item `itemIndex` of the registered menu (for the calls that run a command). The
// host must be started and loaded; it is stopped afterwards (every dialog the command left open is
// closed, the library is closed) and Start begins afresh. Calls the add-on makes meanwhile are served
// and checked as usual. False, with why, when the call cannot be made (no registered menu, no handler).
GS_HOST_EXPORT bool CallOutOfOrder(Host& host, WrongOrderCall call, Int32 itemIndex, std::string* error);

} // namespace achost
