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
if [[ $# -eq 0 ]]; then
  set -- examples/common.qrrs
fi
if [[ -n "${DISPLAY:-}" ]] && xdpyinfo >/dev/null 2>&1; then
  exec "$editor" "$@"
fi

# No display: the editor runs under a private Xvfb long enough to photograph its window.
# The screen is 1280 x 800 logical pixels: QVRACI_SCALE=2 photographs it at 2x.
echo "run.sh: no X display; starting the editor under a private Xvfb" >&2
display=:$((90 + RANDOM % 100))
screen=$(awk -v s="${QVRACI_SCALE:-1}" 'BEGIN { if (!(s >= 1 && s <= 4)) s = 1;
  printf "%dx%d", 1280 * s, 800 * s }')
Xvfb "$display" -screen 0 "${screen}x24" -nolisten tcp >/dev/null 2>&1 &
xvfb=$!
trap 'kill "$editorPid" "$xvfb" 2>/dev/null || true' EXIT
for _ in $(seq 50); do DISPLAY=$display xdpyinfo >/dev/null 2>&1 && break; sleep 0.1; done
DISPLAY=$display "$editor" "$@" &
editorPid=$!
DISPLAY=$display timeout 10 xdotool search --sync --onlyvisible --name "^Zorbex rules editor" \
  >/dev/null
sleep 0.5 # the first paint
DISPLAY=$display import -window root build/screenshot.png
echo "run.sh: the editor's window is in build/screenshot.png"
