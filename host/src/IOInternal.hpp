// Private links between the host's file-system classes.
#pragma once

#include "GSRoot.hpp"
#include "achost/Faults.hpp"

namespace achost_internal {

// When a fault is pending for this call of `operation` and fires now, its code; otherwise NoError.
GSErrCode InjectedFileFault(achost::FileOperation operation);

} // namespace achost_internal
