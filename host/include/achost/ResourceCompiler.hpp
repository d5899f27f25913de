// The resource compiler: reads an add-on's GRC file ('STR#', 'GDLG', 'DLGH', 'GICN', 'MDID' resources,
// C comments, #define of numbers (each name once), well-formed UTF-8 with or without a byte-order
// mark, no NUL byte) and the icon images it names. Host-side only.
#pragma once

#include "achost/Resources.hpp"

#include <functional>
#include <istream>
#include <string>

namespace achost {

// Compiles grcPath; icon images are read from imagesDir (`<base name>.png`, or `<id>.png` for an icon
// with an empty body). On failure returns false with `error` = "file:line: message" for the first
// error found; `result` is then unspecified.
GS_HOST_EXPORT bool CompileGrc(const std::string& grcPath, const std::string& imagesDir, ResourceSet* result,
                               std::string* error);

// Receives each resource as soon as it is compiled and checked; false, with `error` set, stops the
// compilation.
using ResourceSink = std::function<bool(Resource&& resource, std::string* error)>;

// Compiles GRC text read from `in` line by line, handing each resource to `sink` in the order of the
// text: only one line and one resource are held at a time. `fileName` is used in messages only.
GS_HOST_EXPORT bool CompileGrcStream(std::istream& in, const std::string& fileName,
                                     const std::string& imagesDir, const ResourceSink& sink,
                                     std::string* error);

// The same over text already read; `fileName` is used in messages only.
GS_HOST_EXPORT bool CompileGrcText(const std::string& text, const std::string& fileName,
                                   const std::string& imagesDir, ResourceSet* result, std::string* error);

} // namespace achost
