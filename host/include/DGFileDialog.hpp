// DG::FileDialog: the host's modal dialog that asks the user for a file to open or save. Build it,
// add filters (file types of FTM), set its title, starting folder and preselected file, then Invoke:
// it waits until the user has chosen or cancelled. Callable from menu commands and dialog callbacks.
#pragma once

#include "FileTypeManager.hpp"
#include "Location.hpp"
#include "UniString.hpp"

#include <vector>

namespace DG {

class GS_HOST_EXPORT FileDialog {
public:
    enum Type { OpenFile, OpenMultiFile, OpenFolder, OpenMultiFolder, Save };
    enum ExtensionOptions { SystemDefault, DisplayExtensions, DontDisplayExtensions };

    explicit FileDialog(Type type);
    ~FileDialog();
    FileDialog(const FileDialog&) = delete;
    FileDialog& operator=(const FileDialog&) = delete;

    // Adds a filter showing the files of type `id` and answers its index (0 for the first); the
    // first filter added is the selected one until SelectFilter. A type the host does not know is
    // reported and still takes an index.
    UIndex AddFilter(FTM::GeneralID id, ExtensionOptions options = SystemDefault);
    // Replaces the text the user sees for filter `index` (the type's description by default).
    void SetFilterText(UIndex index, const GS::UniString& text);
    // Selects filter `index`; false when there is no such filter.
    bool SelectFilter(UIndex index);
    // The filter selected when the user chose (or the one selected beforehand).
    UIndex GetSelectedFilter() const;

    void SetTitle(const GS::UniString& title);
    // The folder the dialog starts in; false for the empty location.
    bool SetFolder(const IO::Location& folder);
    // Preselects a file: its last name is offered as the file name, and its folder (when it has one)
    // becomes the starting folder.
    bool SelectFile(const IO::Location& file);

    // Shows the dialog and waits for the user: true when a file was chosen, false when cancelled
    // (also when no user session runs).
    bool Invoke();
    // How many files were chosen (0 or 1 for Save), and each of them (the empty location past the
    // end). Valid until the next Invoke or the dialog's end.
    USize GetSelectionCount() const;
    const IO::Location& GetSelectedFile(UIndex index = 0) const;

private:
    Type type;
    std::vector<FTM::GeneralID> filters;
    std::vector<GS::UniString> filterTexts;
    UIndex selectedFilter = 0;
    GS::UniString title;
    IO::Location folder;
    GS::UniString fileName;
    std::vector<IO::Location> selection;
    IO::Location none;
};

} // namespace DG
