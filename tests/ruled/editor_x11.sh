#!/bin/bash
# The editor as a user starts it: without a display it says which display it tried and
# ends with status 1, touching no configuration; on the X server it shows its window,
# writes its configuration in the home folder, shows About, and closes with status 0 when
# the window manager asks. Screenshots go to OUT. Exits 77 (skipped) without a display.
set -euo pipefail
editor=$1 wmclose=$2 out=$3
[[ -n "${DISPLAY:-}" ]] || { echo "no X display: ./test.sh runs this under Xvfb"; exit 77; }
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}fast_unwind_on_malloc=0"

home=$(mktemp -d)
log=$(mktemp)
pid=
cleanup() {
  [[ -n "$pid" ]] && kill "$pid" 2>/dev/null || true
  rm -rf "$home" "$log"
}
trap cleanup EXIT

# No display.
status=0
HOME=$home DISPLAY=:9876 "$editor" 2>"$log" || status=$?
[[ $status -eq 1 ]] || { echo "without a display: status $status"; exit 1; }
[[ $(wc -l <"$log") -eq 1 ]] && grep -q '":9876"' "$log" || { echo "stderr:"; cat "$log"; exit 1; }
[[ ! -e "$home/.qvraci-ruled" ]] || { echo "configuration touched without a display"; exit 1; }

# The window, its configuration, About and the close request.
HOME=$home "$editor" >"$log" 2>&1 &
pid=$!
wid=$(timeout 10 xdotool search --sync --onlyvisible \
  --name '^Zorbex rules editor - version 2\.0 \(64 bit\)$' | head -1)
[[ -n "$wid" ]] || { echo "no window"; cat "$log"; exit 1; }
[[ -s "$home/.qvraci-ruled/.qvraci-ruled.hbin" ]] || { echo "no configuration file"; exit 1; }
sleep 0.3
eval "$(xdotool getwindowgeometry --shell "$wid")"
xdotool mousemove $((X + 25)) $((Y + 42)) click 1 # About, on the tool bar
sleep 0.5
import -window root "$out/ruled-x11-about.png"
xdotool key Escape
sleep 0.3
"$wmclose" "$wid"
status=0
timeout 10 tail --pid="$pid" -f /dev/null
wait "$pid" || status=$?
pid=
[[ $status -eq 0 ]] || { echo "closed with status $status:"; cat "$log"; exit 1; }
echo "screenshots in $out"
