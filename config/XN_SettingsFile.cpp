#include "XN_SettingsFile.hpp"

#include "XN_File.hpp"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <limits>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

const char kRecordStart = '$';
const char kContinuation = '#';
const char kLF = 0x0A;
const char kCR = 0x0D;

// The text in the default 8-bit encoding, up to its first zero byte, into `bytes`. Every 8-bit
// encoding the system uses extends ASCII, so ASCII text is copied without the converter.
void EightBit(const XN_String& text, std::string& bytes) {
    bytes.clear();
    const unsigned short* units = text.GetBuffer();
    for (unsigned int i = 0; i < text.GetLength() && units[i] != 0; ++i) {
        if (units[i] >= 0x80) {
            const XN_CString converted = text.ToCStr(XN_String::Encoding_SystemDefault);
            bytes.assign(converted.Get() != nullptr ? converted.Get() : "");
            return;
        }
        bytes += static_cast<char>(units[i]);
    }
}

// Appends `bytes` with "#" after every line break (CR LF counts as one).
void AppendValueBytes(const std::string& bytes, std::string& image) {
    std::string::size_type run = 0;
    for (std::string::size_type i = 0; i < bytes.size(); ++i) {
        const bool lineBreak =
            bytes[i] == kLF || (bytes[i] == kCR && (i + 1 == bytes.size() || bytes[i + 1] != kLF));
        if (lineBreak) {
            image.append(bytes, run, i + 1 - run);
            image += kContinuation;
            run = i + 1;
        }
    }
    image.append(bytes, run, std::string::npos);
}

// Length of the line break at p (2 for CR LF, 1 for LF or a lone CR), 0 when there is none.
unsigned long LineBreakAt(const char* p) {
    if (*p == kCR)
        return p[1] == kLF ? 2 : 1;
    return *p == kLF ? 1 : 0;
}

void AppendDecoded(XN_String& text, const char* bytes, unsigned long count) {
    if (count > 0)
        XN_String::CStringToXN_String(text, bytes, static_cast<unsigned int>(count),
                                      XN_String::Encoding_SystemDefault, true);
}

// Parses one record at `pos` into `record`, whose value must be empty. Returns 1 with `pos` at the next
// record, 0 when the image ends inside the record (dropped), -1 when the record is malformed (`pos` at the
// offending byte).
int ParseRecord(const char* bytes, unsigned long size, unsigned long& pos, XN_Setting& record) {
    if (bytes[pos] != kRecordStart || pos + 1 >= size)
        return -1;
    const char* keyStart = bytes + pos + 1;
    const void* colon = std::memchr(keyStart, ':', size - pos - 1);
    if (colon == nullptr || colon == keyStart)
        return -1;
    const unsigned long keyLength = static_cast<const char*>(colon) - keyStart;
    record.key = XN_String(keyStart, static_cast<unsigned int>(keyLength), XN_String::Encoding_SystemDefault);
    // The byte after ":" is skipped whatever it is.
    unsigned long segment = pos + 1 + keyLength + 2;
    unsigned long scan = segment;
    bool afterContinuation = false;
    for (;;) {
        while (scan < size && LineBreakAt(bytes + scan) == 0)
            ++scan;
        if (scan >= size)
            return 0;
        const unsigned long next = scan + LineBreakAt(bytes + scan);
        const bool endsRecord = next == size || bytes[next] == kRecordStart || bytes[next] == 0;
        if (afterContinuation && scan == segment && !endsRecord) {
            // The byte right after "#" joins the segment unexamined, so a value holding an empty line
            // reads back with one "#" in it. Kept: every add-on of the suite reads it so. A line break
            // there that ends the record still ends it: a value's trailing line break reads back.
            afterContinuation = false;
            ++scan;
            continue;
        }
        afterContinuation = false;
        if (next < size && bytes[next] == kContinuation) {
            AppendDecoded(record.value, bytes + segment, next - segment);
            segment = next + 1;
            scan = segment;
            afterContinuation = true;
        } else if (endsRecord) {
            AppendDecoded(record.value, bytes + segment, scan - segment);
            pos = next;
            return 1;
        } else {
            pos = next;
            return -1;
        }
    }
}

bool KeyMatches(char* element, void* wanted) {
    const XN_Setting* record = reinterpret_cast<const XN_Setting*>(element);
    return XN_String::Compare(record->key, 0, *static_cast<const XN_String*>(wanted), 0, 0) == 0;
}

} // namespace

void XN_SettingsFile_ExchangeHalves(char* bytes, unsigned long size) {
    for (unsigned long i = 0; i < size; ++i) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        bytes[i] = static_cast<char>(((b >> 4) & 0x0F) | ((b << 4) & 0xF0));
    }
}

