// Load and Save of the shared settings store, with 20 records and with an image of about 100,000
// bytes (990 records of 100 bytes). Target: under 1 ms each for the large image.
#include "XN_AddonSettings.hpp"
#include "achost/SharedFolder.hpp"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

const XN_AddonSettings_Type kShared = XN_AddonSettings_AllAddons;

// A private shared folder for the whole run, removed at exit.
class BenchFolder {
public:
    BenchFolder() {
        char name[] = "/tmp/xn_config_bench_XXXXXX";
        if (mkdtemp(name) != nullptr)
            path = name;
        achost::SetSharedFolder(path);
    }
    ~BenchFolder() {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }

private:
    std::string path;
};

BenchFolder& Folder() {
    static BenchFolder folder;
    return folder;
}

// `count` records of 100 bytes each in the image: "$Key_0001: " + 88 value bytes + line feed.
void FillStore(long count) {
    Folder();
    XN_AddonSettings_Clear(kShared);
    const std::string value(88, 'v');
    for (long i = 0; i < count; ++i) {
        char key[32];
        std::snprintf(key, sizeof key, "Key_%04ld", i);
        XN_AddonSettings_Set(kShared, key, value.c_str(), true);
    }
}

void BM_Save(benchmark::State& state) {
    FillStore(state.range(0));
    for (auto _ : state) {
        if (!XN_AddonSettings_Save(kShared))
            state.SkipWithError("Save failed");
    }
    state.SetBytesProcessed(state.iterations() * state.range(0) * 100);
}

void BM_Load(benchmark::State& state) {
    FillStore(state.range(0));
    if (!XN_AddonSettings_Save(kShared))
        state.SkipWithError("Save failed");
    for (auto _ : state) {
        if (!XN_AddonSettings_Load(kShared, false))
            state.SkipWithError("Load failed");
    }
    if (XN_AddonSettings_GetCount(kShared) != state.range(0))
        state.SkipWithError("wrong record count");
    state.SetBytesProcessed(state.iterations() * state.range(0) * 100);
}

BENCHMARK(BM_Save)->Arg(20)->Arg(990)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_Load)->Arg(20)->Arg(990)->Unit(benchmark::kMicrosecond);

} // namespace
