// XN_File: one host file, with whole-file text and binary reading and writing.
//
// Every operation answers a small result code:
//   0 success
//   1 no file is open in this XN_File
//   2 the host denied access (IO::File::AccessDenied)
//   3 the file was not found (IO::File::FileNotFound)
//   4 the file could not be created (IO::File::CreationError)
//   5 the end came before a read was complete (GS::IChannel::EndOfInput)
//   6 any other host error, an open mode outside 0..4, or a missing file where one is required
#pragma once

#include "File.hpp"
#include "XN_Location.hpp"
#include "XN_String.hpp"

// Passed unchanged to the host's open modes. The system reads with 0, writes afresh with 2 and
// appends with 4.
enum XN_File_OpenMode {
    XN_File_ReadMode = 0,
    XN_File_WriteMode = 1, // write from the start, keeping what lies beyond
    XN_File_WriteEmptyMode = 2,
    XN_File_ReadWriteMode = 3,
    XN_File_AppendMode = 4
};

class XN_File {
public:
    XN_File() = default;
    // Closes the file if it is open.
    ~XN_File();
    XN_File(const XN_File&) = delete;
    XN_File& operator=(const XN_File&) = delete;

    // Opens `location` in `mode`, closing any file held first. Any mode but 0 creates a missing file.
    int Open(const XN_Location& location, const XN_File_OpenMode& mode);
    // Closes and forgets the file; 0 when none was open.
    int Close();
    bool IsOpen() const { return file != nullptr; }

    // Reads the whole open file and decodes it with XN_String::TextToString(detect, fallback).
    int ReadFullText(XN_String& text, bool detect, XN_String::Encoding fallback);
    // Opens `location` for reading, reads it whole, closes it.
    static int ReadFullText(const XN_Location& location, XN_String& text, bool detect,
                            XN_String::Encoding fallback);

    // Writes the byte-order mark of `encoding` when `writeBOM` (and the encoding has one), then the
    // text converted to `encoding` without its trailing zero bytes: neither the conversion's
    // terminator nor 0 characters at the end of the text are ever written. Adds the bytes written
    // to `*written` when it is not null.
    int WriteFullText(const XN_String& text, XN_String::Encoding encoding, bool writeBOM,
                      unsigned long* written);
    // Creates the file if needed, opens it to append (`append`) or afresh, writes, closes.
    static int WriteFullText(const XN_Location& location, const XN_String& text, XN_String::Encoding encoding,
                             bool writeBOM, bool append);

    // Reads `*size` bytes (the whole file when `*size` is 0) from `offset` into `buffer`, which must
    // hold them; on success `*size` is the amount read. A missing or inaccessible file is no error:
    // 0 with `*exists` false.
    static int ReadBin(const XN_Location& location, char* buffer, unsigned long* size, bool* exists,
                       const unsigned long& offset);
    // Writes `length` bytes, appending or afresh. Without `create` the file must exist already (6).
    static int WriteBin(const XN_Location& location, const char* data, long length, bool append, bool create);

    // Deletes the file; true on success.
    static bool Delete(const XN_Location& location);

    // The result code of a host error code.
    static int ResultOf(GSErrCode error);

    // Writes `n` bytes at the current position of the open file (1 when none is open).
    int Write(const char* bytes, unsigned long n);

private:
    XN_File_OpenMode mode = XN_File_ReadMode;
    IO::File* file = nullptr;
};
