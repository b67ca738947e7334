#!/bin/bash
# A musician looks for a melody with real mouse and keys: types it and saves it under a name, searches a directory, reads
# the hits, prints them into a PDF file, hears one, opens the viewer, ends. Needs Xvfb, xdotool and ImageMagick's import.
#
#   tests/desktop/melody.sh PROGRAM [PICTURES] [KINDS]
#
# KINDS are the extensions of the demo files to look in: "mid rmi rdl" unless given; "stv", "xml", "mxl" or "stvx" for
# the scores.
# Exit status 0 when the melody is stored, the PDF file is there and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
take_demo ${3:-mid rmi rdl}

start_program

# The directory "Musik", all of its files.
click 320 128
sleep 1.5
click 620 135
sleep 0.3
keys shift+End
sleep 0.7

# The tile that opens the parameters of the melody search.
search=
for y in $(seq 90 20 700); do
  click 100 $y
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
closed '^Suchmelodie speichern' || fail "the melody was not saved"

# Any rhythm, any key: the options by their mnemonics and arrows.
xdotool windowfocus "$search" || true
keys ctrl+Tab
sleep 0.3
keys alt+r Down Down alt+t Down Down
picture 3-options
keys Return
closed '^Parameter der Melodiesuche' || fail "the parameters were not taken"

to_main
keys alt+m ctrl+Return
window '^Ergebnisse der Melodiesuche' >/dev/null || fail "no results"
picture 4-results
keys Return
closed '^Ergebnisse der Melodiesuche' || fail "the results stay"
to_main
picture 5-hits

keys ctrl+p
window '^Drucker und Seite einrichten' >/dev/null || fail "no print setup"
picture 6-print
keys Return
window '^PDF-Datei speichern' >/dev/null || fail "no file dialog"
keys ctrl+a
xdotool type --delay 20 "$HOME/fund.pdf"
keys Return
within 10 test -s "$HOME/fund.pdf" || fail "nothing was printed"
[ -z "$pictures" ] || cp "$HOME/fund.pdf" "$pictures"

# A hit is heard: the list is the last area, above the status bar.
to_main
click $((WIDTH / 2)) $((HEIGHT - 68))
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
end_program 10-end
grep -q 'Probe 1' "$STAVORA_REGISTRY" || fail "the melody is not in the registry"
echo "melody: searched, printed, heard, ended in order"
