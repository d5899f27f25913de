// IO::FileSystem: the host's well-known folders, reached through the global IO::fileSystem.
#pragma once

#include "File.hpp"
#include "Folder.hpp"
#include "Location.hpp"

namespace IO {

class GS_HOST_EXPORT FileSystem {
public:
    enum SpecLocId {
        System,
        ApplicationFile,
        ApplicationFolder,
        InstallationFolder,
        CurrentFolder,
        UserLocalSettings,
        UserLocalData,
        UserLocalCache,
        UserLocalLog,
        UserRoamingSettings,
        CommonLocalSettings,
        Desktop,
        TemporaryFolder,
        UserDocuments,
        CommonDocuments, // the host's shared folder, where the add-ons of a suite keep common files
        CommonLocalData,
        CommonLocalLogs,
        UserHome,
        SharedComponents,
        SystemMain
    };

    enum Errors : GSErrCode {
        FileNotFound = static_cast<GSErrCode>(0x81010300u),
        FolderNotFound = static_cast<GSErrCode>(0x81010301u)
    };

    // The location of a well-known folder (or of the host program, ApplicationFile). Folders that a
    // host owns (the shared folder) are created when missing: Folder::CreationError when that fails.
    // FolderNotFound for a folder this host does not have.
    GSErrCode GetSpecialLocation(SpecLocId id, Location* result) const;
};

GS_HOST_EXPORT extern FileSystem fileSystem;

} // namespace IO