bool XN_SettingsFile_BuildImage(const XN_List<XN_Setting>& records, std::string& image) {
    std::string built;
    std::string bytes;
    for (long i = 0; i < records.GetCount(); ++i) {
        const XN_Setting& record = records[i];
        built += kRecordStart;
        EightBit(record.key, bytes);
        // The reader refuses an empty key. Set refuses every key the format cannot carry, so only
        // keys read from a file reach here, and they are written back as they were read.
        if (bytes.empty())
            return false;
        built += bytes;
        built += ": ";
        EightBit(record.value, bytes);
        AppendValueBytes(bytes, built);
        built += kLF;
        if (built.size() > XN_SETTINGS_IMAGE_MAX)
            return false;
    }
    image += built;
    return true;
}

long XN_SettingsFile_IndexOf(XN_List<XN_Setting>& records, const XN_String& key) {
    long found = -1;
    records.Search(KeyMatches, found, const_cast<XN_String*>(&key));
    return found;
}

bool XN_SettingsFile_ParseImage(const char* bytes, unsigned long size, XN_List<XN_Setting>& records,
                                unsigned long* badOffset) {
    unsigned long pos = 0;
    while (pos < size) {
        XN_Setting record;
        const int result = ParseRecord(bytes, size, pos, record);
        if (result < 0) {
            if (badOffset != nullptr)
                *badOffset = pos;
            return false;
        }
        if (result == 0)
            break;
        records.AddData(std::move(record), -1);
    }
    return true;
}

namespace {

std::string PosixPath(const XN_Location& location) {
    const XN_CString bytes = location.GetPOSIXPath().ToCStr(XN_String::Encoding_UTF8);
    return bytes.Get() != nullptr ? std::string(bytes.Get()) : std::string();
}

// Records why a step failed; returns false so that callers can fail in one statement.
bool Failed(std::string* why, const std::string& reason) {
    if (why != nullptr)
        *why = reason;
    return false;
}
bool FailedErrno(std::string* why, const char* step) {
    return Failed(why, std::string(step) + ": " + std::strerror(errno));
}

const char* KindOf(mode_t mode) {
    if (S_ISDIR(mode))
        return "a folder";
    if (S_ISFIFO(mode))
        return "a FIFO";
    if (S_ISCHR(mode) || S_ISBLK(mode))
        return "a device";
    if (S_ISSOCK(mode))
        return "a socket";
    return "not a regular file";
}

std::string FolderOf(const std::string& path) {
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

// The file a write to `path` changes: symbolic links followed to their last target, which need not
// exist yet. False on a loop or an unreadable link.
bool FollowLinks(std::string path, std::string& target, std::string* why) {
    for (int hops = 0; hops < 40; ++hops) {
        struct stat info;
        if (lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) {
            target = path;
            return true;
        }
        std::string link(PATH_MAX, '\0');
        const ssize_t n = readlink(path.c_str(), &link[0], link.size());
        if (n < 0)
            return FailedErrno(why, "cannot read the symbolic link");
        link.resize(static_cast<std::size_t>(n));
        path = link[0] == '/' ? link : FolderOf(path) + "/" + link;
    }
    return Failed(why, "too many levels of symbolic links");
}

bool WriteAll(int fd, const std::string& bytes) {
    std::size_t done = 0;
    while (done < bytes.size()) {
        const ssize_t put = write(fd, bytes.data() + done, bytes.size() - done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put < 0)
            return false;
        done += static_cast<std::size_t>(put);
    }
    return true;
}

// Opens a new file in `folder` that no other writer uses; -1 with errno set when the folder takes
// no new file. Made with the mode a new file gets (0666 less the umask).
int CreateTemporary(const std::string& folder, const std::string& base, std::string& path) {
    static unsigned long sCounter = 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        path =
            folder + "/." + base + "." + std::to_string(getpid()) + "." + std::to_string(++sCounter) + ".tmp";
        const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd >= 0 || errno != EEXIST)
            return fd;
    }
    return -1;
}

// Removes the temporary files that saves of `base` in `folder` left when their process died before
// the rename: those whose writer (the process ID in the name) no longer exists. Another writer's
// save in progress is left alone.
void RemoveAbandonedTemporaries(const std::string& folder, const std::string& base) {
    DIR* dir = opendir(folder.c_str());
    if (dir == nullptr)
        return;
    const std::string prefix = "." + base + ".";
    while (const dirent* entry = readdir(dir)) {
        const char* name = entry->d_name;
        if (std::strncmp(name, prefix.c_str(), prefix.size()) != 0)
            continue;
        char* end = nullptr;
        const long pid = std::strtol(name + prefix.size(), &end, 10);
        if (end == name + prefix.size() || *end != '.' || pid <= 0 || pid == getpid())
            continue;
        const char* counter = end + 1;
        std::strtoul(counter, &end, 10);
        if (end == counter || std::strcmp(end, ".tmp") != 0)
            continue;
        if (kill(static_cast<pid_t>(pid), 0) != 0 && errno == ESRCH)
            unlinkat(dirfd(dir), name, 0);
    }
    closedir(dir);
}

