#!/bin/bash
# The editor as a user starts it: without a display it says which display it tried and
# ends with status 1, touching no configuration; on the X server it shows its window,
# writes its configuration in the home folder, shows About, and closes with status 0 when
# the window manager asks. Then a rules file is opened from the command line, a start rule
# typed into a definition, and the set saved under a new name through the file dialog,
# which qvraci-rules then shows, after Test... has run the set on a folder of samples; and a
# damaged file opens with an error, keeping what could be read. Last, a delete undone with
# ctrl+Z saves the very same file, definitions typed into xclip paste with ctrl+V, ctrl+F
# finds one, and a save on a full disk (a small tmpfs, where a mount namespace can be had)
# leaves the set unsaved, so that closing asks first. Screenshots go to OUT. Exits 77
# (skipped) without a display.
#   editor_x11.sh EDITOR WMCLOSE OUT QVRACI_RULES RULES.qrrs
set -euo pipefail
editor=$1 wmclose=$2 out=$3 rules=$4 sample=$5
[[ -n "${DISPLAY:-}" ]] || { echo "no X display: ./test.sh runs this under Xvfb"; exit 77; }
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}fast_unwind_on_malloc=0"

home=$(mktemp -d)
log=$(mktemp)
pid=
clip=
cleanup() {
  [[ -n "$pid" ]] && kill "$pid" 2>/dev/null || true
  [[ -n "$clip" ]] && kill "$clip" 2>/dev/null || true
  rm -rf "$home" "$log"
}
trap cleanup EXIT
fail() { echo "$*"; cat "$log"; exit 1; }
main='^Zorbex rules editor - version 2\.0 \(64 bit\)$'

# The id of the visible window whose name matches, once it is there.
# A search fails with BadWindow when a window goes while it looks (a closing form): it is
# asked again, for up to ten seconds.
window() {
  local id
  for _ in $(seq 50); do
    id=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | head -1)
    [[ -n "$id" ]] && { echo "$id"; return 0; }
    sleep 0.2
  done
}
# Waits until no visible window has that name.
gone() {
  for _ in $(seq 100); do
    xdotool search --onlyvisible --name "$1" >/dev/null 2>&1 || return 0
    sleep 0.1
  done
  fail "the window '$1' stayed"
}
# Waits until the window holds the keyboard focus, so that typing reaches it.
focused() {
  for _ in $(seq 100); do
    [[ "$(xdotool getwindowfocus 2>/dev/null)" == "$1" ]] && { sleep 0.3; return 0; }
    sleep 0.1
  done
  fail "the window $1 never took the focus"
}
# Waits until a file exists with content: a save ends after its dialog has gone.
written() {
  for _ in $(seq 100); do
    [[ -s "$1" ]] && return 0
    sleep 0.1
  done
  fail "nothing saved to $1"
}
# Saves the set under a new name through ctrl+S and the file dialog.
saveAs() {
  xdotool key ctrl+s
  dialog=$(window '^Save file$')
  [[ -n "$dialog" ]] || fail "no save dialog"
  focused "$dialog"
  xdotool key ctrl+a
  xdotool type --delay 10 "$1"
  xdotool key Return
  gone '^Save file$'
  written "$1"
}
# Starts the editor with the arguments given, in the test's home, and waits for its window:
# pid and wid name them; what went wrong says why.
startEditor() {
  local why=$1
  shift
  HOME=$home "$editor" "$@" >"$log" 2>&1 &
  pid=$!
  wid=$(window "$main")
  [[ -n "$wid" ]] || fail "no window $why"
}
# Clicks at x, y in the main window's client area.
clickAt() { xdotool mousemove $((X + $1)) $((Y + $2)) click "${3:-1}"; }
# Asks the window manager to close the window and waits for the editor's status.
closeEditor() {
  "$wmclose" "$1"
  status=0
  timeout 10 tail --pid="$pid" -f /dev/null
  wait "$pid" || status=$?
  pid=
  [[ $status -eq 0 ]] || fail "closed with status $status"
}

