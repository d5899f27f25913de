// Private links between the host's memory-handle code and its other parts.
#pragma once

namespace achost_internal {

// Forgets the pending memory faults and restores the default block movement (part of ClearFaults).
void ClearMemoryFaults();

// Counts a fault down: true when the pending fault in `counter` fires on this call.
bool FaultFiresNow(int& counter);

} // namespace achost_internal
