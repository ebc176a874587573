#!/usr/bin/env bash
# Builds the benchmarks in release mode and runs them; arguments go to every benchmark.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
build=build/bench
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVRACI_BENCH=ON \
  -DQVRACI_TESTS=OFF >/dev/null
cmake --build "$build"
for b in "$build"/bench/bench_*; do
  [[ -x "$b" ]] && "$b" "$@"
done
