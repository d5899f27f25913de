#!/usr/bin/env bash
# Builds the default preset and runs every benchmark program (bin/bench_*), one after the other.
# Extra arguments go to each program, e.g. --benchmark_repetitions=5.
set -euo pipefail
cd "$(dirname "$0")/.."
cmake --preset default >/dev/null
cmake --build --preset default
for program in build/default/bin/bench_*; do
    echo "== ${program##*/}"
    "$program" "$@"
done
