#!/usr/bin/env bash
# Builds everything with AddressSanitizer and UndefinedBehaviorSanitizer and runs every test.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh

build=build/asan
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQVRACI_SANITIZE=ON \
  -DQVRACI_TESTS=ON >/dev/null
cmake --build "$build"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# The tests that need a real X server get a private Xvfb; it says its display number on
# descriptor 3 once it accepts clients.
displayfile=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$displayfile" 2>/dev/null &
xvfb=$!
trap 'kill $xvfb 2>/dev/null; rm -f "$displayfile"' EXIT
for _ in $(seq 100); do
  [[ -s "$displayfile" ]] && break
  sleep 0.1
done
[[ -s "$displayfile" ]] || { echo "test.sh: Xvfb did not start" >&2; exit 1; }
export DISPLAY=":$(cat "$displayfile")"

ctest --test-dir "$build" --output-on-failure -j"$(nproc)"

# The fuzz targets as scripts/fuzz.sh builds them (clang, libFuzzer), each run once over
# its corpus.
scripts/fuzz.sh --replay