// Overwrites the file itself: for a folder that takes no new file, or a file whose owner a new
// file could not keep. Not atomic, like any write in place.
bool WriteInPlace(const std::string& target, const std::string& bytes, std::string* why) {
    const int fd = open(target.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0)
        return FailedErrno(why, "cannot open the file");
    struct stat info;
    bool done = fstat(fd, &info) == 0 && S_ISREG(info.st_mode);
    if (!done)
        Failed(why, "not a regular file");
    else if (!(done = WriteAll(fd, bytes) && ftruncate(fd, static_cast<off_t>(bytes.size())) == 0 &&
                      fsync(fd) == 0))
        FailedErrno(why, "cannot write the file");
    if (close(fd) != 0 && done)
        done = FailedErrno(why, "cannot write the file");
    return done;
}

// Writes the temporary file completely (mode, owner, bytes, on disk) and renames it over `target`.
// `ownerKept` false: the owner could not be given to the new file, nothing was renamed.
bool WriteAndRename(int fd, const std::string& temporary, const std::string& target, const std::string& bytes,
                    const struct stat* old, bool& ownerKept, std::string* why) {
    ownerKept = true;
    if (old != nullptr) {
        struct stat mine;
        if (fstat(fd, &mine) == 0 && (mine.st_uid != old->st_uid || mine.st_gid != old->st_gid) &&
            fchown(fd, old->st_uid, old->st_gid) != 0) {
            ownerKept = false;
            return false;
        }
        if (fchmod(fd, old->st_mode & 07777) != 0)
            return FailedErrno(why, "cannot give the new file the old one's mode");
    }
    if (!WriteAll(fd, bytes) || fsync(fd) != 0)
        return FailedErrno(why, "cannot write the file");
    if (rename(temporary.c_str(), target.c_str()) != 0)
        return FailedErrno(why, "cannot replace the file");
    return true;
}

// Replaces the file at `path` by `bytes`, keeping it as it was, only newer: a symbolic link stays a
// link (its target is written), mode and owner stay. The bytes go to a temporary file beside the
// target, which is synced and renamed over it, so a crash leaves the old file or the new one; the
// folder is synced after, and what earlier saves cut short by a crash left there is removed. A file
// the user may not write, or that is not a regular file, is refused.
bool ReplaceFile(const std::string& path, const std::string& bytes, std::string* why) {
    if (path.empty())
        return Failed(why, "no path");
    std::string target;
    if (!FollowLinks(path, target, why))
        return false;
    struct stat old;
    const bool exists = stat(target.c_str(), &old) == 0;
    if (!exists && errno != ENOENT)
        return FailedErrno(why, "cannot reach the file");
    if (exists && !S_ISREG(old.st_mode))
        return Failed(why, std::string("not a regular file (") + KindOf(old.st_mode) + ")");
    // No write bit at all: made read-only on purpose, which a rename would bypass, even for root.
    if (exists && (old.st_mode & 0222) == 0)
        return Failed(why, "the file is read-only");
    if (exists && faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        return FailedErrno(why, "you may not write the file");
    const std::string folder = FolderOf(target);
    const std::string base = target.substr(target.rfind('/') + 1);
    std::string temporary;
    const int fd = CreateTemporary(folder, base, temporary);
    if (fd < 0) {
        if (exists && (errno == EACCES || errno == EPERM || errno == EROFS))
            return WriteInPlace(target, bytes, why);
        return FailedErrno(why, "cannot create a file in the folder");
    }
    bool ownerKept = true;
    bool done = WriteAndRename(fd, temporary, target, bytes, exists ? &old : nullptr, ownerKept, why);
    if (close(fd) != 0 && done)
        done = FailedErrno(why, "cannot write the file");
    if (!done) {
        unlink(temporary.c_str());
        return ownerKept ? false : WriteInPlace(target, bytes, why);
    }
    const int folderFd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folderFd >= 0) {
        fsync(folderFd);
        close(folderFd);
    }
    RemoveAbandonedTemporaries(folder, base);
    return true;
}

