// Private links between the host's file-system classes.
#pragma once

#include "GSRoot.hpp"
#include "Location.hpp"
#include "achost/Faults.hpp"

#include <string>

namespace achost_internal {

// When a fault is pending for this call of `operation` and fires now, its code; otherwise NoError.
GSErrCode InjectedFileFault(achost::FileOperation operation);

// The host code of a system error `err` (errno) met while working on a file / on a folder.
GSErrCode FileError(int err);
GSErrCode FolderError(int err);

} // namespace achost_internal

namespace IO {

// The path of a location as the host's file classes use it (no fault injection, no copy).
struct LocationAccess {
    static const std::string& PathOf(const Location& location) { return location.path; }
};

} // namespace IO