# No display.
status=0
HOME=$home DISPLAY=:9876 "$editor" 2>"$log" || status=$?
[[ $status -eq 1 ]] || { echo "without a display: status $status"; exit 1; }
[[ $(wc -l <"$log") -eq 1 ]] && grep -q '":9876"' "$log" || { echo "stderr:"; cat "$log"; exit 1; }
[[ ! -e "$home/.qvraci-ruled" ]] || { echo "configuration touched without a display"; exit 1; }

# The window, its configuration, About and the close request.
startEditor ""
[[ -s "$home/.qvraci-ruled/.qvraci-ruled.hbin" ]] || fail "no configuration file"
sleep 0.3
eval "$(xdotool getwindowgeometry --shell "$wid")"
clickAt 336 27 # About, the fourth button of the tool bar
sleep 0.5
import -window root "$out/ruled-x11-about.png"
# The popup's title band is blue where the main window's tool bar is not.
band=$(convert "$out/ruled-x11-about.png" -crop "1x1+$((X + WIDTH / 2))+$((Y + HEIGHT / 2 - 120))" txt:- |
  grep -o '#[0-9A-F]\{6\}' | head -1)
[[ "$band" =~ ^#[0-4][0-9A-F][5-9A-F][0-9A-F][C-F][0-9A-F]$ ]] || fail "no About popup ($band)"
xdotool key Escape
sleep 0.3
closeEditor "$wid"

# A rules file from the command line; a start rule typed into a definition; saved under a
# new name through the file dialog.
work=$home/work
mkdir -p "$work"
cp "$sample" "$work/in.qrrs"
startEditor "for a rules file" "$work/in.qrrs"
sleep 0.5
import -window root "$out/ruled-x11-main.png"
# The tree has the focus: down to "Windows icon, one image", below its parent.
xdotool key --delay 30 Down Down Down Down Down Down Down Down Down
sleep 0.3
import -window root "$out/ruled-x11-inherited.png"
xdotool key Menu
sleep 0.4
import -window root "$out/ruled-x11-menu.png"
xdotool key Escape
# Up to "JPEG image"; its Start button opens the rule form.
xdotool key --delay 30 Up Up Up Up Up Up Up
sleep 0.3
clickAt 487 61
form=$(window '^Define advanced-hex signature$')
[[ -n "$form" ]] || fail "no rule form"
focused "$form"
xdotool type --delay 20 "'QVTEST' 00"
sleep 0.3
import -window root "$out/ruled-x11-rule.png"
xdotool key Return
gone '^Define advanced-hex signature$'
# Test... on a folder of samples: the folder dialog, then the window of results.
mkdir -p "$work/samples"
convert -size 40x30 xc:orange "$work/samples/orange.jpg"
printf 'no known file' >"$work/samples/note.bin"
sleep 0.3
clickAt 410 27 # Test..., the fifth button of the tool bar
chooser=$(window '^Choose the folder of sample files$')
[[ -n "$chooser" ]] || fail "no folder dialog for Test"
focused "$chooser"
xdotool type --delay 10 "$work/samples"
xdotool key Return
results=$(window '^Test definitions on sample files$')
[[ -n "$results" ]] || fail "no window of test results"
sleep 1
import -window root "$out/ruled-x11-test.png"
xdotool key Escape
gone '^Test definitions on sample files$'
saveAs "$work/out.qrrs"
closeEditor "$wid" # saved: no question
# Whole outputs first: grep -q ending early would fail the pipe.
shown=$("$rules" show "$work/out.qrrs")
grep -A3 '^  JPEG image' <<<"$shown" | grep -q "start: Advanced/HEX: 'QVTEST' 00" ||
  fail "the saved file lacks the new rule"

# A damaged file: the error, then what could be read, saved again to prove it is there.
head -c 3000 "$sample" >"$work/cut.qrrs"
startEditor "for a damaged file" "$work/cut.qrrs"
error=$(window '^Error$')
[[ -n "$error" ]] || fail "no error for a damaged file"
focused "$error"
import -window root "$out/ruled-x11-damaged.png"
xdotool key Return
gone '^Error$'
saveAs "$work/partial.qrrs"
closeEditor "$wid"
shown=$("$rules" show "$work/partial.qrrs")
grep -q '^  JPEG image' <<<"$shown" || fail "nothing of the damaged file kept"
# A delete undone: the set saves to the same bytes.
startEditor "for the undo" "$work/in.qrrs"
focused "$wid"
xdotool key --delay 50 Down Delete
question=$(window '^(Warning|Confirm)$')
[[ -n "$question" ]] || fail "no question before the delete"
focused "$question"
xdotool key Return
gone '^(Warning|Confirm)$'
focused "$wid"
xdotool key ctrl+z
saveAs "$work/undone.qrrs"
cmp -s "$work/in.qrrs" "$work/undone.qrrs" || fail "the undone delete saved another set"

# Definitions from another program's clipboard, pasted at the top level, then found.
# xclip serves the clipboard until it is killed; its output must not hold the test's open.
printf 'definition "Pasted kind" ext "pst" {\n  start at 0: %s\n}\n' "'PST'" >"$home/paste.txt"
xclip -selection clipboard -i -quiet "$home/paste.txt" >/dev/null 2>&1 &
clip=$!
for _ in $(seq 50); do
  [[ "$(xclip -selection clipboard -o 2>/dev/null)" == "$(cat "$home/paste.txt")" ]] && break
  sleep 0.1
done
xdotool key Home ctrl+v
sleep 0.3
xdotool key ctrl+f
xdotool type --delay 20 "pst"
sleep 0.4
import -window root "$out/ruled-x11-find.png"
xdotool key Escape
saveAs "$work/pasted.qrrs"
closeEditor "$wid"
shown=$("$rules" show "$work/pasted.qrrs")
grep -q '^Pasted kind' <<<"$shown" || fail "the pasted definition was not saved"
kill "$clip" 2>/dev/null || true
clip=

# A full disk: the save fails, the set stays unsaved, and closing asks (No keeps the
# window, Yes ends it).
if unshare -rm true 2>/dev/null; then
  full=$home/full
  mkdir -p "$full"
  HOME=$home unshare -rm sh -c 'mount -t tmpfs -o size=4k tmpfs "$1" &&
    head -c 8192 /dev/zero >"$1/filler" 2>/dev/null; shift; exec "$@"' \
    sh "$full" "$editor" "$work/in.qrrs" >"$log" 2>&1 &
  pid=$!
  wid=$(window "$main")
  [[ -n "$wid" ]] || fail "no window for the full disk"
  focused "$wid"
  xdotool key --delay 50 Down ctrl+d
  xdotool key ctrl+s
  dialog=$(window '^Save file$')
  focused "$dialog"
  xdotool key ctrl+a
  xdotool type --delay 10 "$full/out.qrrs"
  xdotool key Return
  error=$(window '^Error$')
  [[ -n "$error" ]] || fail "no error for a save on a full disk"
  focused "$error"
  import -window root "$out/ruled-x11-full.png"
  xdotool key Return
  gone '^Error$'
  "$wmclose" "$wid"
  question=$(window '^(Warning|Confirm)$')
  [[ -n "$question" ]] || fail "closing after a failed save did not ask"
  focused "$question"
  xdotool key Escape
  gone '^(Warning|Confirm)$'
  xdotool search --onlyvisible --name "$main" >/dev/null || fail "No closed the window"
  "$wmclose" "$wid"
  question=$(window '^(Warning|Confirm)$')
  focused "$question"
  xdotool key Return
  timeout 10 tail --pid="$pid" -f /dev/null
  wait "$pid" || fail "the editor ended with an error after Yes"
  pid=
else
  echo "no mount namespace here: the full-disk save is tested offscreen only"
fi
# Ended from outside: SIGTERM, or the window destroyed by another client (a crashed window
# manager, xdotool windowclose), ends the editor within a moment with status 0.
for how in term destroy; do
  startEditor "to end by $how" "$work/in.qrrs"
  if [[ $how == term ]]; then kill -TERM "$pid"; else xdotool windowclose "$wid"; fi
  timeout 5 tail --pid="$pid" -f /dev/null || fail "$how did not end the editor"
  status=0
  wait "$pid" || status=$?
  pid=
  [[ $status -eq 0 ]] || fail "ended by $how with status $status"
done
echo "screenshots in $out"
