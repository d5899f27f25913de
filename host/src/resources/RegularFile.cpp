#include "achost/RegularFile.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace achost {

int OpenRegularFile(const std::string& path, struct stat* info, FileRefusal* refusal, std::string* reason) {
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0 || fstat(fd, info) != 0) {
        const int cause = errno;
        if (fd >= 0)
            close(fd);
        *refusal = cause == ENOENT ? FileRefusal::Missing : FileRefusal::Other;
        *reason = std::strerror(cause);
        return -1;
    }
    if (!S_ISREG(info->st_mode)) {
        close(fd);
        *refusal = S_ISDIR(info->st_mode) ? FileRefusal::Folder : FileRefusal::Special;
        return -1;
    }
    *refusal = FileRefusal::None;
    return fd;
}

} // namespace achost
