#!/bin/bash
# The demonstration program on a desktop like a user's, on an X server of its own
# (2560 × 1600): at Xft.dpi 192 its window is twice its logical size and the pointer comes
# from the cursor theme at twice its size; under openbox a message box is fixed in size and
# centred over its owner; text copied before the program exits stays on the clipboard when
# a clipboard manager runs. Screenshots go to OUT. Exits 77 (skipped) without Xvfb.
#   desktop_x11.sh CIOMDEMO DESKHELPER OUT
set -euo pipefail
demo=$1 helper=$2 out=$3
for tool in Xvfb openbox xrdb xrandr xprop xdotool xclip; do
  command -v "$tool" >/dev/null || { echo "$tool is missing: scripts/install-deps.sh"; exit 77; }
done
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}fast_unwind_on_malloc=0"

work=$(mktemp -d)
pids=()
cleanup() {
  for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done
  rm -rf "$work"
}
trap cleanup EXIT
fail() { echo "desktop_x11: $*"; [[ -f "$work/log" ]] && cat "$work/log"; exit 1; }

# -noreset: the resources set by xrdb must outlive the clients between the steps.
Xvfb -displayfd 5 -screen 0 2560x1600x24 -nolisten tcp -noreset 5>"$work/display" 2>/dev/null &
pids+=($!)
for _ in $(seq 100); do [[ -s "$work/display" ]] && break; sleep 0.1; done
export DISPLAY=":$(cat "$work/display")"
unset QVRACI_SCALE QVRACI_PLATFORM

# Starts the demo with the given arguments and waits for a window with that name.
start() {
  local name=$1; shift
  "$demo" "$@" >"$work/log" 2>&1 &
  demoPid=$!
  pids+=($demoPid)
  wid=$(timeout 10 xdotool search --sync --onlyvisible --name "^$name\$" | head -1)
  [[ -n "$wid" ]] || fail "no window \"$name\""
  sleep 0.3 # the first paint
}
finish() {
  timeout 10 tail --pid="$demoPid" -f /dev/null || fail "the demo did not end"
  wait "$demoPid" || fail "the demo failed"
}
geometry() { eval "$(xdotool getwindowgeometry --shell "$1")"; }

# At 192 dpi: the 900 × 210 form is 1800 × 420 device pixels.
echo "Xft.dpi: 192" | xrdb -merge
XCURSOR_THEME=DMZ-White XCURSOR_SIZE=24 start "Toolkit demonstration"
geometry "$wid"
[[ "$WIDTH" == 1800 && "$HEIGHT" == 420 ]] || fail "the window is $WIDTH x $HEIGHT at 2x"
# The pointer over the form takes the theme's arrow, 24 logical pixels: 48 on this screen.
xdotool mousemove $((X + 300)) $((Y + 300))
sleep 0.3
cursor=$("$helper" cursor)
[[ "$cursor" == 48x48 ]] || fail "the pointer is $cursor at 2x, not the theme's 48x48"
import -window root -crop 1840x460+$((X - 20))+$((Y - 20)) "$out/demo-x11-2x.png"
xdotool key Escape
finish

# Under openbox at 96 dpi: the confirm box may not be resized or maximised, and lies over
# the form.
echo "Xft.dpi: 96" | xrdb -merge
openbox >/dev/null 2>&1 &
pids+=($!)
for _ in $(seq 100); do
  xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q "window id" && break
  sleep 0.1
done
start "Confirm" --show confirm
owner=$(xdotool search --onlyvisible --name "^Toolkit demonstration\$" | head -1)
hints=$(xprop -id "$wid" WM_NORMAL_HINTS)
geometry "$wid"
dw=$WIDTH dh=$HEIGHT dx=$X dy=$Y
grep -q "program specified minimum size: $dw by $dh" <<<"$hints" || fail "no fixed size: $hints"
grep -q "program specified maximum size: $dw by $dh" <<<"$hints" || fail "no fixed size: $hints"
actions=$(xprop -id "$wid" _NET_WM_ALLOWED_ACTIONS)
grep -Eq "MAXIMIZE|ACTION_RESIZE" <<<"$actions" && fail "openbox still offers: $actions"
geometry "$owner"
centre() { echo $(($1 + $2 / 2)); }
for axis in "$(centre "$dx" "$dw") $(centre "$X" "$WIDTH")" "$(centre "$dy" "$dh") $(centre "$Y" "$HEIGHT")"; do
  read -r a b <<<"$axis"
  ((a - b < 30 && b - a < 30)) || fail "the confirm box is not over its owner ($a against $b)"
done
import -window root "$out/demo-x11-openbox.png"
xdotool key Return
finish

# Two monitors side by side, the left one primary: the form opens centred on it, and a
# popup menu stays on one monitor.
xrandr --setmonitor right 1280/340x1600/210+1280+0 none >/dev/null
xrandr --setmonitor '*left' 1280/340x1600/210+0+0 screen >/dev/null
start "Toolkit demonstration"
geometry "$wid"
middle=$(centre "$X" "$WIDTH")
((middle > 600 && middle < 680)) || fail "the form is centred at $middle, not on the left monitor"
# Moved so that its "Popup menu" button (392 pixels in) ends past the left monitor's edge,
# the form opens the menu under the button but wholly on the left monitor.
xdotool windowmove "$wid" $((1230 - 392)) 300
sleep 0.3
geometry "$wid"
xdotool mousemove 1270 $((Y + 37)) click 1
sleep 0.5
menu=""
for id in $(xdotool search --onlyvisible --class qvraci-ruled); do
  [[ -z "$(xdotool getwindowname "$id")" ]] && menu=$id
done
[[ -n "$menu" ]] || fail "no popup menu"
geometry "$menu"
((X + WIDTH == 1280 && Y > 300)) || fail "the menu lies at $X,$Y, $WIDTH wide: not under its button, at the monitor's edge"
xdotool key Escape
xdotool key Escape
finish

# A clipboard manager keeps what the program copied after the program has gone.
"$helper" keep-clipboard >"$work/keeper" &
pids+=($!)
for _ in $(seq 50); do grep -q ready "$work/keeper" && break; sleep 0.1; done
start "Controls" --show controls
xdotool key ctrl+c # the focus selected the whole name
xdotool key Escape
finish
grep -q "controls closed, name: JPEG (EXIF)" "$work/log" || fail "unexpected end"
kept=$(timeout 5 xclip -o -selection clipboard || true)
[[ "$kept" == "JPEG (EXIF)" ]] || fail "the clipboard holds \"$kept\" after exit"
echo "desktop checks passed; screenshots in $out"
