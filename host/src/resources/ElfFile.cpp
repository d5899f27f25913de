#include "achost/ElfFile.hpp"
#include "achost/RegularFile.hpp"

#include <elf.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace achost {

namespace {

bool Fits(size_t fileSize, size_t offset, size_t size) {
    return offset <= fileSize && size <= fileSize - offset;
}

template <typename T>
bool ReadAt(const char* bytes, size_t fileSize, size_t offset, T* value) {
    if (!Fits(fileSize, offset, sizeof(T)))
        return false;
    std::memcpy(value, bytes + offset, sizeof(T));
    return true;
}

} // namespace

ElfFile::~ElfFile() {
    Unmap();
}

void ElfFile::Unmap() {
    if (bytes != nullptr)
        munmap(const_cast<char*>(bytes), size);
    bytes = nullptr;
    size = 0;
}

bool ElfFile::Open(const std::string& path, std::string* error) {
    Unmap();
    struct stat info;
    FileRefusal refusal;
    std::string reason;
    const int fd = OpenRegularFile(path, &info, &refusal, &reason);
    if (fd < 0) {
        *error = refusal == FileRefusal::Missing  ? "cannot read " + path + ": no such file"
                 : refusal == FileRefusal::Folder ? path + " is a folder, not a shared library"
                 : refusal == FileRefusal::Special
                     ? path + " is not a regular file (a device, a FIFO or a socket)"
                     : "cannot read " + path + ": " + reason;
        return false;
    }
    void* mapped =
        info.st_size > 0 ? mmap(nullptr, size_t(info.st_size), PROT_READ, MAP_PRIVATE, fd, 0) : MAP_FAILED;
    close(fd);
    Elf64_Ehdr header;
    if (mapped != MAP_FAILED) {
        bytes = static_cast<const char*>(mapped);
        size = size_t(info.st_size);
    }
    if (!ReadAt(bytes, size, 0, &header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        *error = path + " is not a shared library (no ELF header)";
        return false;
    }
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
        header.e_shentsize != sizeof(Elf64_Shdr) ||
        !Fits(size, header.e_shoff, size_t(header.e_shnum) * sizeof(Elf64_Shdr))) {
        *error = path + " is not a 64-bit little-endian ELF file this host can load";
        return false;
    }
    return true;
}

bool ElfFile::FindSection(const std::string& name, Span* span, UInt32* link) const {
    Elf64_Ehdr header;
    ReadAt(bytes, size, 0, &header);
    Elf64_Shdr names;
    if (!ReadAt(bytes, size, header.e_shoff + size_t(header.e_shstrndx) * sizeof(Elf64_Shdr), &names) ||
        !Fits(size, names.sh_offset, names.sh_size))
        return false;
    for (size_t i = 0; i < header.e_shnum; ++i) {
        Elf64_Shdr section;
        ReadAt(bytes, size, header.e_shoff + i * sizeof(Elf64_Shdr), &section);
        if (section.sh_name >= names.sh_size || section.sh_type == SHT_NOBITS)
            continue;
        const char* sectionName = bytes + names.sh_offset + section.sh_name;
        const size_t room = names.sh_size - section.sh_name;
        if (strnlen(sectionName, room) == name.size() && name.compare(0, name.size(), sectionName) == 0 &&
            Fits(size, section.sh_offset, section.sh_size)) {
            span->offset = section.sh_offset;
            span->size = section.sh_size;
            if (link != nullptr)
                *link = section.sh_link;
            return true;
        }
    }
    return false;
}

bool ElfFile::Section(const std::string& name, std::string* contents) const {
    Span span;
    if (!FindSection(name, &span))
        return false;
    contents->assign(bytes + span.offset, span.size);
    return true;
}

std::vector<std::string> ElfFile::Exports() const {
    std::vector<std::string> result;
    Span symbols, strings;
    if (!FindSection(".dynsym", &symbols) || !FindSection(".dynstr", &strings))
        return result;
    for (size_t at = symbols.offset; at + sizeof(Elf64_Sym) <= symbols.offset + symbols.size;
         at += sizeof(Elf64_Sym)) {
        Elf64_Sym symbol;
        ReadAt(bytes, size, at, &symbol);
        const unsigned bind = ELF64_ST_BIND(symbol.st_info);
        if (symbol.st_shndx == SHN_UNDEF || symbol.st_name >= strings.size ||
            (bind != STB_GLOBAL && bind != STB_WEAK) || ELF64_ST_VISIBILITY(symbol.st_other) != STV_DEFAULT)
            continue;
        const char* name = bytes + strings.offset + symbol.st_name;
        result.emplace_back(name, strnlen(name, strings.size - symbol.st_name));
    }
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace achost
