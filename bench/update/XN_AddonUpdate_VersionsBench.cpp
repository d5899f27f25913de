// XN_AddonUpdate_ReadVersionsFile of a 10,000-line file, side by side with the plainest standard
// C++ reading of the same file: decoded to UTF-16 and cut into lines and words held in
// std::vector<std::u16string>. The counter "ratio" of BM_ReadVersionsFile is its time per file over
// that of the vectors, measured in the same run.
#include "XN_AddonUpdate_Versions.hpp"
#include "achost/SharedFolder.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

const long kLines = 10000;

// A shared folder for the run holding a versions file of kLines lines, removed at exit: blocks of
// ten lines with an add-on, a library and a message with their descriptions, a comment and a blank.
class BenchFile {
public:
    BenchFile() {
        char name[] = "/tmp/xn_update_bench_XXXXXX";
        if (mkdtemp(name) != nullptr)
            folder = name;
        achost::SetSharedFolder(folder);
        path = folder + "/" + XN_ADDONUPDATE_TEMP_FILE_NAME;
        std::ofstream out(path, std::ios::binary);
        for (long block = 0; block < kLines / 10; ++block) {
            const std::string n = std::to_string(block);
            out << "* block " << n << "\n"
                << "Addon" << n << " 19.0." << block % 100 << ".2200 (AC190) 03/08/2018 ita int fra\n"
                << "# Improvements of release " << n << "\n#  - faster \xC3\xA9l\xC3\xA9ments\n"
                << "Library" << n << " 01-02-2019\n# Object library\n"
                << "MESSAGE 01/01/2018 31/12/2018\n# Read the notes at http://example/" << n << "\n"
                << "#\n\n";
        }
    }
    ~BenchFile() {
        std::error_code error;
        std::filesystem::remove_all(folder, error);
    }

    std::string folder, path;
};

const BenchFile& File() {
    static BenchFile file;
    return file;
}

// UTF-8 to UTF-16 for well-formed input (the file is), with no validation.
std::u16string Decode(const std::string& bytes) {
    std::u16string text;
    text.reserve(bytes.size());
    for (size_t i = 0; i < bytes.size();) {
        const unsigned char b = static_cast<unsigned char>(bytes[i]);
        const int extra = b < 0x80 ? 0 : b < 0xE0 ? 1 : b < 0xF0 ? 2 : 3;
        char32_t c = extra == 0 ? b : b & (0x3F >> extra);
        for (int k = 1; k <= extra && i + k < bytes.size(); ++k)
            c = (c << 6) | (static_cast<unsigned char>(bytes[i + k]) & 0x3F);
        i += extra + 1;
        if (c >= 0x10000) {
            text += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
            text += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
        } else {
            text += static_cast<char16_t>(c);
        }
    }
    return text;
}

// Reads the file, cuts it into lines (LF, CR LF, lone CR) and every line into words at runs of
// blanks and tabs. Returns the number of words, so nothing is optimised away.
size_t SplitIntoVectors(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    const std::u16string text = Decode(std::string(std::istreambuf_iterator<char>(in), {}));
    std::vector<std::u16string> lines;
    size_t start = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\n' || text[i] == u'\r') {
            lines.emplace_back(text, start, i - start);
            if (text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n')
                ++i;
            start = i + 1;
        }
    }
    lines.emplace_back(text, start);
    size_t words = 0;
    std::vector<std::u16string> split;
    for (const std::u16string& line : lines) {
        split.clear();
        size_t from = 0;
        for (size_t i = 0; i <= line.size(); ++i) {
            if (i == line.size() || line[i] == u' ' || line[i] == u'\t') {
                split.emplace_back(line, from, i - from);
                while (i + 1 < line.size() && (line[i + 1] == u' ' || line[i + 1] == u'\t'))
                    ++i;
                from = i + 1;
            }
        }
        words += split.size();
    }
    return words;
}

bool ReadOnce(long& records) {
    XN_List<XN_AddonUpdate_Message> messages;
    XN_List<XN_AddonUpdate_Addon> addons;
    XN_List<XN_AddonUpdate_Library> libraries;
    const bool read = XN_AddonUpdate_ReadVersionsFile(messages, addons, libraries);
    records = messages.GetCount() + addons.GetCount() + libraries.GetCount();
    return read;
}

void BM_SplitIntoVectors(benchmark::State& state) {
    const std::string& path = File().path;
    for (auto _ : state)
        benchmark::DoNotOptimize(SplitIntoVectors(path));
    state.SetItemsProcessed(state.iterations() * kLines);
}

void BM_ReadVersionsFile(benchmark::State& state) {
    const std::string& path = File().path;
    long records = 0;
    for (auto _ : state) {
        if (!ReadOnce(records) || records != kLines / 10 * 3)
            state.SkipWithError("the versions file did not read as written");
    }
    state.SetItemsProcessed(state.iterations() * kLines);
    // The ratio, from alternating runs of both so that both see the same machine load.
    using Clock = std::chrono::steady_clock;
    Clock::duration parser{}, vectors{};
    for (int i = 0; i < 5; ++i) {
        const Clock::time_point start = Clock::now();
        ReadOnce(records);
        const Clock::time_point middle = Clock::now();
        benchmark::DoNotOptimize(SplitIntoVectors(path));
        parser += middle - start;
        vectors += Clock::now() - middle;
    }
    state.counters["ratio"] = static_cast<double>(parser.count()) / static_cast<double>(vectors.count());
}

} // namespace

BENCHMARK(BM_SplitIntoVectors)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ReadVersionsFile)->Unit(benchmark::kMillisecond);
