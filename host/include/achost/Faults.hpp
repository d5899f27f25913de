// Test controls of the host: make chosen host calls fail on purpose, so that the add-on's failure
// paths run against the real host library. Host-side only: tests and achost include this, the add-on
// never does. Faults are process-wide; every fault fires once and is then forgotten.
#pragma once

#include "GSRoot.hpp"

namespace achost {

// Memory handles ------------------------------------------------------------------------------------

// The `nth` BMAllocateHandle call from now fails (1 = the next one); 0 cancels.
GS_HOST_EXPORT void FailAllocation(int nth);
// The `nth` BMReallocHandle call from now fails (1 = the next one); 0 cancels.
GS_HOST_EXPORT void FailReallocation(int nth);
// With `on`, every reallocation of an unlocked block moves it to a fresh address, so that a pointer
// kept across a reallocation points to released memory. Off by default (blocks move only when the
// allocator needs to).
GS_HOST_EXPORT void MoveBlocksOnEveryReallocation(bool on);
// Number of handles allocated and not yet released.
GS_HOST_EXPORT long LiveHandleCount();
// Number of BM calls made with a handle that is not alive (released twice, never allocated).
GS_HOST_EXPORT long HandleMisuseCount();

// Files and folders --------------------------------------------------------------------------------

// The IO calls a fault can target.
enum class FileOperation {
    FileStatus,        // IO::File construction (its GetStatus reports the code)
    FileOpen,          // IO::File::Open
    FileRead,          // IO::File::ReadBin
    FileWrite,         // IO::File::WriteBin
    FileSeek,          // IO::File::Seek
    FileGetDataLength, // IO::File::GetDataLength
    FileClose,         // IO::File::Close
    FolderStatus,      // IO::Folder construction (its GetStatus reports the code)
    FolderEnumerate,   // IO::Folder::Enumerate
    FolderGetType,     // IO::Folder::GetType
    FolderDelete,      // IO::Folder::Delete
    FolderCreateFile,  // IO::Folder::CreateFile
    LocationToPath,    // IO::Location::ToPath and ToUTF8POSIXPath
};

// The `nth` call of `operation` from now (1 = the next one) fails with `code` and does nothing else.
GS_HOST_EXPORT void FailFileOperation(FileOperation operation, GSErrCode code, int nth = 1);

// Other host calls -------------------------------------------------------------------------------

// The calls of the add-on interface a fault can target, with what a failing call does.
enum class HostCall {
    ModalDialog,            // DGModalDialog: opens nothing, answers 0
    ModelessDialog,         // DGModelessInit: opens nothing, answers 0
    Alert,                  // DGAlert: shows nothing, answers 0
    ResourceString,         // ACAPI_Resource_GetLocUStr, GetLocStr, GetFixStr: copy nothing, answer false
    RegisterMenu,           // ACAPI_Register_Menu: registers nothing, answers the code
    RegisterBuiltInLibrary, // ACAPI_Register_BuiltInLibrary: registers nothing, answers the code
    InstallMenuHandler,     // ACAPI_Install_MenuHandler: installs nothing, answers the code
    MenuItemText,  // ACAPI_Interface on a menu item's text or flags: changes nothing, answers the code
    OwnLocation,   // ACAPI_GetOwnLocation: answers the code, the location untouched
    SpecialFolder, // IO::FileSystem::GetSpecialLocation: answers the code, the location untouched
    GetLibraries,  // ACAPI_Environment 'GLIB': answers the code, the array and the index untouched
    AddLibrary,    // ACAPI_Environment 'ALIB': adds nothing, answers the code
    LibPartSearch, // ACAPI_LibPart_Search: fills nothing, allocates nothing, answers the code
    LibPartGet,    // ACAPI_LibPart_Get: fills nothing, allocates nothing, answers the code
};

// The `nth` call of `call` from now (1 = the next one) fails with `code` (where the call answers a
// code) and does nothing else.
GS_HOST_EXPORT void FailHostCall(HostCall call, GSErrCode code, int nth = 1);

// True while a fault set with one of the calls above has not fired yet: the calls it counts were made
// fewer times than its `nth`.
GS_HOST_EXPORT bool FaultPending();

// Forgets every pending fault and restores the default block movement.
GS_HOST_EXPORT void ClearFaults();

// Clears every fault when the scope ends, so a failing test cannot leak faults into the next one.
class ScopedFaults {
public:
    ScopedFaults() { ClearFaults(); }
    ~ScopedFaults() { ClearFaults(); }
    ScopedFaults(const ScopedFaults&) = delete;
    ScopedFaults& operator=(const ScopedFaults&) = delete;
};

} // namespace achost
