// IO::File over POSIX file descriptors.
#include "File.hpp"
#include "IOInternal.hpp"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using achost::FileOperation;
using achost_internal::FileError;
using achost_internal::InjectedFileFault;

namespace {

// open(2) flags of each open mode, in the order of IO::File::OpenMode.
const int kOpenFlags[] = {
    O_RDONLY, O_WRONLY, O_WRONLY | O_TRUNC, O_RDWR, O_WRONLY | O_APPEND,
    O_RDONLY, O_WRONLY, O_WRONLY | O_TRUNC, O_RDWR,
};

} // namespace

namespace achost_internal {

GSErrCode FileError(int err) {
    switch (err) {
    case ENOENT:
    case ENOTDIR:
        return IO::File::FileNotFound;
    case EISDIR:
        return IO::File::NotAFile;
    case EACCES:
    case EPERM:
    case EROFS:
    case EBADF:
        return IO::File::AccessDenied;
    case EMFILE:
    case ENFILE:
        return IO::File::NoMoreOSFile;
    case ENOSPC:
    case EDQUOT:
        return GS::OChannel::OutputIsFull;
    default:
        return ErrIO;
    }
}

} // namespace achost_internal

namespace IO {

File::File(const Location& location, OnNotFound onNotFound)
    : location(location), path(LocationAccess::PathOf(location)) {
    Check(onNotFound);
}

File::File(const Folder& parent, const Name& name) {
    CheckIn(parent, name, Fail);
}

File::File(Folder& parent, const Name& name, OnNotFound onNotFound) {
    CheckIn(parent, name, onNotFound);
}

void File::CheckIn(const Folder& parent, const Name& name, OnNotFound onNotFound) {
    parent.GetLocation(&location);
    location.AppendToLocal(name);
    path = LocationAccess::PathOf(location);
    status = parent.GetStatus();
    if (status == NoError)
        Check(onNotFound);
}

File::~File() {
    Close();
}

void File::Check(OnNotFound onNotFound) {
    status = InjectedFileFault(FileOperation::FileStatus);
    if (status != NoError)
        return;
    struct stat info;
    if (!path.empty() && stat(path.c_str(), &info) == 0) {
        status = S_ISDIR(info.st_mode) ? GSErrCode(NotAFile) : NoError;
        return;
    }
    if (!path.empty() && errno != ENOENT) {
        status = achost_internal::FileError(errno);
        return;
    }
    if (onNotFound == Ignore)
        return;
    if (onNotFound == Fail || path.empty()) {
        status = FileNotFound;
        return;
    }
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    status = fd >= 0 ? NoError : GSErrCode(CreationError);
    if (fd >= 0)
        close(fd);
}

GSErrCode File::GetLocation(Location* result) const {
    if (result == nullptr)
        return ErrParam;
    *result = location;
    return NoError;
}

GSErrCode File::Open(OpenMode mode) {
    if (status != NoError)
        return status;
    Close();
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FileOpen))
        return injected;
    if (mode < ReadMode || mode > ReadWriteSharedRMode)
        return ErrParam;
    descriptor = open(path.c_str(), kOpenFlags[mode] | O_CLOEXEC);
    if (descriptor >= 0)
        return NoError;
    return FileError(errno);
}

GSErrCode File::Close() {
    if (descriptor < 0)
        return NoError;
    const GSErrCode injected = InjectedFileFault(FileOperation::FileClose);
    const int result = close(descriptor);
    descriptor = -1;
    if (injected != NoError)
        return injected;
    return result == 0 ? NoError : FileError(errno);
}

GSErrCode File::ReadBin(char* dest, USize n, USize* read) {
    if (read != nullptr)
        *read = 0;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FileRead))
        return injected;
    if (descriptor < 0)
        return AccessDenied;
    if (dest == nullptr && n > 0)
        return ErrParam;
    USize done = 0;
    while (done < n) {
        const ssize_t got = ::read(descriptor, dest + done, n - done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return FileError(errno);
        if (got == 0)
            break;
        done += static_cast<USize>(got);
        if (read != nullptr)
            *read = done;
    }
    return done == n ? NoError : GSErrCode(GS::IChannel::EndOfInput);
}

GSErrCode File::WriteBin(const char* src, USize n, USize* written) {
    if (written != nullptr)
        *written = 0;
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FileWrite))
        return injected;
    if (descriptor < 0)
        return AccessDenied;
    if (src == nullptr && n > 0)
        return ErrParam;
    USize done = 0;
    while (done < n) {
        const ssize_t put = ::write(descriptor, src + done, n - done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            return FileError(errno);
        done += static_cast<USize>(put);
        if (written != nullptr)
            *written = done;
    }
    return NoError;
}

GSErrCode File::GetDataLength(UInt64* length) const {
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FileGetDataLength))
        return injected;
    if (length == nullptr)
        return ErrParam;
    struct stat info;
    const int result = descriptor >= 0 ? fstat(descriptor, &info) : stat(path.c_str(), &info);
    if (result != 0)
        return FileError(errno);
    *length = static_cast<UInt64>(info.st_size);
    return NoError;
}

GSErrCode File::GetDataLength(USize* length) const {
    if (length == nullptr)
        return ErrParam;
    UInt64 full = 0;
    const GSErrCode error = GetDataLength(&full);
    if (error == NoError)
        *length = static_cast<USize>(full);
    return error;
}

GSErrCode File::SetDataLength(UInt64 length) {
    if (descriptor < 0)
        return AccessDenied;
    return ftruncate(descriptor, static_cast<off_t>(length)) == 0 ? NoError : FileError(errno);
}

GSErrCode File::Seek(SeekOrigin origin, Int64 offset) {
    if (const GSErrCode injected = InjectedFileFault(FileOperation::FileSeek))
        return injected;
    if (descriptor < 0)
        return AccessDenied;
    static const int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin < Start || origin > End)
        return ErrParam;
    if (lseek(descriptor, static_cast<off_t>(offset), kWhence[origin]) >= 0)
        return NoError;
    return errno == EINVAL ? GSErrCode(IllegalPosition) : FileError(errno);
}

GSErrCode File::GetPosition(UInt64* position) const {
    if (descriptor < 0 || position == nullptr)
        return descriptor < 0 ? GSErrCode(AccessDenied) : ErrParam;
    const off_t at = lseek(descriptor, 0, SEEK_CUR);
    if (at < 0)
        return FileError(errno);
    *position = static_cast<UInt64>(at);
    return NoError;
}

} // namespace IO
