// Library-part lookup over a library of 10,000 parts (100 folders of 100 ".gsm" files, a fifth of
// them doors). IndexByName: XN_LibPart::Index for each part in turn (items_per_second), with the
// counter ratio_to_host_search, its processor time over that of ACAPI_LibPart_Search called directly
// for the same names, block by block (the framework's target is at most 1.2). IndexFolder: the host indexing
// the whole folder, in parts per second. The framework's calls are made from the benchmark itself while a
// do-nothing add-on is loaded, as the add-on would make them between two commands.
#include "ACAPinc.h"
#include "XN_Library.hpp"
#include "achost/Host.hpp"
#include "achost/Library.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace {

constexpr int kParts = 10000;
constexpr int kPerFolder = 100;

std::string PartName(int n) {
    char name[32];
    std::snprintf(name, sizeof name, "Part %05d", n);
    return name;
}

// The library, made once for the program and removed at its end.
class Library {
public:
    Library() {
        char pattern[] = "/tmp/xn_library_bench_XXXXXX";
        folder = mkdtemp(pattern) != nullptr ? pattern : "";
        for (int n = 0; n < kParts; ++n) {
            const std::string sub = folder + "/Folder " + std::to_string(n / kPerFolder);
            std::filesystem::create_directories(sub);
            std::ofstream(sub + "/" + PartName(n) + ".gsm")
                << (n % 5 == 0 ? "! type: Door\n" : "") << "PEN 1\n";
        }
    }
    ~Library() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }
    std::string folder;
};

const Library& TheLibrary() {
    static Library library;
    return library;
}

API_LibTypeID TypeOf(int n) {
    return n % 5 == 0 ? APILib_DoorID : APILib_ObjectID;
}

// One direct host search as the framework makes it: cleared record, name, search, location deleted.
Int32 HostSearch(const std::u16string& name, API_LibTypeID type) {
    API_LibPart part;
    std::memset(&part, 0, sizeof part);
    part.typeID = type;
    std::memcpy(part.docu_UName, name.data(), name.size() * sizeof(GS::uchar_t));
    if (ACAPI_LibPart_Search(&part, false, false) != NoError)
        return -1;
    delete part.location;
    return part.index;
}

// Seconds of this thread's processor time: steadier than the wall clock on a shared machine.
double ThreadSeconds() {
    timespec now;
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// Each iteration looks up a block of kBlock parts through the framework and the same block directly;
// the iteration's time is the framework's block.
void IndexByName(benchmark::State& state) {
    constexpr int kBlock = 1000;
    achost::Host host;
    std::string error;
    if (!host.Start(NOOP_ADDON, &error) || !host.AddLibrary(TheLibrary().folder, &error)) {
        state.SkipWithError(error.c_str());
        return;
    }
    std::vector<XN_String> names;
    std::vector<std::u16string> units;
    for (int n = 0; n < kParts; ++n) {
        names.emplace_back(PartName(n).c_str());
        units.emplace_back(reinterpret_cast<const char16_t*>(names.back().GetBuffer()),
                           names.back().GetLength());
    }
    int first = 0;
    long found = 0;
    double framework = 0, direct = 0;
    bool frameworkFirst = true;
    for (auto _ : state) {
        // Whichever runs second finds the block's parts in the caches: the two take turns.
        double frameworkTime = 0, directTime = 0;
        for (int turn = 0; turn < 2; ++turn) {
            const bool viaFramework = (turn == 0) == frameworkFirst;
            const double start = ThreadSeconds();
            for (int n = first; n < first + kBlock; ++n)
                found += (viaFramework ? XN_LibPart::Index(names[static_cast<size_t>(n)], TypeOf(n))
                                       : HostSearch(units[static_cast<size_t>(n)], TypeOf(n))) > 0;
            (viaFramework ? frameworkTime : directTime) = ThreadSeconds() - start;
        }
        state.SetIterationTime(frameworkTime);
        framework += frameworkTime;
        direct += directTime;
        frameworkFirst = !frameworkFirst;
        first = (first + kBlock) % kParts;
    }
    if (found != 2 * kBlock * static_cast<long>(state.iterations()))
        state.SkipWithError("a part was not found");
    state.SetItemsProcessed(state.iterations() * kBlock);
    state.counters["host_search_ns"] = direct * 1e9 / (static_cast<double>(state.iterations()) * kBlock);
    state.counters["ratio_to_host_search"] = direct > 0 ? framework / direct : 0;
}
BENCHMARK(IndexByName)->UseManualTime()->Unit(benchmark::kMicrosecond);

void IndexFolder(benchmark::State& state) {
    const std::string& folder = TheLibrary().folder;
    for (auto _ : state) {
        achost::LibraryManager manager;
        if (manager.AddFolder(folder) != NoError || manager.Count() != kParts)
            state.SkipWithError("the folder was not indexed whole");
    }
    state.SetItemsProcessed(state.iterations() * kParts);
}
BENCHMARK(IndexFolder)->Unit(benchmark::kMillisecond);

} // namespace
