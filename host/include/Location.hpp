// IO::Location: where a file or folder is, as an absolute POSIX path ("/"-separated, UTF-8 underneath).
// A location is a plain value: building one never touches the file system. The empty location names
// nothing; converting it to a path fails with ResolveError.
#pragma once

#include "IOBase.hpp"

namespace IO {

class GS_HOST_EXPORT Location {
public:
    enum Errors : GSErrCode {
        ResolveError = static_cast<GSErrCode>(0x81010000u), // the location names nothing
    };

    // The empty location.
    Location() = default;
    // The location of `path`, taken as it is (a trailing "/" other than the root's is dropped).
    explicit Location(const GS::UniString& path);
    explicit Location(const char* path);
    // `name` inside the folder `parent`.
    Location(const Location& parent, const Name& name);

    // The path as text: NoError, or ResolveError for the empty location (result left unchanged).
    GSErrCode ToPath(GS::UniString* result) const;
    GSErrCode ToPath(Path* result, GSCharCode charCode = CC_Default) const;
    // The path as UTF-8 POSIX path; same results as ToPath.
    GSErrCode ToUTF8POSIXPath(Path* result) const;
    // The path as the user reads it; same results as ToPath.
    GSErrCode ToDisplayText(Path* result) const;
    // The path for logs ("<empty>" for the empty location).
    GS::UniString ToLogText() const;

    // Name operations on the last path component. The root "/" and the empty location have no last
    // name: the getters and DeleteLastLocalName answer ResolveError and change nothing.
    GSErrCode AppendToLocal(const Name& name);
    GSErrCode GetLastLocalName(Name* result) const;
    GSErrCode SetLastLocalName(const Name& name);
    GSErrCode DeleteLastLocalName();
    // GetLastLocalName, then DeleteLastLocalName: splits the location into parent and last name.
    GSErrCode MoveLastLocalName(Name* result);

    bool IsEmpty() const { return path.empty(); }
    bool operator==(const Location& other) const { return path == other.path; }
    bool operator!=(const Location& other) const { return path != other.path; }

private:
    friend struct LocationAccess; // the host's own file classes read the path without conversion
    std::string path;             // UTF-8; empty for the empty location
};

} // namespace IO
