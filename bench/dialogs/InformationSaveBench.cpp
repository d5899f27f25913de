// One save of the information file as a person does it in the host: menu command 6, the dialog
// shown, Save, the save dialog answered, the file written, OK. Measured against opening and closing
// the language dialog (menu command 3, Cancel), the cheapest dialog round trip of the add-on; the
// ratio is the counter ratio_to_language_dialog. Argument 0 saves a new file each time; 1 replaces
// the same file, which on ext4 adds the file system's flush of a truncated file (several ms).
#include "achost/FrontEnd.hpp"
#include "achost/SharedFolder.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>

namespace {

class TempScope {
public:
    TempScope() {
        char pattern[] = "/tmp/achost_bench_XXXXXX";
        folder = mkdtemp(pattern) != nullptr ? pattern : "";
        achost::SetSharedFolder(folder + "/Shared");
    }
    ~TempScope() {
        achost::SetSharedFolder("");
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
};

// Seconds one driver session of `lines` takes.
double Session(achost::Host& host, const std::vector<std::string>& lines) {
    achost::DriverFrontEnd driver;
    for (const std::string& line : lines)
        driver.Add(line);
    const auto begin = std::chrono::steady_clock::now();
    achost::RunSession(host, driver);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

const std::vector<std::string> kLanguageDialog = {"menu 3", "click 2"};

void SaveInformation(benchmark::State& state) {
    TempScope temp;
    achost::Host host;
    std::string error;
    if (!host.Start(MORAVEL_LIBRARY, &error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const bool replace = state.range(0) == 1;
    double reference = 0;
    const int kReferenceRuns = 200;
    for (int i = 0; i < kReferenceRuns; ++i)
        reference += Session(host, kLanguageDialog);
    reference /= kReferenceRuns;
    double total = 0;
    int saved = 0;
    for (auto _ : state) {
        const std::string file =
            temp.folder + "/Information" + (replace ? "" : std::to_string(saved++)) + ".txt";
        const double seconds =
            Session(host, {"menu 6", "click 16", "answer save \"" + file + "\"", "click 1"});
        total += seconds;
        state.SetIterationTime(seconds);
    }
    if (!std::filesystem::exists(temp.folder + (replace ? "/Information.txt" : "/Information0.txt")))
        state.SkipWithError("the information file was not written");
    state.counters["ratio_to_language_dialog"] = total / static_cast<double>(state.iterations()) / reference;
    state.counters["language_dialog_us"] = reference * 1e6;
}

void OpenCloseLanguageDialog(benchmark::State& state) {
    TempScope temp;
    achost::Host host;
    std::string error;
    if (!host.Start(MORAVEL_LIBRARY, &error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    for (auto _ : state)
        state.SetIterationTime(Session(host, kLanguageDialog));
}

} // namespace

BENCHMARK(SaveInformation)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK(OpenCloseLanguageDialog)->UseManualTime()->Unit(benchmark::kMicrosecond);
