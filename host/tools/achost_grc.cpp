// achost-grc: the resource compiler run by the build. Compiles an add-on's GRC file and its icon
// images into a binary image, and writes an assembly file that embeds the image in a section of the
// add-on's shared library. An error is printed as "file:line: message" and fails the build.
#include "achost/ResourceCompiler.hpp"

#include <cstring>
#include <fstream>
#include <iostream>

namespace {

const char kUsage[] = "usage: achost-grc GRC --images DIR --output IMAGE --asm ASSEMBLY\n";

bool WriteFile(const std::string& path, const std::string& contents) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << contents;
    return static_cast<bool>(out.flush());
}

std::string AssemblerString(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text)
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return quoted + "\"";
}

} // namespace

int main(int argc, char** argv) {
    std::string grc, images, output, assembly;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--images") == 0 && hasValue)
            images = argv[++i];
        else if (std::strcmp(argv[i], "--output") == 0 && hasValue)
            output = argv[++i];
        else if (std::strcmp(argv[i], "--asm") == 0 && hasValue)
            assembly = argv[++i];
        else if (argv[i][0] != '-' && grc.empty())
            grc = argv[i];
        else {
            std::cerr << kUsage;
            return 2;
        }
    }
    if (grc.empty() || output.empty() || assembly.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    achost::ResourceSet resources;
    std::string error;
    if (!achost::CompileGrc(grc, images.empty() ? "." : images, &resources, &error)) {
        std::cerr << error << "\n";
        return 1;
    }
    const std::string embed = std::string("\t.section ") + achost::kResourceSectionName +
                              ",\"\",@progbits\n\t.incbin " + AssemblerString(output) +
                              "\n\t.section .note.GNU-stack,\"\",@progbits\n";
    if (!WriteFile(output, resources.ToImage()) || !WriteFile(assembly, embed)) {
        std::cerr << "achost-grc: cannot write " << output << " or " << assembly << "\n";
        return 1;
    }
    return 0;
}
