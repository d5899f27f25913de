// IO::Folder: an existing folder of the file system, opened by its location.
// A Folder's status says whether it could be opened; every other call on a folder whose status is an
// error answers that error. Results are NoError or the host's error codes (IO::Folder, IO::File,
// GS channel codes); ErrIO for a system error without a closer code.
#pragma once

#include "Location.hpp"

#include <string>
#include <vector>

namespace IO {

class GS_HOST_EXPORT Folder {
public:
    enum OnNotFound { Fail, Create, Ignore };
    enum EntryType { FileEntry, FolderEntry, LinkEntry };
    enum DataSafety { Normal, IgnoreWriteProtection };
    enum LinkProcessing { ResolveLinks, PreserveLinks };
    enum TypeFilter : UInt32 { FilterFiles = 1, FilterFolders = 2, FilterLinks = 4, FilterUnknownTypes = 8 };

    enum Errors : GSErrCode {
        FolderNotFound = static_cast<GSErrCode>(0x81010200u),
        NotAFolder = static_cast<GSErrCode>(0x81010201u),
        AccessDenied = static_cast<GSErrCode>(0x81010202u),
        CreationError = static_cast<GSErrCode>(0x81010203u),
        SourceNotFound = static_cast<GSErrCode>(0x81010204u),
        TargetNotFound = static_cast<GSErrCode>(0x81010205u),
        TargetExists = static_cast<GSErrCode>(0x81010206u),
        DeviceIsFull = static_cast<GSErrCode>(0x81010207u),
        InvalidTime = static_cast<GSErrCode>(0x81010208u)
    };

    // Called once per entry with the folder, the entry's name and whether the entry is a folder (a
    // link is followed). Answer true to go on, false to stop (stopping is not an error).
    typedef bool(CCALL* EnumCallbackConst)(const Folder& parent, const Name& entryName, bool isFolder,
                                           void* userData);
    typedef bool(CCALL* EnumCallback)(Folder& parent, const Name& entryName, bool isFolder, void* userData);

    // Opens the folder at `location`; with Create a missing folder is made, parents included
    // (CreationError when that fails). Fail: FolderNotFound or NotAFolder.
    explicit Folder(const Location& location, OnNotFound onNotFound = Fail);
    Folder(const Folder& parent, const Name& name);
    Folder(Folder& parent, const Name& name, OnNotFound onNotFound);

    GSErrCode GetStatus() const { return status; }
    GSErrCode GetLocation(Location* result) const;

    // Calls `callback` for each entry (not "." and ".."), in ascending byte order of the names, so
    // that every enumeration of the same folder delivers the same order. `typeFilter` chooses files
    // and/or folders. NoError when the enumeration ran to its end or was stopped by the callback.
    GSErrCode Enumerate(EnumCallbackConst callback, void* userData = nullptr) const;
    GSErrCode Enumerate(EnumCallbackConst callback, LinkProcessing links, UInt32 typeFilter,
                        void* userData = nullptr) const;
    GSErrCode Enumerate(EnumCallback callback, void* userData = nullptr);

    // The type of the entry `name`: FolderEntry or FileEntry (links followed; a broken link is a
    // LinkEntry). A missing entry answers TargetNotFound.
    GSErrCode GetType(const Name& name, EntryType* result) const;
    GSErrCode Contains(const Name& name, bool* result) const;

    // Makes a new empty file / folder `name`: TargetExists when there is one, CreationError or
    // AccessDenied when the system refuses.
    GSErrCode CreateFile(const Name& name);
    GSErrCode CreateFolder(const Name& name);

    // Deletes the file `name`, or the folder `name` when it is empty. TargetNotFound when missing.
    GSErrCode Delete(const Name& name, DataSafety safety = Normal);

private:
    struct Entry {
        std::string name;
        bool isFolder;
    };

    void Open(OnNotFound onNotFound);
    // The entries that pass `typeFilter`, sorted by name; read whole before any callback runs, so a
    // callback may change the folder.
    GSErrCode ListEntries(UInt32 typeFilter, std::vector<Entry>* entries) const;
    // Calls `callback` for each listed entry until it answers false.
    template <class Self, class Callback>
    static GSErrCode VisitEntries(Self& folder, Callback callback, UInt32 typeFilter, void* userData);
    std::string EntryPath(const Name& name) const;

    Location location;
    std::string path;
    GSErrCode status = NoError;
};

} // namespace IO
