#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while (default 60 s) over its
# corpus; new inputs that raise coverage are added to fuzz/corpus/<target>.
#   scripts/fuzz.sh [seconds] [target]
#   scripts/fuzz.sh --replay     build them, then run each once over its corpus and stop
#                                (./test.sh does this, so the build cannot break unseen)
set -euo pipefail
cd "$(dirname "$0")/.."
replay=0
if [[ "${1:-}" == "--replay" ]]; then
  replay=1
  shift
fi
[[ $replay == 1 ]] || scripts/install-deps.sh
seconds=${1:-60}
only=${2:-}
build=build/fuzz
CC=clang CXX=clang++ cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DQVRACI_FUZZ=ON -DQVRACI_TESTS=OFF >/dev/null
cmake --build "$build" --target fuzzers
for f in "$build"/fuzz/fuzz_*; do
  name=$(basename "$f")
  name=${name#fuzz_}
  [[ -n "$only" && "$only" != "$name" ]] && continue
  mkdir -p "fuzz/corpus/$name"
  dict=()
  [[ -f "fuzz/$name.dict" ]] && dict=(-dict="fuzz/$name.dict")
  if [[ $replay == 1 ]]; then
    # -runs=0: every input of the corpus once, then stop; the log is shown on failure.
    log=$build/replay-$name.log
    if ! "$f" -runs=0 "fuzz/corpus/$name" >"$log" 2>&1; then
      cat "$log" >&2
      echo "fuzz.sh: $name failed on its corpus" >&2
      exit 1
    fi
    echo "fuzz.sh: $name: $(ls "fuzz/corpus/$name" | wc -l) inputs replayed"
    continue
  fi
  "$f" -max_total_time="$seconds" -max_len=4096 "${dict[@]}" "fuzz/corpus/$name"
done
