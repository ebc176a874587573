#!/usr/bin/env bash
# Builds the release configuration and starts the rules editor, with the starter
# definitions (examples/common.qrrs) unless a rules file is given.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQVRACI_TESTS=OFF >/dev/null
cmake --build "$build"

editor="$build/src/qvrasci-ruled/qvraci-ruled"
if [[ ! -x "$editor" ]]; then
  echo "run.sh: the rules editor (qvraci-ruled) is not part of this build yet;" >&2
  echo "run.sh: the libraries and $build/tools/qvraci-rules/qvraci-rules built;" >&2
  if [[ -x "$build/tools/ciomdemo/ciomdemo" ]]; then
    echo "run.sh: the toolkit's demonstration: $build/tools/ciomdemo/ciomdemo" >&2
  fi
  echo "run.sh: ./test.sh runs the tests." >&2
  exit 1
fi
if [[ $# -eq 0 ]]; then
  set -- examples/common.qrrs
fi
exec "$editor" "$@"
