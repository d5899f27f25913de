// IO::Name and IO::Location: text operations on POSIX paths, no file-system access.
#include "IOInternal.hpp"
#include "Location.hpp"

#include <cerrno>

namespace {

std::string ToUTF8(const GS::UniString& text) {
    return text.ToUTF8();
}
GS::UniString FromUTF8(const std::string& text) {
    return GS::UniString(text.c_str(), CC_UTF8);
}

// Drops one trailing "/" unless the path is the root itself.
std::string WithoutTrailingSlash(std::string path) {
    if (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

// Index of the "." that starts the extension of `name`, or npos.
std::string::size_type ExtensionDot(const std::string& name) {
    const std::string::size_type dot = name.rfind('.');
    return dot == 0 ? std::string::npos : dot;
}

} // namespace

namespace IO {

GS::UniString Name::GetBase() const {
    const std::string text = ToUTF8(name);
    return FromUTF8(text.substr(0, ExtensionDot(text)));
}

GS::UniString Name::GetExtension() const {
    const std::string text = ToUTF8(name);
    const std::string::size_type dot = ExtensionDot(text);
    return dot == std::string::npos ? GS::UniString() : FromUTF8(text.substr(dot + 1));
}

Location::Location(const GS::UniString& path) : path(WithoutTrailingSlash(ToUTF8(path))) {}

Location::Location(const char* path) : path(WithoutTrailingSlash(path != nullptr ? path : "")) {}

Location::Location(const Location& parent, const Name& name) : path(parent.path) {
    AppendToLocal(name);
}

GSErrCode Location::ToPath(GS::UniString* result) const {
    if (const GSErrCode injected = achost_internal::InjectedFileFault(achost::FileOperation::LocationToPath))
        return injected;
    if (path.empty() || result == nullptr)
        return path.empty() ? GSErrCode(ResolveError) : GSErrCode(ErrParam);
    *result = FromUTF8(path);
    return NoError;
}

GSErrCode Location::ToPath(Path* result, GSCharCode /*charCode*/) const {
    return ToUTF8POSIXPath(result);
}

GSErrCode Location::ToUTF8POSIXPath(Path* result) const {
    if (const GSErrCode injected = achost_internal::InjectedFileFault(achost::FileOperation::LocationToPath))
        return injected;
    if (path.empty() || result == nullptr)
        return path.empty() ? GSErrCode(ResolveError) : GSErrCode(ErrParam);
    *result = Path(path.c_str());
    return NoError;
}

GSErrCode Location::ToDisplayText(Path* result) const {
    return ToUTF8POSIXPath(result);
}

GS::UniString Location::ToLogText() const {
    return path.empty() ? GS::UniString("<empty>") : FromUTF8(path);
}

GSErrCode Location::AppendToLocal(const Name& name) {
    if (name.IsEmpty())
        return ErrParam;
    if (!path.empty() && path.back() != '/')
        path += '/';
    path += ToUTF8(name.ToString());
    return NoError;
}

GSErrCode Location::GetLastLocalName(Name* result) const {
    if (path.empty() || path == "/" || result == nullptr)
        return ResolveError;
    const std::string::size_type slash = path.rfind('/');
    *result = Name(FromUTF8(slash == std::string::npos ? path : path.substr(slash + 1)));
    return NoError;
}

GSErrCode Location::DeleteLastLocalName() {
    if (path.empty() || path == "/")
        return ResolveError;
    const std::string::size_type slash = path.rfind('/');
    if (slash == std::string::npos)
        path.clear();
    else
        path.erase(slash == 0 ? 1 : slash);
    return NoError;
}

GSErrCode Location::SetLastLocalName(const Name& name) {
    if (name.IsEmpty())
        return ErrParam;
    if (const GSErrCode error = DeleteLastLocalName())
        return error;
    return AppendToLocal(name);
}

GSErrCode Location::MoveLastLocalName(Name* result) {
    if (const GSErrCode error = GetLastLocalName(result))
        return error;
    return DeleteLastLocalName();
}

} // namespace IO
