// Opening a file that the host or its tools read whole: without blocking, so that a FIFO at the path
// is refused and never waited on, and only when it is a regular file. Host-side only.
#pragma once

#include "GSRoot.hpp"

#include <sys/stat.h>

#include <string>

namespace achost {

// Why a path was not opened.
enum class FileRefusal {
    None,    // opened
    Missing, // no such file
    Folder,  // a folder
    Special, // a device, a FIFO or a socket
    Other,   // the system refused: `reason` says why
};

// Opens `path` read-only. On success the descriptor (the caller closes it) with `info` filled in and
// FileRefusal::None; otherwise -1 and the refusal, with the system's text in `reason` for Other.
GS_HOST_EXPORT int OpenRegularFile(const std::string& path, struct stat* info, FileRefusal* refusal,
                                   std::string* reason);

} // namespace achost
