// FTM: the host's registry of file types, which file dialogs use as their filters. A file type is
// a description, its extensions, a creator and a Macintosh type code and an icon. Types are kept for
// the host's whole life; adding a type that is already known answers the ID it already has, so
// registering the same type again and again costs nothing.
#pragma once

#include "GSRoot.hpp"

#include <string>

namespace FTM {

typedef UInt32 TypeID;
typedef UInt32 GroupID;
// A type or a group, where either is accepted (a file dialog's filter).
typedef UInt32 GeneralID;

const TypeID UnknownType = 0;
// The group every type belongs to unless it is added to another one.
const GroupID RootGroup = 0x80000000u;

class GS_HOST_EXPORT FileType {
public:
    // `fileExt` holds one extension or several separated by ";" (no "."); both texts are 8-bit and
    // copied. Null texts read as empty.
    FileType(const char* description, const char* fileExt, UInt32 creator, UInt32 macType, int iconID);

    const std::string& GetDescription() const { return description; }
    const std::string& GetExtensions() const { return extensions; }
    UInt32 GetCreator() const { return creator; }
    UInt32 GetMacType() const { return macType; }
    int GetIconID() const { return iconID; }
    bool operator==(const FileType& other) const;

private:
    std::string description, extensions;
    UInt32 creator = 0, macType = 0;
    int iconID = 0;
};

class GS_HOST_EXPORT FileTypeManager {
public:
    // A registry named `uniqueID`: the add-on's own view of the host's types.
    explicit FileTypeManager(const char* uniqueID);

    // Adds `newType` to `parent` (only RootGroup exists here) and answers its ID; the ID it already
    // has when the same type was added before. UnknownType for another parent.
    TypeID AddType(const FileType& newType, GroupID parent = RootGroup);
    // The ID of a type equal to `type`, or UnknownType.
    static TypeID SearchForType(const FileType& type);
    // The type with `id`; false when there is none.
    static bool GetType(TypeID id, FileType* result);

private:
    std::string name;
};

} // namespace FTM
