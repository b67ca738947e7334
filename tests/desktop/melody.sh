#!/bin/bash
# A musician looks for a melody with real mouse and keys: types it and saves it under a name, searches a directory, reads
# the hits, prints them into a PDF file, hears one, opens the viewer, ends. Needs Xvfb, xdotool and ImageMagick's import.
#
#   tests/desktop/melody.sh PROGRAM [PICTURES]
#
# Exit status 0 when the melody is stored, the PDF file is there and the program ended by itself.
set -eu
program=$(realpath "$1")
pictures=${2:-}
demo=$(realpath "$(dirname "$0")/../../demo")
work=$(mktemp -d)
display=:$((80 + RANDOM % 9))
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
cp "$demo"/*.mid "$demo"/*.rmi "$demo"/*.rdl "$HOME/Musik"

fail() {
  echo "melody: $*" >&2
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
# gone NAME: waits until no window of that title is left.
gone() {
  for _ in $(seq 200); do
    [ -n "$(xdotool search --onlyvisible --name "$1" 2>/dev/null)" ] || return 0
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

# The directory "Musik", all of its files.
eval "$(xdotool getwindowgeometry --shell "$main")"
xdotool mousemove $((X + 320)) $((Y + 128)) click 1
sleep 1.5
xdotool mousemove $((X + 620)) $((Y + 135)) click 1
sleep 0.3
keys shift+End
sleep 0.7

# The tile that opens the parameters of the melody search.
search=
for y in $(seq 90 20 700); do
  xdotool mousemove $((X + 100)) $((Y + y)) click 1
  sleep 0.25
  search=$(xdotool search --onlyvisible --name '^Parameter der Melodiesuche' 2>/dev/null | tail -1) || true
  [ -z "$search" ] || break
  xdotool key Escape
  sleep 0.15
done
[ -n "$search" ] || fail "no tile opens the parameters of the melody search"

# The melody, by its keys: three steps upwards. Then its name, from the button before the last one.
xdotool type --delay 120 '8c4.d.8e'
picture 1-melody
keys shift+Tab shift+Tab space
window '^Suchmelodie speichern' >/dev/null || fail "no dialog for the name"
xdotool type --delay 40 'Probe 1'
picture 2-name
keys Return
gone '^Suchmelodie speichern' || fail "the melody was not saved"

# Any rhythm, any key: the options by their mnemonics and arrows.
xdotool windowfocus "$search" || true
keys ctrl+Tab
sleep 0.3
keys alt+r Down Down alt+t Down Down
picture 3-options
keys Return
gone '^Parameter der Melodiesuche' || fail "the parameters were not taken"

xdotool windowfocus "$main" || true
keys alt+m ctrl+Return
window '^Ergebnisse der Melodiesuche' >/dev/null || fail "no results"
picture 4-results
keys Return
gone '^Ergebnisse der Melodiesuche' || fail "the results stay"
xdotool windowfocus "$main" || true
picture 5-hits

keys ctrl+p
window '^Drucker und Seite einrichten' >/dev/null || fail "no print setup"
picture 6-print
keys Return
window '^PDF-Datei speichern' >/dev/null || fail "no file dialog"
keys ctrl+a
xdotool type --delay 20 "$HOME/fund.pdf"
keys Return
for _ in $(seq 100); do
  [ ! -s "$HOME/fund.pdf" ] || break
  sleep 0.1
done
[ -s "$HOME/fund.pdf" ] || fail "nothing was printed"
[ -z "$pictures" ] || cp "$HOME/fund.pdf" "$pictures"

# A hit is heard: the list is the last area, above the status bar.
xdotool windowfocus "$main" || true
xdotool mousemove $((X + WIDTH / 2)) $((Y + HEIGHT - 68)) click 1
sleep 0.3
keys F9
picture 7-playing
sleep 1
keys Escape
xdotool click 3
sleep 0.3
picture 8-menu
keys Escape

# The viewer, from its menu.
keys alt+a s
window '^Suchergebnisse betrachten' >/dev/null || fail "no viewer"
picture 9-viewer
keys Escape

sleep 0.5
xdotool windowfocus "$main" || true
keys ctrl+w
sleep 0.7
keys alt+j
for _ in $(seq 100); do
  kill -0 "$app" 2>/dev/null || { app=; break; }
  sleep 0.1
done
[ -z "$app" ] || fail "the program did not end"
grep -q 'Probe 1' "$STAVORA_REGISTRY" || fail "the melody is not in the registry"
echo "melody: searched, printed, heard, ended in order"
