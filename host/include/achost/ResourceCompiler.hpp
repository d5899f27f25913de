// The resource compiler: reads an add-on's GRC file ('STR#', 'GDLG', 'DLGH', 'GICN', 'MDID' resources,
// C comments, #define of numbers, UTF-8 with or without a byte-order mark) and the icon images it
// names. Host-side only.
#pragma once

#include "achost/Resources.hpp"

#include <string>

namespace achost {

// Compiles grcPath; icon images are read from imagesDir (`<base name>.png`, or `<id>.png` for an icon
// with an empty body). On failure returns false with `error` = "file:line: message" for the first
// error found; `result` is then unspecified.
GS_HOST_EXPORT bool CompileGrc(const std::string& grcPath, const std::string& imagesDir, ResourceSet* result,
                               std::string* error);

// The same over text already read; `fileName` is used in messages only.
GS_HOST_EXPORT bool CompileGrcText(const std::string& text, const std::string& fileName,
                                   const std::string& imagesDir, ResourceSet* result, std::string* error);

} // namespace achost
