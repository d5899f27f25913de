// The library manager: folders read once when they become active, parts found by folded name.
#include "achost/Library.hpp"

#include "Folder.hpp"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <unicode/uchar.h>

namespace achost {

namespace {

constexpr char kPartExtension[] = ".gsm";
constexpr size_t kMaxNameUnits = API_UniLongNameLen - 1;

// The type names a part's first line may give ("! type: Door"), at the value of their API_LibTypeID
// ("Special" for APILib_SpecID).
const char* const kTypeNames[] = {"",      "Special", "Window",     "Door",     "Object",
                                  "Lamp",  "Room",    "Property",   "PlanSign", "Label",
                                  "Macro", "Pict",    "ListScheme", "Skylight"};

// The key a name is found by: every UTF-16 unit lowered (surrogates kept as they are).
std::u16string Folded(const GS::uchar_t* name, size_t length) {
    std::u16string key(length, u'\0');
    for (size_t i = 0; i < length; ++i) {
        const UChar32 lower = u_tolower(name[i]);
        key[i] = lower <= 0xFFFF ? static_cast<char16_t>(lower) : static_cast<char16_t>(name[i]);
    }
    return key;
}

std::u16string ToUtf16(const std::string& utf8) {
    const GS::UniString text(utf8.c_str(), CC_UTF8);
    const size_t length = std::min<size_t>(text.GetLength(), kMaxNameUnits);
    return std::u16string(reinterpret_cast<const char16_t*>(text.ToUStr()), length);
}

bool EqualsIgnoringCase(const std::string& a, const char* b) {
    return a.size() == std::strlen(b) && std::equal(a.begin(), a.end(), b, [](char x, char y) {
               return std::tolower(x) == std::tolower(y);
           });
}

bool IsPartFile(const std::string& name) {
    const size_t n = sizeof kPartExtension - 1;
    return name.size() > n && EqualsIgnoringCase(name.substr(name.size() - n), kPartExtension);
}

// The first line of the file at `path`, at most 80 bytes of it.
std::string FirstLine(const std::string& path) {
    char head[80];
    const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    const ssize_t n = fd >= 0 ? read(fd, head, sizeof head) : -1;
    if (fd >= 0)
        close(fd);
    const std::string text(head, n > 0 ? static_cast<size_t>(n) : 0);
    return text.substr(0, text.find_first_of("\r\n"));
}

// The entries of `folder` sorted by name: whether each is a folder (a link to a folder is not
// followed, so a link cannot make the walk go round) or a file.
std::vector<std::pair<std::string, bool>> Entries(const std::string& folder) {
    std::vector<std::pair<std::string, bool>> entries;
    DIR* dir = opendir(folder.c_str());
    if (dir == nullptr)
        return entries;
    while (const dirent* entry = readdir(dir)) {
        const std::string name = entry->d_name;
        if (name == "." || name == "..")
            continue;
        unsigned char type = entry->d_type;
        struct stat info;
        if (type == DT_UNKNOWN && lstat((folder + "/" + name).c_str(), &info) == 0)
            type = S_ISDIR(info.st_mode) ? DT_DIR : S_ISREG(info.st_mode) ? DT_REG : DT_LNK;
        if (type == DT_LNK && stat((folder + "/" + name).c_str(), &info) == 0 && S_ISREG(info.st_mode))
            type = DT_REG;
        if (type == DT_DIR || type == DT_REG)
            entries.emplace_back(name, type == DT_DIR);
    }
    closedir(dir);
    std::sort(entries.begin(), entries.end());
    return entries;
}

GSErrCode FolderStatus(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0)
        return errno == EACCES ? GSErrCode(IO::Folder::AccessDenied) : GSErrCode(IO::Folder::FolderNotFound);
    if (!S_ISDIR(info.st_mode))
        return IO::Folder::NotAFolder;
    return access(path.c_str(), R_OK | X_OK) == 0 ? NoError : GSErrCode(IO::Folder::AccessDenied);
}

} // namespace

