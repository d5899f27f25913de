// The host's library manager: the active library folders in order, the library parts indexed from
// their ".gsm" files, and the missing definitions of the open project (names it uses that no active
// library holds). 'GLIB', 'ALIB', ACAPI_LibPart_Search and ACAPI_LibPart_Get are served from it; the
// rules by which parts are indexed and found are those stated at ACAPI_LibPart_Search in ACAPinc.h.
// Host-side only: tests, benchmarks and achost include this, the add-on never does.
#pragma once

#include "APIdefs.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace achost {

struct LibraryPart {
    Int32 index = 0; // from 1; stable for the manager's life
    API_LibTypeID type = APILib_ObjectID;
    std::u16string name;     // the document name: the file name without ".gsm", at most 255 units
    std::u16string fileName; // the file's name, at most 255 units; empty for a missing definition
    std::string file;        // the file's absolute path; empty for a missing definition
    bool missing = false;
};

struct ActiveLibrary {
    std::string folder; // absolute, no trailing "/"
    size_t parts = 0;   // parts first indexed from this folder
};

class GS_HOST_EXPORT LibraryManager {
public:
    // Makes `folder` (a relative path is taken from the working directory) the last active library
    // and indexes the parts it holds at this moment; files changed later are not seen. NoError,
    // also for a folder active already (nothing changes then); IO::Folder::FolderNotFound,
    // NotAFolder or AccessDenied when it cannot be read, APIERR_BADPARS for an empty path.
    GSErrCode AddFolder(const std::string& folder);
    // Declares `name` (UTF-8) a missing definition with the next index; nothing when it is one
    // already or empty.
    void AddMissing(const std::string& name);

    // The active folders, in the order they were added.
    const std::vector<ActiveLibrary>& Folders() const { return folders; }
    // The part found for `name` (UTF-16, 0-terminated) and `type` (API_ZombieLibID: any type): the
    // lowest index among the active parts of that name (letter case ignored) and type; when no active
    // part has that name at all, its missing definition; else null.
    const LibraryPart* Find(const GS::uchar_t* name, API_LibTypeID type) const;
    // The part or missing definition of `index`, or null.
    const LibraryPart* Get(Int32 index) const;
    // Parts and missing definitions known.
    size_t Count() const { return parts.size(); }

    // The type named by a part file's first line ("! type: Door"); APILib_ObjectID otherwise.
    static API_LibTypeID TypeFromFirstLine(const std::string& line);

private:
    void IndexFolder(const std::string& folder, ActiveLibrary& library);
    void Add(LibraryPart part);

    std::vector<ActiveLibrary> folders;
    std::vector<LibraryPart> parts;                                // parts[i] has index i + 1
    std::unordered_map<std::u16string, std::vector<Int32>> byName; // folded name -> indices, ascending
    std::unordered_map<std::string, Int32> byFile;                 // indexed files, never twice
};

} // namespace achost
