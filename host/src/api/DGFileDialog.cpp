// DG::FileDialog: the dialog's settings are kept here until Invoke, which hands them to the session
// as a FileRequest and waits for the user's answer.
#include "DGFileDialog.hpp"

#include "HostImpl.hpp"

using achost::Host;
using achost::Phase;

namespace DG {

namespace {

std::string Utf8(const GS::UniString& text) {
    return text.ToUTF8();
}

std::string PathOf(const IO::Location& location) {
    GS::UniString path;
    return location.ToPath(&path) == NoError ? Utf8(path) : std::string();
}

// "Text Files (*.txt) [TXT]": the filter's text and the type's extensions.
std::string FilterText(FTM::GeneralID id, const GS::UniString& text) {
    FTM::FileType type(nullptr, nullptr, 0, 0, 0);
    if (!FTM::FileTypeManager::GetType(id, &type))
        return Utf8(text);
    return (text.IsEmpty() ? type.GetDescription() : Utf8(text)) + " [" + type.GetExtensions() + "]";
}

} // namespace

FileDialog::FileDialog(Type type) : type(type) {}

FileDialog::~FileDialog() = default;

UIndex FileDialog::AddFilter(FTM::GeneralID id, ExtensionOptions /*options*/) {
    FTM::FileType known(nullptr, nullptr, 0, 0, 0);
    if (!FTM::FileTypeManager::GetType(id, &known))
        if (Host::Impl* s = achost::RunningHost("DG::FileDialog::AddFilter", {Phase::Idle, Phase::Command}))
            s->Violation("DG::FileDialog::AddFilter: no file type " + std::to_string(id) + " is registered");
    filters.push_back(id);
    filterTexts.emplace_back();
    return static_cast<UIndex>(filters.size() - 1);
}

void FileDialog::SetFilterText(UIndex index, const GS::UniString& text) {
    if (index < filterTexts.size())
        filterTexts[index] = text;
}

bool FileDialog::SelectFilter(UIndex index) {
    if (index >= filters.size())
        return false;
    selectedFilter = index;
    return true;
}

UIndex FileDialog::GetSelectedFilter() const {
    return selectedFilter;
}

void FileDialog::SetTitle(const GS::UniString& newTitle) {
    title = newTitle;
}

bool FileDialog::SetFolder(const IO::Location& newFolder) {
    if (newFolder.IsEmpty())
        return false;
    folder = newFolder;
    return true;
}

bool FileDialog::SelectFile(const IO::Location& file) {
    IO::Name name;
    if (file.GetLastLocalName(&name) != NoError)
        return false;
    fileName = name.ToString();
    IO::Location parent = file;
    if (parent.DeleteLastLocalName() == NoError && !parent.IsEmpty())
        folder = parent;
    return true;
}

bool FileDialog::Invoke() {
    selection.clear();
    Host::Impl* s = achost::RunningHost("DG::FileDialog::Invoke", {Phase::Idle, Phase::Command});
    if (s == nullptr)
        return false;
    achost::FileRequest request;
    request.kind = type == Save ? "save" : "open";
    request.title = Utf8(title);
    request.folder = PathOf(folder);
    request.fileName = Utf8(fileName);
    for (size_t i = 0; i < filters.size(); ++i)
        request.filters.push_back(FilterText(filters[i], filterTexts[i]));
    request.selectedFilter = selectedFilter;
    const std::optional<std::string> answer = s->RunFileDialog(std::move(request));
    if (!answer)
        return false;
    selection.emplace_back(answer->c_str());
    return true;
}

USize FileDialog::GetSelectionCount() const {
    return static_cast<USize>(selection.size());
}

const IO::Location& FileDialog::GetSelectedFile(UIndex index) const {
    return index < selection.size() ? selection[index] : none;
}

} // namespace DG
