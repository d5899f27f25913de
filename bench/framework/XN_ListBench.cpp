// Appending n elements to XN_List<long>: one host reallocation per element is the design. The counter
// "per_element" is the time of one append; Complexity() fits the growth of the whole run. The second
// argument runs the same appends on a host that moves the block on every reallocation (the worst
// case of a relocatable block: every append copies the whole list). std::vector is the yardstick of
// an amortised container.
#include "XN_List.hpp"
#include "achost/Faults.hpp"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

void ReportPerElement(benchmark::State& state, long n) {
    state.SetComplexityN(n);
    state.counters["per_element"] = benchmark::Counter(
        static_cast<double>(n), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_XN_ListAppendLong(benchmark::State& state) {
    achost::MoveBlocksOnEveryReallocation(state.range(1) != 0);
    const long n = state.range(0);
    for (auto _ : state) {
        XN_List<long> list;
        for (long i = 0; i < n; ++i)
            list.AddData(i, -1);
        benchmark::DoNotOptimize(list.data);
    }
    achost::ClearFaults();
    ReportPerElement(state, n);
}
BENCHMARK(BM_XN_ListAppendLong)
    ->ArgNames({"n", "moving"})
    ->ArgsProduct({{10, 100, 1000, 10000}, {0}})
    ->Complexity();
BENCHMARK(BM_XN_ListAppendLong)
    ->ArgNames({"n", "moving"})
    ->ArgsProduct({{10, 100, 1000, 10000}, {1}})
    ->Complexity();

void BM_VectorAppendLong(benchmark::State& state) {
    const long n = state.range(0);
    for (auto _ : state) {
        std::vector<long> list;
        for (long i = 0; i < n; ++i)
            list.push_back(i);
        benchmark::DoNotOptimize(list.data());
    }
    ReportPerElement(state, n);
}
BENCHMARK(BM_VectorAppendLong)->ArgName("n")->Arg(10)->Arg(100)->Arg(1000)->Arg(10000)->Complexity();

} // namespace
