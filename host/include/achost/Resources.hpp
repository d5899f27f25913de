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

    // The binary image embedded in an add-on. FromImage is false for anything that is not a
    // complete image (a truncated or foreign one included) or holds a resource that breaks the rules
    // of CheckResource; `problem`, when given, then says what is wrong.
    std::string ToImage() const;
    static bool FromImage(const std::string& image, ResourceSet* result, std::string* problem = nullptr);

private:
    std::map<std::pair<GSResType, GSResID>, Resource> resources;
};

// The image written piece by piece, for a writer that holds one resource at a time: the header
// with the number of resources that follow, then each resource's piece, in any order.
GS_HOST_EXPORT std::string ImageHeader(UInt32 count);
GS_HOST_EXPORT std::string ImagePiece(const Resource& resource);
// Where the header's count lies in an image, for a writer that learns it at the end.
constexpr size_t kImageCountOffset = 8;

// What is wrong with a resource: the GRC line of the token at fault (0 when no token is), and why.
struct ResourceProblem {
    int line = 0;
    std::string message;
};

// The rules of each resource type that the host relies on when it serves an add-on: 'STR#' lists
// of strings of at most API_ResStringMaxLength characters, 'GDLG' dialogs with a kind, a frame, a
// title and well-formed item lines, 'DLGH' help entries, one 'MDID' of two 32-bit numbers, 'GICN'
// icons with PNG bytes in `data`. False, with the problem, for the first rule broken.
GS_HOST_EXPORT bool CheckResource(const Resource& resource, ResourceProblem* problem);

// Well-formed UTF-8: no stray continuation bytes, no overlong forms, no surrogates, nothing above
// U+10FFFF.
GS_HOST_EXPORT bool IsValidUtf8(const std::string& s);

// How many UTF-16 units the UTF-8 text takes.
GS_HOST_EXPORT size_t Utf16Length(const std::string& utf8);

// Name of the ELF section of an add-on that holds its resource image.
constexpr const char* kResourceSectionName = ".achost.resources";

} // namespace achost
