// SplitLines then SplitBySpaces on every line of a 10,000-line text, against the same splitting
// (same rules, same null/empty pieces) into std::vector<std::u16string>. Each list's block is resized
// once per split; each piece still owns a heap buffer, where std::u16string keeps short words inline.
#include "XN_List.hpp"
#include "XN_String.hpp"

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

namespace {

// Lines shaped like the versions file: words separated by single and repeated blanks and tabs,
// with the three kinds of line end and a few empty lines.
const std::u16string& Lines() {
    static const std::u16string text = [] {
        const char16_t* shapes[] = {
            u"MoravelLibrary 19.0.4.2200 AC190 03/08/2018\n",
            u"MVL_Library\t19.0.2  AC190 \t 12/01/2018\r\n",
            u"  message 2018-03-08 New objects are available for download\r",
            u"\n",
        };
        std::u16string all;
        for (int i = 0; i < 10000; ++i)
            all += shapes[i % 4];
        return all;
    }();
    return text;
}

void XN_String_SplitLinesAndWords(benchmark::State& state) {
    XN_String text(reinterpret_cast<const unsigned short*>(Lines().c_str()));
    for (auto _ : state) {
        XN_List<XN_String> lines;
        text.SplitLines(lines, true, true);
        long words = 0;
        XN_List<XN_String> lineWords;
        for (long i = 0; i < lines.GetCount(); ++i) {
            lines[i].SplitBySpaces(lineWords);
            words += lineWords.GetCount();
        }
        benchmark::DoNotOptimize(words);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}

std::vector<std::u16string> SplitLines(const std::u16string& text) {
    std::vector<std::u16string> lines;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size();) {
        if (text[i] != u'\n' && text[i] != u'\r') {
            ++i;
            continue;
        }
        lines.push_back(text.substr(start, i - start));
        i += text[i] == u'\r' && i + 1 < text.size() && text[i + 1] == u'\n' ? 2 : 1;
        start = i;
    }
    lines.push_back(text.substr(start));
    return lines;
}

void SplitWords(const std::u16string& line, std::vector<std::u16string>& words) {
    words.clear();
    std::size_t start = 0;
    for (std::size_t i = 0; i < line.size();) {
        if (line[i] != u' ' && line[i] != u'\t') {
            ++i;
            continue;
        }
        words.push_back(line.substr(start, i - start));
        while (i < line.size() && (line[i] == u' ' || line[i] == u'\t'))
            ++i;
        start = i;
    }
    words.push_back(line.substr(start));
}

void Std_SplitLinesAndWords(benchmark::State& state) {
    const std::u16string& text = Lines();
    for (auto _ : state) {
        std::vector<std::u16string> lines = SplitLines(text);
        long words = 0;
        std::vector<std::u16string> lineWords;
        for (const std::u16string& line : lines) {
            SplitWords(line, lineWords);
            words += static_cast<long>(lineWords.size());
        }
        benchmark::DoNotOptimize(words);
    }
    state.SetItemsProcessed(state.iterations() * 10000);
}

} // namespace

BENCHMARK(XN_String_SplitLinesAndWords)->Unit(benchmark::kMicrosecond);
BENCHMARK(Std_SplitLinesAndWords)->Unit(benchmark::kMicrosecond);
