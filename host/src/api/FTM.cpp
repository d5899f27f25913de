// The file-type registry: one list of types for the host's whole life, an ID per distinct type.
#include "FileTypeManager.hpp"

#include <vector>

namespace FTM {

namespace {

// Type n has the ID n (1-based); UnknownType is 0.
std::vector<FileType>& Types() {
    static std::vector<FileType> types;
    return types;
}

} // namespace

FileType::FileType(const char* description, const char* fileExt, UInt32 creator, UInt32 macType, int iconID)
    : description(description != nullptr ? description : ""), extensions(fileExt != nullptr ? fileExt : ""),
      creator(creator), macType(macType), iconID(iconID) {}

bool FileType::operator==(const FileType& other) const {
    return description == other.description && extensions == other.extensions && creator == other.creator &&
           macType == other.macType && iconID == other.iconID;
}

FileTypeManager::FileTypeManager(const char* uniqueID) : name(uniqueID != nullptr ? uniqueID : "") {}

TypeID FileTypeManager::AddType(const FileType& newType, GroupID parent) {
    if (parent != RootGroup)
        return UnknownType;
    const TypeID known = SearchForType(newType);
    if (known != UnknownType)
        return known;
    Types().push_back(newType);
    return static_cast<TypeID>(Types().size());
}

TypeID FileTypeManager::SearchForType(const FileType& type) {
    for (size_t i = 0; i < Types().size(); ++i)
        if (Types()[i] == type)
            return static_cast<TypeID>(i + 1);
    return UnknownType;
}

bool FileTypeManager::GetType(TypeID id, FileType* result) {
    if (id == UnknownType || id > Types().size())
        return false;
    *result = Types()[id - 1];
    return true;
}

} // namespace FTM
