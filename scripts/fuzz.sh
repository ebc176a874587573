#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while (default 60 s) over its
# corpus; new inputs that raise coverage are added to fuzz/corpus/<target>.
#   scripts/fuzz.sh [seconds] [target]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
seconds=${1:-60}
only=${2:-}
build=build/fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQVRACI_FUZZ=ON -DQVRACI_TESTS=OFF >/dev/null
cmake --build "$build"
for f in "$build"/fuzz/fuzz_*; do
  name=$(basename "$f")
  name=${name#fuzz_}
  [[ -n "$only" && "$only" != "$name" ]] && continue
  mkdir -p "fuzz/corpus/$name"
  dict=()
  [[ -f "fuzz/$name.dict" ]] && dict=(-dict="fuzz/$name.dict")
  "$f" -max_total_time="$seconds" -max_len=4096 "${dict[@]}" "fuzz/corpus/$name"
done
