// IO::Folder over POSIX directories.
#include "Folder.hpp"
#include "IOInternal.hpp"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

using achost::FileOperation;
using achost_internal::FolderError;
using achost_internal::InjectedFileFault;

namespace {

const std::string& PathOf(const IO::Location& location) {
    return IO::LocationAccess::PathOf(location);
}

bool IsFolderPath(const std::string& path) {
    struct stat info;
    return stat(path.c_str(), &info) == 0 && S_ISDIR(info.st_mode);
}

GSErrCode CreateFolders(const std::string& path) {
    std::error_code error;
    std::filesystem::create_directories(path, error);
    return !error && IsFolderPath(path) ? NoError : GSErrCode(IO::Folder::CreationError);
}

} // namespace

namespace achost_internal {

GSErrCode FolderError(int err) {
    switch (err) {
    case ENOENT:
        return IO::Folder::FolderNotFound;
    case ENOTDIR:
        return IO::Folder::NotAFolder;
    case EACCES:
    case EPERM:
    case EROFS:
        return IO::Folder::AccessDenied;
    case EEXIST:
        return IO::Folder::TargetExists;
    case ENOSPC:
    case EDQUOT:
        return IO::Folder::DeviceIsFull;
    default:
        return ErrIO;
    }
}

} // namespace achost_internal

namespace IO {

Folder::Folder(const Location& location, OnNotFound onNotFound) : location(location), path(PathOf(location)) {
    Open(onNotFound);
}

Folder::Folder(const Folder& parent, const Name& name)
    : location(parent.location, name), path(PathOf(location)) {
    status = parent.status;
    if (status == NoError)
        Open(Fail);
}

Folder::Folder(Folder& parent, const Name& name, OnNotFound onNotFound)
    : location(parent.location, name), path(PathOf(location)) {
    status = parent.status;
    if (status == NoError)
        Open(onNotFound);
}

void Folder::Open(OnNotFound onNotFound) {
    status = InjectedFileFault(FileOperation::FolderStatus);
    if (status != NoError)
        return;
    struct stat info;
    if (!path.empty() && stat(path.c_str(), &info) == 0)
        status = S_ISDIR(info.st_mode) ? NoError : GSErrCode(NotAFolder);
    else if (path.empty() || errno == ENOENT || errno == ENOTDIR)
        status = onNotFound == Create   ? CreateFolders(path)
                 : onNotFound == Ignore ? GSErrCode(NoError)
                                        : GSErrCode(FolderNotFound);
    else
        status = FolderError(errno);
}

GSErrCode Folder::GetLocation(Location* result) const {
    if (result == nullptr)
        return ErrParam;
    *result = location;
    return NoError;
}

std::string Folder::EntryPath(const Name& name) const {
    return PathOf(Location(location, name));
}

GSErrCode Folder::ListEntries(UInt32 typeFilter, std::vector<Entry>* entries) const {
    if (status != NoError)
        return status;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FolderEnumerate))
        return injected;
    DIR* dir = opendir(path.c_str());
    if (dir == nullptr)
        return FolderError(errno);
    errno = 0;
    while (const dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        const bool isFolder = IsFolderPath(path + "/" + name);
        if ((typeFilter & (isFolder ? FilterFolders : FilterFiles)) != 0)
            entries->push_back(Entry{name, isFolder});
    }
    const int readError = errno;
    closedir(dir);
    if (readError != 0)
        return FolderError(readError);
    std::sort(entries->begin(), entries->end(),
              [](const Entry& a, const Entry& b) { return a.name < b.name; });
    return NoError;
}

template <class Self, class Callback>
GSErrCode Folder::VisitEntries(Self& folder, Callback callback, UInt32 typeFilter, void* userData) {
    if (callback == nullptr)
        return ErrParam;
    std::vector<Entry> entries;
    if (const GSErrCode error = folder.ListEntries(typeFilter, &entries))
        return error;
    for (const Entry& entry : entries)
        if (!callback(folder, Name(entry.name.c_str()), entry.isFolder, userData))
            break;
    return NoError;
}

GSErrCode Folder::Enumerate(EnumCallbackConst callback, void* userData) const {
    return Enumerate(callback, ResolveLinks, FilterFiles | FilterFolders | FilterLinks | FilterUnknownTypes,
                     userData);
}

GSErrCode Folder::Enumerate(EnumCallbackConst callback, LinkProcessing /*links*/, UInt32 typeFilter,
                            void* userData) const {
    return VisitEntries(*this, callback, typeFilter, userData);
}

GSErrCode Folder::Enumerate(EnumCallback callback, void* userData) {
    return VisitEntries(*this, callback, FilterFiles | FilterFolders, userData);
}

GSErrCode Folder::GetType(const Name& name, EntryType* result) const {
    if (status != NoError)
        return status;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FolderGetType))
        return injected;
    if (result == nullptr || name.IsEmpty())
        return ErrParam;
    const std::string entry = EntryPath(name);
    struct stat info;
    if (stat(entry.c_str(), &info) == 0) {
        *result = S_ISDIR(info.st_mode) ? FolderEntry : FileEntry;
        return NoError;
    }
    const int statError = errno;
    if (lstat(entry.c_str(), &info) == 0) {
        *result = LinkEntry;
        return NoError;
    }
    return statError == ENOENT ? GSErrCode(TargetNotFound) : FolderError(statError);
}

GSErrCode Folder::Contains(const Name& name, bool* result) const {
    if (result == nullptr)
        return ErrParam;
    EntryType type;
    const GSErrCode error = GetType(name, &type);
    *result = error == NoError;
    return error == TargetNotFound ? NoError : error;
}

GSErrCode Folder::CreateFile(const Name& name) {
    if (status != NoError)
        return status;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FolderCreateFile))
        return injected;
    if (name.IsEmpty())
        return ErrParam;
    const int fd = open(EntryPath(name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0) {
        const GSErrCode error = FolderError(errno);
        return error == AccessDenied || error == TargetExists ? error : GSErrCode(CreationError);
    }
    close(fd);
    return NoError;
}

GSErrCode Folder::CreateFolder(const Name& name) {
    if (status != NoError)
        return status;
    if (name.IsEmpty())
        return ErrParam;
    if (mkdir(EntryPath(name).c_str(), 0777) == 0)
        return NoError;
    const GSErrCode error = FolderError(errno);
    return error == AccessDenied || error == TargetExists ? error : GSErrCode(CreationError);
}

GSErrCode Folder::Delete(const Name& name, DataSafety /*safety*/) {
    if (status != NoError)
        return status;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FolderDelete))
        return injected;
    if (name.IsEmpty())
        return ErrParam;
    const std::string entry = EntryPath(name);
    struct stat info;
    if (lstat(entry.c_str(), &info) != 0)
        return errno == ENOENT ? GSErrCode(TargetNotFound) : FolderError(errno);
    const int result = S_ISDIR(info.st_mode) ? rmdir(entry.c_str()) : unlink(entry.c_str());
    return result == 0 ? NoError : FolderError(errno);
}

} // namespace IO
