// The update service against the curl program, side by side in one run, over loopback from the
// host's demo update server:
//   Download/50MiB       XN_General::URLDownload of a 50 MiB file on the host's run loop; the counter
//                        "ratio" is its throughput over curl's for the same file (target >= 0.8).
//   CheckForUpdates      menu command 4 until the result dialog is shown; "curl_ms" is curl fetching
//                        the same versions file and "ratio" the command's time over curl's (target
//                        <= 1.2, or at most 5 ms more than curl).
#include "XN_General.hpp"
#include "achost/Action.hpp"
#include "achost/FrontEnd.hpp"
#include "achost/Host.hpp"
#include "achost/SharedFolder.hpp"
#include "achost/UpdateServer.hpp"

#include <benchmark/benchmark.h>
#include <uv.h>

#include <spawn.h>
#include <sys/wait.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point begin, Clock::time_point end) {
    return std::chrono::duration<double>(end - begin).count();
}

// A temporary folder with update_plugins/ (a 50 MiB file and the bundled versions file) served by the
// demo update server, and the host's shared folder.
class Site {
public:
    Site() {
        char pattern[] = "/tmp/xn_update_bench_XXXXXX";
        root = mkdtemp(pattern) != nullptr ? pattern : "/tmp";
        std::filesystem::create_directories(root + "/update_plugins");
        std::ofstream(root + "/update_plugins/big.bin", std::ios::binary) << std::string(kBigBytes, 'm');
        std::filesystem::copy_file(achost::BundledUpdateFolder() + "/versions16.txt",
                                   root + "/update_plugins/versions16.txt");
        achost::SetSharedFolder(root + "/Shared");
        std::string error;
        server.Start(root + "/update_plugins", &error);
        achost::UseHttpProxy(server.Address());
    }
    ~Site() {
        achost::UseHttpProxy("");
        achost::SetSharedFolder("");
        server.Stop();
        std::error_code ignored;
        std::filesystem::remove_all(root, ignored);
    }
    std::string Url(const std::string& name) const { return server.Address() + "/update_plugins/" + name; }

    static constexpr size_t kBigBytes = 50u << 20;
    std::string root;
    achost::UpdateServer server;
};

// The curl program fetching `url` into `output`; the seconds it took, or -1.
double RunCurl(const std::string& url, const std::string& output) {
    const char* argv[] = {"curl", "-s", "-o", output.c_str(), url.c_str(), nullptr};
    const auto begin = Clock::now();
    pid_t pid = 0;
    if (posix_spawnp(&pid, "curl", nullptr, nullptr, const_cast<char**>(argv), environ) != 0)
        return -1;
    int status = 0;
    waitpid(pid, &status, 0);
    const auto end = Clock::now();
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? Seconds(begin, end) : -1;
}

int CountEnd(XN_URL_Message message, double, void* userData) {
    if (message == XN_URL_Completed)
        ++*static_cast<int*>(userData);
    return 0;
}

void Download(benchmark::State& state) {
    Site site;
    const std::string url = site.Url("big.bin"), file = site.root + "/download.bin";
    double ours = 0, theirs = 0;
    for (auto _ : state) {
        int completed = 0;
        const auto begin = Clock::now();
        XN_General::URLDownload(XN_String(url.c_str()), XN_Location(XN_String(file.c_str())), CountEnd,
                                &completed);
        uv_run(uv_default_loop(), UV_RUN_DEFAULT);
        const double seconds = Seconds(begin, Clock::now());
        const double curl = RunCurl(url, file);
        if (completed != 1 || curl < 0 || std::filesystem::file_size(file) != Site::kBigBytes) {
            state.SkipWithError("a download did not complete");
            break;
        }
        state.SetIterationTime(seconds);
        ours += seconds;
        theirs += curl;
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * Site::kBigBytes));
    state.counters["curl_MiB/s"] = theirs > 0 ? state.iterations() * 50.0 / theirs : 0;
    state.counters["ratio"] = ours > 0 ? theirs / ours : 0;
}

achost::Action Parsed(const char* line) {
    achost::Action action;
    std::string error;
    achost::ParseAction(line, &action, &error);
    return action;
}

void CheckForUpdates(benchmark::State& state) {
    Site site;
    achost::Host host;
    std::string error;
    if (!host.Start(MORAVEL_LIBRARY, &error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    const achost::Action wait = Parsed("wait download"), close = Parsed("close");
    double ours = 0, theirs = 0;
    for (auto _ : state) {
        const auto begin = Clock::now();
        const bool chosen = host.ChooseMenuItem(4, &error) && achost::Perform(host, wait, &error);
        const auto end = Clock::now();
        const achost::Dialog* shown = host.FrontDialog();
        if (!chosen || shown == nullptr || shown->resID != 32755 || !achost::Perform(host, close, &error)) {
            state.SkipWithError(("no result dialog: " + error).c_str());
            break;
        }
        const double curl = RunCurl(site.Url("versions16.txt"), "/dev/null");
        state.SetIterationTime(Seconds(begin, end));
        ours += Seconds(begin, end);
        theirs += curl;
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["curl_ms"] = n > 0 ? theirs / n * 1000 : 0;
    state.counters["ratio"] = theirs > 0 ? ours / theirs : 0;
}

} // namespace

BENCHMARK(Download)->Name("Download/50MiB")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK(CheckForUpdates)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(50);
