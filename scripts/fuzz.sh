#!/usr/bin/env bash
# Runs every fuzz target (or those named) for RUNS executions each (default 1000000) under
# AddressSanitizer and UndefinedBehaviorSanitizer, in build/fuzz (clang, libFuzzer). Each starts from
# its committed corpus, fuzz/corpus/<target>/, and keeps what it finds in build/fuzz/corpus/<target>/;
# a crashing input is written to build/fuzz/crash-<target>-*. Exit code 1 when any target failed.
#
#   scripts/fuzz.sh [RUNS] [TARGET...]     fuzz (targets: settings_file versions_file text_to_string
#                                          text_scanner resource_compiler script)
#   scripts/fuzz.sh --merge [TARGET...]    minimise the committed corpora with what fuzzing found
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD
build=$root/build/fuzz
all=(settings_file versions_file text_to_string text_scanner resource_compiler script)

merge=0
runs=1000000
if [[ ${1:-} == --merge ]]; then
    merge=1
    shift
elif [[ ${1:-} =~ ^[0-9]+$ ]]; then
    runs=$1
    shift
fi
targets=("$@")
[[ ${#targets[@]} -gt 0 ]] || targets=("${all[@]}")

if ! command -v clang++ >/dev/null || ! ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a \
    >/dev/null 2>&1; then
    echo "fuzz.sh: needs clang and libFuzzer: apt-get install clang libclang-rt-14-dev" >&2
    exit 2
fi
if command -v ccache >/dev/null; then
    export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER-ccache}
    export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER-ccache}
fi
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DXN_FUZZ=ON \
    -DXN_SANITIZE=ON -DXN_BUILD_BENCHMARKS=OFF >/dev/null
# Every target, so none is left linked against an older build of the shared host library.
cmake --build "$build" --target "${all[@]/#/fuzz_}"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for target in "${targets[@]}"; do
    seeds=$root/fuzz/corpus/$target
    found=$build/corpus/$target
    mkdir -p "$found"
    if [[ $merge == 1 ]]; then
        # The smallest set of inputs that covers what the committed and the found inputs cover.
        fresh=$(mktemp -d)
        "$build/bin/fuzz_$target" -merge=1 "$fresh" "$seeds" "$found" 2>"$build/merge-$target.log"
        rm -f "$seeds"/*
        mv "$fresh"/* "$seeds"/
        rmdir "$fresh"
        echo "$target: $(ls "$seeds" | wc -l) inputs, $(du -sk "$seeds" | cut -f1) KiB"
        continue
    fi
    log=$build/fuzz-$target.log
    if "$build/bin/fuzz_$target" -runs="$runs" -max_len=4096 -print_final_stats=1 \
        -artifact_prefix="$build/crash-$target-" "$found" "$seeds" >"$log" 2>&1; then
        echo "$target: $(grep -o 'Done [0-9]* runs in [0-9]* second(s)' "$log" | tail -1)," \
            "$(grep -o 'stat::average_exec_per_sec:.*' "$log" | tr -s ' ' | cut -d' ' -f2) exec/s"
    else
        echo "$target: FAILED, see $log"
        status=1
    fi
done
exit $status