// The bytes of the regular file at `path`, at most `limit` of them, and its full size. Opened
// without blocking, so that a FIFO put in the file's place cannot hang the reader.
// Missing: true with *exists false.
bool ReadRegularFile(const std::string& path, std::size_t limit, std::string& bytes, std::uint64_t& size,
                     bool* exists, std::string* why) {
    *exists = false;
    if (path.empty())
        return Failed(why, "no path");
    const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) {
        if (errno == ENOENT || errno == ENOTDIR)
            return true;
        *exists = true;
        return FailedErrno(why, "cannot open the file");
    }
    *exists = true;
    struct stat info;
    bool done = fstat(fd, &info) == 0;
    if (!done)
        FailedErrno(why, "cannot read the file");
    else if (!S_ISREG(info.st_mode))
        done = Failed(why, std::string("not a regular file (") + KindOf(info.st_mode) + ")");
    size = done ? static_cast<std::uint64_t>(info.st_size) : 0;
    bytes.assign(done ? static_cast<std::size_t>(std::min<std::uint64_t>(size, limit)) : 0, '\0');
    std::size_t got = 0;
    while (done && got < bytes.size()) {
        const ssize_t n = read(fd, &bytes[got], bytes.size() - got);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0)
            done = FailedErrno(why, "cannot read the file");
        else if (n == 0)
            break; // cut short by another writer meanwhile: what was there
        got += static_cast<std::size_t>(n > 0 ? n : 0);
    }
    bytes.resize(got);
    close(fd);
    return done;
}

} // namespace

bool XN_SettingsFile_IsStorableKey(const XN_String& key) {
    if (key.IsNull() || key.GetLength() == 0)
        return false;
    for (unsigned int i = 0; i < key.GetLength(); ++i) {
        const unsigned short unit = key.GetBuffer()[i];
        if (unit == 0 || unit == ':' || unit == kLF || unit == kCR)
            return false;
    }
    return true;
}

XN_SettingsFile_Status XN_SettingsFile_Read(const XN_Location& file, XN_List<XN_Setting>& records,
                                            XN_SettingsFile_Report* report) {
    XN_SettingsFile_Report ignored;
    XN_SettingsFile_Report& out = report != nullptr ? *report : ignored;
    std::string image;
    std::uint64_t length = 0;
    if (!ReadRegularFile(PosixPath(file), XN_SETTINGS_IMAGE_MAX, image, length, &out.exists, &out.reason))
        return XN_SettingsFile_ReadError;
    const unsigned long size = static_cast<unsigned long>(image.size());
    image += '\0';
    XN_SettingsFile_ExchangeHalves(&image[0], size);
    if (!XN_SettingsFile_ParseImage(image.data(), size, records, &out.badOffset)) {
        out.reason = "record " + std::to_string(records.GetCount() + 1) + " is malformed (byte offset " +
                     std::to_string(out.badOffset) + ")";
        return XN_SettingsFile_Malformed;
    }
    if (length > XN_SETTINGS_IMAGE_MAX) {
        out.reason = "larger than " + std::to_string(XN_SETTINGS_IMAGE_MAX) +
                     " bytes, which no add-on of the suite can read";
        return XN_SettingsFile_TooLarge;
    }
    return XN_SettingsFile_OK;
}

bool XN_SettingsFile_Write(const XN_Location& file, const XN_List<XN_Setting>& records, std::string* why) {
    std::string image;
    if (!XN_SettingsFile_BuildImage(records, image)) {
        std::string key;
        for (long i = 0; i < records.GetCount(); ++i)
            if (EightBit(records[i].key, key), key.empty())
                return Failed(why, "a key is empty, which no add-on of the suite can read");
        return Failed(why, "the settings would be larger than " + std::to_string(XN_SETTINGS_IMAGE_MAX) +
                               " bytes, which no add-on of the suite can read");
    }
    XN_SettingsFile_ExchangeHalves(&image[0], image.size());
    return ReplaceFile(PosixPath(file), image, why);
}

XN_String XN_SettingsFile_CopyName(const XN_Location& file) {
    return file + ".unreadable";
}

bool XN_SettingsFile_KeepCopy(const XN_Location& file) {
    std::string bytes;
    std::uint64_t size = 0;
    bool exists = false;
    if (!ReadRegularFile(PosixPath(file), std::numeric_limits<std::size_t>::max(), bytes, size, &exists,
                         nullptr) ||
        !exists)
        return false;
    const std::string copy = PosixPath(XN_Location(XN_SettingsFile_CopyName(file)));
    // The copy is a file of ours: whatever was at its name (a link among them) is replaced.
    std::string temporary;
    const int fd = CreateTemporary(FolderOf(copy), copy.substr(copy.rfind('/') + 1), temporary);
    if (fd < 0)
        return false;
    bool done = WriteAll(fd, bytes) && fsync(fd) == 0;
    done = close(fd) == 0 && done && rename(temporary.c_str(), copy.c_str()) == 0;
    if (!done)
        unlink(temporary.c_str());
    return done;
}
