// The add-on's resources as the host keeps them: parsed from its GRC text by the resource compiler,
// carried inside the add-on's shared library as a binary image, read back by the host.
// Host-side only: tests, tools and achost include this, the add-on never does.
#pragma once

#include "GSRoot.hpp"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace achost {

// One word, number or quoted string of a resource, with the GRC line it came from.
struct ResToken {
    enum Kind : UInt8 { Word, Number, String };
    Kind kind = Word;
    std::string text; // the word, or the string's UTF-8 text after escapes
    Int64 number = 0;
    int line = 0;
};

// One resource: `'TYPE' id <header> { <body> }`. The header holds what stands between the ID and the
// brace (a description, a dialog's kind and frame); the body is kept line by line because dialog
// items are one per line. Icons carry their image file's bytes in `data`.
struct Resource {
    GSResType type = 0;
    GSResID id = 0;
    std::vector<ResToken> header;
    std::vector<std::vector<ResToken>> body;
    std::string data;
};

constexpr GSResType ResType(const char (&four)[5]) {
    return (GSResType(UInt8(four[0])) << 24) | (GSResType(UInt8(four[1])) << 16) |
           (GSResType(UInt8(four[2])) << 8) | GSResType(UInt8(four[3]));
}
GS_HOST_EXPORT std::string ResTypeName(GSResType type);

// Every resource of one add-on, looked up by type and ID.
class GS_HOST_EXPORT ResourceSet {
public:
    // Adds a resource; false (and nothing added) when one of the same type and ID exists.
    bool Add(Resource resource);
    const Resource* Find(GSResType type, GSResID id) const;
    const std::map<std::pair<GSResType, GSResID>, Resource>& All() const { return resources; }

    // The strings of 'STR#' id in order, or nothing when there is no such list.
    std::optional<std::vector<std::string>> Strings(GSResID id) const;
    // String `index` (1-based) of 'STR#' id, or nothing.
    std::optional<std::string> String(GSResID id, Int32 index) const;

    // The binary image embedded in an add-on; FromImage is false for anything that is not a
    // complete image (a truncated or foreign one included).
    std::string ToImage() const;
    static bool FromImage(const std::string& image, ResourceSet* result);

private:
    std::map<std::pair<GSResType, GSResID>, Resource> resources;
};

// Name of the ELF section of an add-on that holds its resource image.
constexpr const char* kResourceSectionName = ".achost.resources";

} // namespace achost
