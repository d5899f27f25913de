// The save-file dialog: the host's file dialog with the suite's file types as filters.
#include "DGFileDialog.hpp"
#include "XN_Dialog.hpp"
#include "XN_Resource.hpp"

namespace {

// The creator code and icon the suite gives the types it registers.
constexpr UInt32 kCreatorGSAC = 'GSAC';
constexpr int kFileTypeIcon = 145;

} // namespace

bool XN_Dialog::SaveFile(XN_Location& file, const XN_String& typeName, const XN_String& extension,
                         long macType, const XN_String& title, const XN_String& defaultPath) {
    FTM::FileTypeManager manager("Module");
    const FTM::FileType type(typeName.ToCStr().Get(), extension.ToCStr().Get(), kCreatorGSAC,
                             static_cast<UInt32>(macType), kFileTypeIcon);
    XN_List<FTM::GeneralID> types;
    types.AddData(manager.AddType(type, FTM::RootGroup), -1);

    XN_Location folder, fileName;
    bool given = false;
    if (defaultPath.GetLength() > 0) {
        const unsigned int slash = defaultPath.LastIndexOf('/');
        const bool hasSlash = slash != XN_String::kNotFound;
        const XN_String name = hasSlash ? defaultPath.Substring(slash + 1) : defaultPath;
        // A folder without a file name is not offered either.
        given = name.GetLength() > 0;
        folder.Set(hasSlash ? defaultPath.Substring(0, slash) : XN_String(""));
        fileName.Set(name);
    }
    return SaveFile(file, given ? &folder : nullptr, given ? &fileName : nullptr, title, &types, nullptr);
}

bool XN_Dialog::SaveFile(XN_Location& file, const XN_Location* folder, const XN_Location* fileName,
                         const XN_String& title, XN_List<FTM::GeneralID>* types, long* selectedType) {
    DG::FileDialog dialog(DG::FileDialog::Save);
    for (long i = 0; types != nullptr && i < types->GetCount(); ++i)
        dialog.AddFilter((*types)[i]);
    if (title.GetLength() > 0)
        dialog.SetTitle(XN_ToUniString(title));
    if (folder != nullptr)
        dialog.SetFolder(*folder);
    if (fileName != nullptr)
        dialog.SelectFile(*fileName);
    if (!dialog.Invoke())
        return false;
    file.Set(dialog.GetSelectedFile());
    if (selectedType != nullptr)
        *selectedType = static_cast<long>(dialog.GetSelectedFilter());
    return true;
}
