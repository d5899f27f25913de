// IO::FileSystem: the well-known folders of this host, and the shared folder's setting.
#include "BMInternal.hpp"
#include "FileSystem.hpp"
#include "IOInternal.hpp"
#include "achost/SharedFolder.hpp"

#include <climits>
#include <cstdlib>
#include <mutex>
#include <unistd.h>

namespace {

std::mutex sMutex;
std::string sSharedFolder; // empty: the default

std::string Environment(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

// $variable when set, else $HOME + fallback.
std::string XdgFolder(const char* variable, const char* fallback) {
    const std::string set = Environment(variable);
    return !set.empty() ? set : Environment("HOME") + fallback;
}

std::string ProgramFile() {
    char buffer[PATH_MAX];
    const ssize_t n = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return n > 0 ? std::string(buffer, static_cast<size_t>(n)) : std::string();
}

std::string FolderOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash == 0 ? 1 : slash);
}

std::string CurrentFolder() {
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr ? buffer : "";
}

// The path of a well-known folder, empty when this host has none; `create` tells whether the
// host makes it when it is missing.
std::string SpecialPath(IO::FileSystem::SpecLocId id, bool* create) {
    *create = false;
    switch (id) {
    case IO::FileSystem::System:
    case IO::FileSystem::SystemMain:
        return "/";
    case IO::FileSystem::ApplicationFile:
        return ProgramFile();
    case IO::FileSystem::ApplicationFolder:
    case IO::FileSystem::InstallationFolder:
        return FolderOf(ProgramFile());
    case IO::FileSystem::CurrentFolder:
        return CurrentFolder();
    case IO::FileSystem::UserLocalSettings:
    case IO::FileSystem::UserRoamingSettings:
        return XdgFolder("XDG_CONFIG_HOME", "/.config");
    case IO::FileSystem::UserLocalData:
        return XdgFolder("XDG_DATA_HOME", "/.local/share");
    case IO::FileSystem::UserLocalCache:
        return XdgFolder("XDG_CACHE_HOME", "/.cache");
    case IO::FileSystem::TemporaryFolder:
        return Environment("TMPDIR").empty() ? "/tmp" : Environment("TMPDIR");
    case IO::FileSystem::UserHome:
        return Environment("HOME");
    case IO::FileSystem::Desktop:
        return Environment("HOME") + "/Desktop";
    case IO::FileSystem::UserDocuments:
        return Environment("HOME") + "/Documents";
    case IO::FileSystem::CommonDocuments:
        *create = true;
        return achost::SharedFolder();
    default:
        return std::string();
    }
}

} // namespace

namespace achost {

void SetSharedFolder(const std::string& folder) {
    std::lock_guard<std::mutex> lock(sMutex);
    sSharedFolder = folder;
}

std::string SharedFolder() {
    {
        std::lock_guard<std::mutex> lock(sMutex);
        if (!sSharedFolder.empty())
            return sSharedFolder;
    }
    return XdgFolder("XDG_DATA_HOME", "/.local/share") + "/achost/Shared";
}

} // namespace achost

namespace IO {

FileSystem fileSystem;

GSErrCode FileSystem::GetSpecialLocation(SpecLocId id, Location* result) const {
    if (result == nullptr)
        return ErrParam;
    if (const GSErrCode fault = achost_internal::InjectedCallFault(achost::HostCall::SpecialFolder))
        return fault;
    bool create = false;
    const std::string path = SpecialPath(id, &create);
    if (path.empty())
        return FolderNotFound;
    const Location location(path.c_str());
    if (create) {
        const Folder folder(location, Folder::Create);
        if (folder.GetStatus() != NoError)
            return folder.GetStatus();
    }
    *result = location;
    return NoError;
}

} // namespace IO
