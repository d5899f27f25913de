// The plain main linked into every fuzz target outside fuzzing builds: runs the target once on every
// file of the folders (or on the files) named on the command line, so the committed corpora run as
// tests and the targets keep building. A missing or empty corpus fails: a test that runs nothing
// would pass for ever.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace {

bool RunFile(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return false;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    // A copy of exactly the input's size, so a read past its end is seen by the address sanitizer.
    std::vector<uint8_t> input(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(input.empty() ? nullptr : input.data(), input.size());
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s CORPUS_FOLDER|FILE...\n", argv[0]);
        return 2;
    }
    long count = 0;
    for (int i = 1; i < argc; ++i) {
        std::error_code error;
        std::vector<std::filesystem::path> files;
        if (std::filesystem::is_directory(argv[i], error)) {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i], error))
                if (entry.is_regular_file())
                    files.push_back(entry.path());
        } else {
            files.emplace_back(argv[i]);
        }
        std::sort(files.begin(), files.end());
        for (const auto& file : files) {
            if (!RunFile(file))
                return 1;
            ++count;
        }
    }
    std::printf("%ld inputs run\n", count);
    if (count == 0) {
        std::fprintf(stderr, "no input found\n");
        return 1;
    }
    return 0;
}
