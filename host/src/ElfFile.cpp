#include "achost/ElfFile.hpp"

#include <elf.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

namespace achost {

namespace {

template <typename T>
bool ReadAt(const std::string& bytes, size_t offset, T* value) {
    if (offset > bytes.size() || sizeof(T) > bytes.size() - offset)
        return false;
    std::memcpy(value, bytes.data() + offset, sizeof(T));
    return true;
}

bool Fits(const std::string& bytes, size_t offset, size_t size) {
    return offset <= bytes.size() && size <= bytes.size() - offset;
}

} // namespace

bool ElfFile::Open(const std::string& path, std::string* error) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        *error = "cannot read " + path;
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    Elf64_Ehdr header;
    if (!ReadAt(bytes, 0, &header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        *error = path + " is not a shared library (no ELF header)";
        return false;
    }
    if (header.e_ident[EI_CLASS] != ELFCLASS64 || header.e_ident[EI_DATA] != ELFDATA2LSB ||
        header.e_shentsize != sizeof(Elf64_Shdr) ||
        !Fits(bytes, header.e_shoff, size_t(header.e_shnum) * sizeof(Elf64_Shdr))) {
        *error = path + " is not a 64-bit little-endian ELF file this host can load";
        return false;
    }
    return true;
}

bool ElfFile::FindSection(const std::string& name, Span* span, UInt32* link) const {
    Elf64_Ehdr header;
    ReadAt(bytes, 0, &header);
    Elf64_Shdr names;
    if (!ReadAt(bytes, header.e_shoff + size_t(header.e_shstrndx) * sizeof(Elf64_Shdr), &names) ||
        !Fits(bytes, names.sh_offset, names.sh_size))
        return false;
    for (size_t i = 0; i < header.e_shnum; ++i) {
        Elf64_Shdr section;
        ReadAt(bytes, header.e_shoff + i * sizeof(Elf64_Shdr), &section);
        if (section.sh_name >= names.sh_size || section.sh_type == SHT_NOBITS)
            continue;
        const char* sectionName = bytes.data() + names.sh_offset + section.sh_name;
        const size_t room = names.sh_size - section.sh_name;
        if (strnlen(sectionName, room) == name.size() && name.compare(0, name.size(), sectionName) == 0 &&
            Fits(bytes, section.sh_offset, section.sh_size)) {
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
    contents->assign(bytes, span.offset, span.size);
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
        ReadAt(bytes, at, &symbol);
        const unsigned bind = ELF64_ST_BIND(symbol.st_info);
        if (symbol.st_shndx == SHN_UNDEF || symbol.st_name >= strings.size ||
            (bind != STB_GLOBAL && bind != STB_WEAK) || ELF64_ST_VISIBILITY(symbol.st_other) != STV_DEFAULT)
            continue;
        const char* name = bytes.data() + strings.offset + symbol.st_name;
        result.emplace_back(name, strnlen(name, strings.size - symbol.st_name));
    }
    std::sort(result.begin(), result.end());
    return result;
}

} // namespace achost
