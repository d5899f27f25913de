// The resource compiler over any GRC text. Icons name images in a folder that holds none, so every
// icon is an error: the compiler reports it, as it reports any other fault, with "file:line: ".
#include "achost/ResourceCompiler.hpp"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 1 << 16)
        return 0;
    const std::string text(reinterpret_cast<const char*>(data), size);
    achost::ResourceSet resources;
    std::string error;
    if (!achost::CompileGrcText(text, "fuzz.grc", "/nonexistent-images", &resources, &error) &&
        error.compare(0, 9, "fuzz.grc:") != 0)
        std::abort();
    return 0;
}
