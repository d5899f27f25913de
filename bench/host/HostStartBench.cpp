// Host start to menu shown: read the add-on's resources, load it, run CheckEnvironment,
// RegisterInterface and Initialize (for MoravelLibrary: 42 menu texts set). MoravelLibrary is
// measured beside an add-on that does nothing, so the add-on's own share shows.
#include "achost/Host.hpp"
#include "achost/SharedFolder.hpp"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>

namespace {

// The add-on's shared folder lives in a fresh temporary folder for the run.
class SharedFolderScope {
public:
    SharedFolderScope() {
        char pattern[] = "/tmp/achost_bench_XXXXXX";
        folder = mkdtemp(pattern) != nullptr ? pattern : "";
        achost::SetSharedFolder(folder + "/Shared");
    }
    ~SharedFolderScope() {
        achost::SetSharedFolder("");
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

private:
    std::string folder;
};

void StartHost(benchmark::State& state, const char* addon) {
    SharedFolderScope shared;
    achost::Host host;
    std::string error;
    for (auto _ : state) {
        const auto begin = std::chrono::steady_clock::now();
        const bool started = host.Start(addon, &error);
        const auto end = std::chrono::steady_clock::now();
        if (!started) {
            state.SkipWithError(error.c_str());
            break;
        }
        state.SetIterationTime(std::chrono::duration<double>(end - begin).count());
        host.Quit();
    }
}

} // namespace

BENCHMARK_CAPTURE(StartHost, MoravelLibrary, MORAVEL_LIBRARY)->UseManualTime()->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(StartHost, DoNothingAddon, NOOP_ADDON)->UseManualTime()->Unit(benchmark::kMicrosecond);
