#!/bin/bash
# A user's story with real mouse and keys: start the workbench, go to a directory, drag files to the free list, choose
# the MIDI converter, set its parameters, run, read the results, throw a file away, end. Needs Xvfb, xdotool and
# ImageMagick's import.
#
#   tests/desktop/story.sh PROGRAM [PICTURES]
#
# Exit status 0 when the converted files are there, the file is in the wastebasket, the job holds what was dragged and
# the program ended by itself.
set -eu
program=$(realpath "$1")
pictures=${2:-}
demo=$(realpath "$(dirname "$0")/../../demo")
work=$(mktemp -d)
display=:$((90 + RANDOM % 9))
Xvfb "$display" -screen 0 1280x860x24 >/dev/null 2>&1 &
server=$!
app=
cleanup() {
  [ -z "$app" ] || kill "$app" 2>/dev/null || true
  kill "$server" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

export DISPLAY=$display HOME=$work/home XDG_RUNTIME_DIR=$work/run XDG_DATA_HOME=$work/data
export STAVORA_REGISTRY=$work/registry.sqlite QT_QPA_PLATFORM=xcb
mkdir -p "$HOME/Musik" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
cp "$demo"/*.mid "$HOME/Musik"

fail() {
  echo "story: $*" >&2
  [ -z "$pictures" ] || import -window root "$pictures/failure.png" || true
  exit 1
}
# window NAME: waits until a window whose title holds NAME is on the screen, and prints its number.
window() {
  local found
  for _ in $(seq 200); do
    found=$(xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -1)
    [ -z "$found" ] || { echo "$found"; return 0; }
    sleep 0.1
  done
  return 1
}
# file NAME: waits for a file in the music directory.
file() {
  for _ in $(seq 200); do
    [ ! -e "$HOME/Musik/$1" ] || return 0
    sleep 0.1
  done
  return 1
}
picture() { [ -z "$pictures" ] || { sleep 0.5; import -window root "$pictures/$1.png"; }; }
keys() { for key in "$@"; do xdotool key --clearmodifiers "$key"; sleep 0.25; done; }

[ -z "$pictures" ] || mkdir -p "$pictures"
"$program" &
app=$!
main=$(window '^Stavora Tonstudio 5$') || fail "no main window"
for _ in $(seq 200); do
  width=$(xdotool getwindowgeometry --shell "$main" 2>/dev/null | sed -n 's/^WIDTH=//p')
  [ "${width:-0}" -lt 800 ] || break
  sleep 0.1
  main=$(window '^Stavora Tonstudio 5$') || fail "the main window went"
done
sleep 1
xdotool windowfocus "$main" || true
picture 1-start

# The tree of the drive: its first directory is "Musik". The mouse goes to the tree, the keys go down.
eval "$(xdotool getwindowgeometry --shell "$main")"
xdotool mousemove $((X + 320)) $((Y + 128)) click 1
sleep 1.5
picture 2-directory

# All files of the view, by mouse on the first and Shift+End.
xdotool mousemove $((X + 620)) $((Y + 135)) click 1
sleep 0.3
keys shift+End
sleep 0.7
picture 3-selected

# The selected files are dragged with the mouse over the free list, which stands below the directory's files.
xdotool mousemove $((X + 620)) $((Y + 155)) mousedown 1
for step in 1 2 3 4 5 6 7 8; do
  xdotool mousemove $((X + 620 + step * 20)) $((Y + 155 + step * 42))
  sleep 0.1
done
xdotool mousemove $((X + 780)) $((Y + 497))
sleep 0.4
picture 3b-dragged
xdotool mouseup 1
sleep 0.7
picture 3c-dropped

# The tile of the converter, wherever it stands: Tab from the job bar reaches the filter bar; its keys go through it.
tile=
for y in $(seq 90 20 700); do
  xdotool mousemove $((X + 100)) $((Y + y)) click 1
  sleep 0.25
  if dialog=$(xdotool search --onlyvisible --name '^Midi-Konvertierungsparameter' 2>/dev/null | tail -1) && [ -n "$dialog" ]; then
    tile=$y
    break
  fi
  # A parameter dialog of another filter, or a message, goes with Esc.
  xdotool key Escape
  sleep 0.15
done
[ -n "$tile" ] || fail "no tile opens the converter's parameters"
picture 4-parameters
# The format change is on from the start; the time base is switched on with its mnemonic, Enter is OK.
keys alt+z Return
sleep 0.5

xdotool windowfocus "$main" || true
keys ctrl+Return
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results"
picture 5-results
keys Return
file "Maple Leaf Rag.cnv.mid" || fail "no converted file: $(ls "$HOME/Musik")"

# The first file goes to the wastebasket, after the question.
sleep 1.5
xdotool windowfocus "$main" || true
xdotool mousemove $((X + 620)) $((Y + 135)) click 1
sleep 0.5
keys Delete
picture 5b-delete
keys alt+j
for _ in $(seq 100); do
  [ -e "$XDG_DATA_HOME/Trash/files/Abgebrochene Datei.mid" ] && break
  sleep 0.1
done
[ -e "$XDG_DATA_HOME/Trash/files/Abgebrochene Datei.mid" ] || fail "nothing in the wastebasket"
[ ! -e "$HOME/Musik/Abgebrochene Datei.mid" ] || fail "the deleted file is still there"

# The end, by its key and with its question.
sleep 0.5
xdotool windowfocus "$main" || true
keys ctrl+w
sleep 0.7
picture 6-end
keys alt+j
for _ in $(seq 100); do
  kill -0 "$app" 2>/dev/null || { app=; break; }
  sleep 0.1
done
[ -z "$app" ] || fail "the program did not end"
[ -s "$STAVORA_REGISTRY" ] || fail "nothing was saved"
console=$(dirname "$program")/ts5-batch
[ -x "$console" ] || console=$(dirname "$program")/../batch/ts5-batch
dragged=$("$console" registry get 'Jobs\Job 0000' SourceFilelistNum)
[ "$dragged" = 4 ] || fail "$dragged files in the free list instead of 4"
echo "story: $(ls "$HOME/Musik" | grep -c cnv) files converted, ended in order"
