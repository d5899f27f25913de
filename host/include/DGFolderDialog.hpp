// DG::FolderDialog: the host's modal dialog that asks the user for a folder. Set its title and
// starting folder, then Invoke: it waits until the user has chosen or cancelled. Callable from menu
// commands and dialog callbacks.
#pragma once

#include "Location.hpp"
#include "UniString.hpp"

namespace DG {

class GS_HOST_EXPORT FolderDialog {
public:
    FolderDialog();
    ~FolderDialog();
    FolderDialog(const FolderDialog&) = delete;
    FolderDialog& operator=(const FolderDialog&) = delete;

    void SetTitle(const GS::UniString& title);
    // The folder the dialog starts in; false for the empty location.
    bool SetFolder(const IO::Location& folder);

    // Shows the dialog and waits for the user: true when a folder was chosen, false when cancelled
    // (also when no user session runs). The host takes the user's answer as it is: the path need not
    // name an existing folder.
    bool Invoke();
    // The folder chosen by the last Invoke (the starting folder before that, the empty location
    // when there is none).
    IO::Location GetFolder() const;

private:
    GS::UniString title;
    IO::Location folder;
};

} // namespace DG
