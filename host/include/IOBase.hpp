// Shared pieces of the host's file-system interface: error codes, IO::Name and IO::Path.
// Error codes are module codes: 0x80000000 | module << 16 | offset (GSRoot 256, IO 257).
#pragma once

#include "GSRoot.hpp"
#include "UniString.hpp"

#include <string>

namespace GS {

// Error codes of the host's input channels (file reads report them).
class GS_HOST_EXPORT IChannel {
public:
    enum Errors : GSErrCode {
        EndOfInput = static_cast<GSErrCode>(0x81000100u), // the end came before the read was complete
        ReadError = static_cast<GSErrCode>(0x81000101u)
    };
};

// Error codes of the host's output channels (file writes report them).
class GS_HOST_EXPORT OChannel {
public:
    enum Errors : GSErrCode {
        OutputIsFull = static_cast<GSErrCode>(0x81000200u), // the device is full
        WriteError = static_cast<GSErrCode>(0x81000201u)
    };
};

} // namespace GS

namespace IO {

// One component of a path (a file or folder name, no "/").
class GS_HOST_EXPORT Name {
public:
    Name() = default;
    explicit Name(const GS::UniString& name) : name(name) {}
    explicit Name(const char* name) : name(name, CC_UTF8) {}

    const GS::UniString& ToString() const { return name; }
    bool IsEmpty() const { return name.IsEmpty(); }
    // The name without its extension: the text before the last "." (all of it when there is none,
    // or when the only "." is the first character, as in ".profile").
    GS::UniString GetBase() const;
    // The text after that last "."; empty when there is none.
    GS::UniString GetExtension() const;

private:
    GS::UniString name;
};

// An 8-bit path, as ToPath and ToUTF8POSIXPath give it; ToCStr stays valid while the object lives.
class GS_HOST_EXPORT Path {
public:
    Path() = default;
    explicit Path(const char* text) : text(text != nullptr ? text : "") {}
    const char* ToCStr() const { return text.c_str(); }
    operator const char*() const { return text.c_str(); }
    USize GetLength() const { return static_cast<USize>(text.size()); }

private:
    std::string text;
};

} // namespace IO
