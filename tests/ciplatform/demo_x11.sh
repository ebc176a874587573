#!/bin/bash
# The demonstration program on the real X server: the form with a tooltip, a confirm
# box answered with Enter, a popup dismissed with Escape, the controls, the definitions
# and the file dialog, each photographed into OUT (the build folder). Exits 77 (skipped)
# without a display.
set -euo pipefail
demo=$1 out=$2
[[ -n "${DISPLAY:-}" ]] || { echo "no X display: ./test.sh runs this under Xvfb"; exit 77; }

# In a sanitizer build, leak reports are matched against tests/lsan.supp by the functions
# on their stacks; cairo has no frame pointers, so only the slow unwinder finds them.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}fast_unwind_on_malloc=0"

log=$(mktemp)
files=$(mktemp -d)
pid=
cleanup() {
  [[ -n "$pid" ]] && kill "$pid" 2>/dev/null || true
  rm -rf "$log" "$files"
}
trap cleanup EXIT

# Starts the demo with the given arguments and waits for a window with that name.
start() {
  local name=$1; shift
  "$demo" "$@" >"$log" 2>&1 &
  pid=$!
  wid=$(timeout 10 xdotool search --sync --onlyvisible --name "^$name\$" | head -1)
  sleep 0.3 # the first paint
}
# Waits for the demo to end by itself and checks what it printed.
finish() {
  local expected=$1
  timeout 10 tail --pid="$pid" -f /dev/null
  wait "$pid" || { echo "ciomdemo failed:"; cat "$log"; exit 1; }
  pid=
  grep -qx "$expected" "$log" || { echo "expected \"$expected\", got:"; cat "$log"; exit 1; }
}

# The form, with the pointer on the label that has a tooltip.
start "Toolkit demonstration"
eval "$(xdotool getwindowgeometry --shell "$wid")"
xdotool mousemove $((X + 40)) $((Y + 124))
sleep 0.3
import -window root "$out/demo-x11-tooltip.png"
xdotool mousemove 0 0
xdotool key Escape
finish "Nothing asked yet."

# A confirm box: Enter answers Yes.
start "Confirm" --show confirm
import -window root "$out/demo-x11-confirm.png"
xdotool key Return
finish "confirm: yes"

# The popup menu: Down highlights the first item; Escape dismisses it.
popupGeometry() {
  xwininfo -root -children | awk '/\(has no name\): \("qvraci/ {print $(NF-1)}' | head -1
}
start "Toolkit demonstration" --show popup
for _ in $(seq 100); do
  geometry=$(popupGeometry)
  [[ -n "$geometry" ]] && break
  sleep 0.1
done
[[ "$geometry" =~ ^([0-9]+)x([0-9]+)\+([0-9]+)\+([0-9]+)$ ]] || { echo "no popup window"; exit 1; }
xdotool key Down
sleep 0.3
import -window root "$out/demo-x11-popup.png"
# The popup lies above the form: its bottom right corner shows the list's dark ground.
px=$((BASH_REMATCH[3] + BASH_REMATCH[1] - 3)) py=$((BASH_REMATCH[4] + BASH_REMATCH[2] - 3))
pixel=$(convert "$out/demo-x11-popup.png" -format "%[pixel:p{$px,$py}]" info:)
[[ "$pixel" == "srgb(64,64,64)" || "$pixel" == "gray(64)" || "$pixel" == "grey25" ]] ||
  { echo "the popup is hidden: $pixel at $px,$py"; exit 1; }
xdotool key Escape
finish "popup: dismissed"

# The controls: text typed at the end of the focused name field, the drop-down list opened
# from the keyboard, then Escape. (Accents and CJK are typed in x11_tests: xdotool binds
# each such character to a spare key and unbinds it again at once, a race that a form
# busy with its animations can lose.)
start "Controls" --show controls
xdotool key End # the focus selected the whole name
xdotool type --delay 40 " and PNG"
xdotool key Tab Tab Tab Tab F4
sleep 0.5
import -window root "$out/demo-x11-controls.png"
xdotool key Down Return
sleep 0.3
xdotool key Escape
finish "controls closed, name: JPEG (EXIF) and PNG"
grep -qx "rule hits: Always (active)" "$log" || { echo "no choice reported:"; cat "$log"; exit 1; }
# The definitions: Down twice walks the focused tree to PNG, Tab goes to its name, a new
# name typed is taken back with Escape; two more Escapes drop the selection and close.
start "Definitions" --show definitions
xdotool key --delay 80 Down Down Tab
xdotool type --delay 40 "Portable"
xdotool key Escape
sleep 0.3
import -window root "$out/demo-x11-definitions.png"
xdotool key --delay 80 Escape Escape
finish "definitions closed, name: PNG"
grep -qx "definition: PNG" "$log" || { echo "no definition chosen:"; cat "$log"; exit 1; }

# The file dialog, in a folder of its own: "ru" and Tab complete a name that Enter opens;
# saving over a file that is there asks first, and Enter says yes.
mkdir "$files/sub"
touch "$files/rules.qrrs" "$files/other.qrrs" "$files/notes.txt"
cd "$files"
start "Open file" --show open
xdotool type --delay 40 "ru"
xdotool key Tab
sleep 0.3
import -window root "$out/demo-x11-open.png"
xdotool key Return
finish "open: $files/rules.qrrs"
start "Save file as" --show save
xdotool type --delay 40 "rules"
sleep 0.3
import -window root "$out/demo-x11-save.png"
xdotool key Return
timeout 10 xdotool search --sync --onlyvisible --name "^Confirm\$" >/dev/null
xdotool key Return
finish "save: $files/rules.qrrs"
echo "screenshots in $out"
