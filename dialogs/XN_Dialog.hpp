// XN_Dialog: the framework's helpers that tell the user something or ask for a file: the one-button
// alert, the labelled message, and the save-file dialog. Everything runs on the host's user-interface
// thread and returns once the user has answered.
#pragma once

#include "XN_String.hpp"

class XN_Dialog {
public:
    // Shows a modal alert of `kind` (the host's alert kinds; the suite passes -1) with the three texts
    // and one button, general string 64 ("OK"); returns when the user has dismissed it.
    static void ShowAlert(short kind, const XN_String& largeText, const XN_String& smallText,
                          const XN_String& guideText);

    // General string 10 ("Error") when `isError`, else 14 ("Warning"), then `separator`, then `text`
    // with its first character lowered (`lowerFirst`) or raised. An empty text or separator gives "".
    static XN_String SetPrefixString(const XN_String& text, bool isError, const XN_String& separator,
                                     bool lowerFirst);

    // Save-file dialogs (XN_SaveFile.cpp) -------------------------------------------------------
};
