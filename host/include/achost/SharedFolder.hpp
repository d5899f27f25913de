// The host's shared folder (IO::FileSystem::CommonDocuments): where the add-ons of a suite keep their
// common settings and marker files. Host-side only; achost sets it from --shared-folder.
#pragma once

#include "GSRoot.hpp"

#include <string>

namespace achost {

// Uses `folder` as the shared folder from now on; an empty text restores the default,
// $XDG_DATA_HOME/achost/Shared, else ~/.local/share/achost/Shared. The folder is created when it
// is first asked for, not here.
GS_HOST_EXPORT void SetSharedFolder(const std::string& folder);

// The shared folder's path as it is set now (not created).
GS_HOST_EXPORT std::string SharedFolder();

} // namespace achost
