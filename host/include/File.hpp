// IO::File: one file of the file system. Constructing it checks (or creates) the file; Open gives
// access in one of the open modes until Close or destruction. Results are NoError or the host's
// error codes (IO::File codes, GS::IChannel::EndOfInput for a read past the end).
#pragma once

#include "Folder.hpp"

namespace IO {

class GS_HOST_EXPORT File {
public:
    enum OnNotFound { Fail, Create, Ignore };
    // Write modes write from the start without truncating (WriteMode), after truncating to 0
    // (WriteEmptyMode), or at the end (AppendMode). The shared variants behave as their plain ones.
    enum OpenMode {
        ReadMode,
        WriteMode,
        WriteEmptyMode,
        ReadWriteMode,
        AppendMode,
        ReadSharedRWMode,
        WriteSharedRMode,
        WriteEmptySharedRMode,
        ReadWriteSharedRMode
    };
    enum SeekOrigin { Start, Current, End };

    enum Errors : GSErrCode {
        FileNotFound = static_cast<GSErrCode>(0x81010100u),
        NotAFile = static_cast<GSErrCode>(0x81010101u),
        AccessDenied = static_cast<GSErrCode>(0x81010102u),
        CreationError = static_cast<GSErrCode>(0x81010103u),
        NoMoreOSFile = static_cast<GSErrCode>(0x81010104u),
        IllegalPosition = static_cast<GSErrCode>(0x81010105u),
        InvalidTime = static_cast<GSErrCode>(0x81010106u)
    };

    // The file at `location`. Status: NoError when it exists; with Create a missing file is made
    // empty (CreationError when that fails); otherwise FileNotFound, or NotAFile for a folder.
    // Ignore accepts a missing file (its status stays NoError until Open fails).
    explicit File(const Location& location, OnNotFound onNotFound = Fail);
    File(const Folder& parent, const Name& name);
    File(Folder& parent, const Name& name, OnNotFound onNotFound);
    // Closes the file if it is open.
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    GSErrCode GetStatus() const { return status; }
    GSErrCode GetLocation(Location* result) const;

    // Opens the file (closing it first when already open). ErrParam for an unknown mode.
    GSErrCode Open(OpenMode mode);
    // Closes it; closing a closed file does nothing and answers NoError.
    GSErrCode Close();
    bool IsOpen() const { return descriptor >= 0; }

    // Reads up to `n` bytes at the position. Fewer bytes than asked (the end of the file came
    // first) answer GS::IChannel::EndOfInput, with the bytes read stored and counted in `*read`.
    GSErrCode ReadBin(char* dest, USize n, USize* read = nullptr);
    // Writes `n` bytes at the position (at the end in AppendMode); AccessDenied when not opened for
    // writing, GS::OChannel::OutputIsFull when the device is full.
    GSErrCode WriteBin(const char* src, USize n, USize* written = nullptr);

    // The size of the file in bytes (open or not).
    GSErrCode GetDataLength(UInt64* length) const;
    GSErrCode GetDataLength(USize* length) const;
    GSErrCode SetDataLength(UInt64 length);
    // Moves the position of an open file; IllegalPosition when it would fall before the start.
    GSErrCode Seek(SeekOrigin origin, Int64 offset);
    GSErrCode GetPosition(UInt64* position) const;

private:
    // The entry `name` of `parent`: the parent's status when it has failed, else as Check.
    void CheckIn(const Folder& parent, const Name& name, OnNotFound onNotFound);
    void Check(OnNotFound onNotFound);

    Location location;
    std::string path;
    GSErrCode status = NoError;
    int descriptor = -1;
};

} // namespace IO