API_LibTypeID LibraryManager::TypeFromFirstLine(const std::string& line) {
    // "!", blanks, "type", blanks, ":", blanks, the name, blanks.
    size_t at = line.find_first_not_of(" \t");
    const auto skipBlanks = [&] { at = std::min(line.size(), line.find_first_not_of(" \t", at)); };
    if (at == std::string::npos || line[at] != '!')
        return APILib_ObjectID;
    ++at;
    skipBlanks();
    if (!EqualsIgnoringCase(line.substr(at, 4), "type"))
        return APILib_ObjectID;
    at += 4;
    skipBlanks();
    if (at >= line.size() || line[at] != ':')
        return APILib_ObjectID;
    ++at;
    skipBlanks();
    const size_t end = line.find_last_not_of(" \t");
    const std::string name = end == std::string::npos || end < at ? "" : line.substr(at, end + 1 - at);
    for (size_t type = 1; type < sizeof kTypeNames / sizeof kTypeNames[0]; ++type)
        if (EqualsIgnoringCase(name, kTypeNames[type]))
            return static_cast<API_LibTypeID>(type);
    return APILib_ObjectID;
}

GSErrCode LibraryManager::AddFolder(const std::string& folder) {
    if (folder.empty())
        return APIERR_BADPARS;
    std::error_code ignored;
    std::string path = std::filesystem::absolute(folder, ignored).lexically_normal().string();
    if (path.size() > 1 && path.back() == '/')
        path.pop_back();
    if (const GSErrCode status = FolderStatus(path))
        return status;
    for (const ActiveLibrary& active : folders)
        if (active.folder == path)
            return NoError;
    ActiveLibrary library;
    library.folder = path;
    IndexFolder(path, library);
    folders.push_back(library);
    return NoError;
}

void LibraryManager::IndexFolder(const std::string& folder, ActiveLibrary& library) {
    for (const auto& [name, isFolder] : Entries(folder)) {
        const std::string path = (folder == "/" ? "" : folder) + "/" + name;
        if (isFolder) {
            IndexFolder(path, library);
        } else if (IsPartFile(name) && byFile.count(path) == 0) {
            LibraryPart part;
            part.type = TypeFromFirstLine(FirstLine(path));
            part.name = ToUtf16(name.substr(0, name.size() - (sizeof kPartExtension - 1)));
            part.fileName = ToUtf16(name);
            part.file = path;
            Add(std::move(part));
            ++library.parts;
        }
    }
}

void LibraryManager::AddMissing(const std::string& name) {
    LibraryPart part;
    part.name = ToUtf16(name);
    part.missing = true;
    part.type = API_ZombieLibID;
    if (part.name.empty())
        return;
    const auto known =
        byName.find(Folded(reinterpret_cast<const GS::uchar_t*>(part.name.data()), part.name.size()));
    if (known != byName.end())
        for (Int32 index : known->second)
            if (parts[static_cast<size_t>(index) - 1].missing)
                return;
    Add(std::move(part));
}

void LibraryManager::Add(LibraryPart part) {
    part.index = static_cast<Int32>(parts.size() + 1);
    if (!part.file.empty())
        byFile.emplace(part.file, part.index);
    byName[Folded(reinterpret_cast<const GS::uchar_t*>(part.name.data()), part.name.size())].push_back(
        part.index);
    parts.push_back(std::move(part));
}

const LibraryPart* LibraryManager::Find(const GS::uchar_t* name, API_LibTypeID type) const {
    size_t length = 0;
    while (length < API_UniLongNameLen && name[length] != 0)
        ++length;
    const auto found = byName.find(Folded(name, length));
    if (found == byName.end())
        return nullptr;
    const LibraryPart* missing = nullptr;
    bool active = false;
    for (Int32 index : found->second) {
        const LibraryPart& part = parts[static_cast<size_t>(index) - 1];
        if (part.missing) {
            missing = missing != nullptr ? missing : &part;
            continue;
        }
        active = true;
        if (type == API_ZombieLibID || part.type == type)
            return &part;
    }
    return active ? nullptr : missing;
}

const LibraryPart* LibraryManager::Get(Int32 index) const {
    return index >= 1 && static_cast<size_t>(index) <= parts.size() ? &parts[static_cast<size_t>(index) - 1]
                                                                    : nullptr;
}

} // namespace achost
