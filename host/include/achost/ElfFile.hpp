// Reads what the host needs from an add-on's shared-library file without loading it: a named
// section (the embedded resources) and the exported symbols (to check the export list).
// Host-side only. 64-bit little-endian ELF files, the kind this host loads.
#pragma once

#include "GSRoot.hpp"

#include <string>
#include <vector>

namespace achost {

class GS_HOST_EXPORT ElfFile {
public:
    ElfFile() = default;
    ~ElfFile();
    ElfFile(const ElfFile&) = delete;
    ElfFile& operator=(const ElfFile&) = delete;

    // Maps the file (only the parts read are brought in); false with a message when it cannot be
    // read or is not a 64-bit ELF file.
    bool Open(const std::string& path, std::string* error);

    // The bytes of the section called `name`; false when there is none.
    bool Section(const std::string& name, std::string* contents) const;
    // Names of the symbols the file defines and exports dynamically, sorted.
    std::vector<std::string> Exports() const;

private:
    struct Span {
        size_t offset = 0, size = 0;
    };
    bool FindSection(const std::string& name, Span* span, UInt32* link = nullptr) const;

    void Unmap();

    const char* bytes = nullptr;
    size_t size = 0;
};

} // namespace achost
