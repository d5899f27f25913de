// DG::FolderDialog: handed to the session as a FileRequest of kind "folder" at Invoke, answered like
// the file dialogs.
#include "DGFolderDialog.hpp"

#include "HostImpl.hpp"

namespace DG {

FolderDialog::FolderDialog() = default;

FolderDialog::~FolderDialog() = default;

void FolderDialog::SetTitle(const GS::UniString& newTitle) {
    title = newTitle;
}

bool FolderDialog::SetFolder(const IO::Location& newFolder) {
    if (newFolder.IsEmpty())
        return false;
    folder = newFolder;
    return true;
}

bool FolderDialog::Invoke() {
    achost::Host::Impl* s =
        achost::RunningHost("DG::FolderDialog::Invoke", {achost::Phase::Idle, achost::Phase::Command});
    if (s == nullptr)
        return false;
    achost::FileRequest request;
    request.kind = "folder";
    request.title = title.ToUTF8();
    GS::UniString start;
    if (folder.ToPath(&start) == NoError)
        request.folder = start.ToUTF8();
    const std::optional<std::string> answer = s->RunFileDialog(std::move(request));
    if (!answer)
        return false;
    folder = IO::Location(answer->c_str());
    return true;
}

IO::Location FolderDialog::GetFolder() const {
    return folder;
}

} // namespace DG
