// Private links between the host's memory-handle code, its fault controls and its other parts.
#pragma once

#include "achost/Faults.hpp"

namespace achost_internal {

// The code of the pending fault of `call` when it fires on this call, else NoError.
GSErrCode InjectedCallFault(achost::HostCall call);

// Forgets the pending memory faults and restores the default block movement (part of ClearFaults).
void ClearMemoryFaults();

// True while a memory fault is set and has not fired.
bool MemoryFaultPending();

// Counts a fault down: true when the pending fault in `counter` fires on this call.
bool FaultFiresNow(int& counter);

} // namespace achost_internal
