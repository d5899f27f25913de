// The desktop's default applications: opening a document, a folder or a web address the way the
// user's desktop does (a double click, a link). The target is handed over as one argument, never
// through a shell, so any character in a path is taken as it is. Callable from menu commands and
// dialog callbacks.
#pragma once

#include "GSRoot.hpp"
#include "UniString.hpp"

namespace Desktop {

// Opens `target` (an absolute path or a web address) with its default application and returns
// once the request is handed over: NoError, ErrParam for an empty target, APIERR_GENERAL when the
// desktop could not be asked or reported a failure. The host records every request; a session that
// does not launch (a script or a test, unless asked to) only records it and answers NoError.
GS_HOST_EXPORT GSErrCode OpenWithDefaultApplication(const GS::UniString& target);

} // namespace Desktop
