#!/bin/bash
# A user's story with real mouse and keys: start the workbench, go to a directory, drag files to the free list, choose
# the MIDI converter, set its parameters, run, read the results, throw a file away, end.
#
#   tests/desktop/story.sh PROGRAM [PICTURES]
#
# Exit status 0 when the converted files are there, the file is in the wastebasket, the job holds what was dragged and
# the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
cp "$demo"/*.mid "$HOME/Musik"

start_program
picture 1-start

# The tree of the drive: its first directory is "Musik". The mouse goes to the tree, the keys go down.
click 320 128
sleep 1.5
picture 2-directory

# All files of the view, by mouse on the first and Shift+End.
click 620 135
sleep 0.3
keys shift+End
sleep 0.7
picture 3-selected

# The selected files are dragged with the mouse over the free list, which stands below the directory's files.
drag_selection 155 332
picture 3b-dragged
xdotool mouseup 1
sleep 0.7
picture 3c-dropped

# The tile of the converter, wherever it stands: Tab from the job bar reaches the filter bar; its keys go through it.
tile=
for y in $(seq 90 20 700); do
  click 100 "$y"
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

to_main
keys ctrl+Return
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results"
picture 5-results
keys Return
within 20 [ -e "$HOME/Musik/Maple Leaf Rag.cnv.mid" ] || fail "no converted file: $(ls "$HOME/Musik")"

# The first file goes to the wastebasket, after the question.
sleep 1.5
to_main
click 620 135
sleep 0.5
keys Delete
picture 5b-delete
keys alt+j
within 10 [ -e "$XDG_DATA_HOME/Trash/files/Abgebrochene Datei.mid" ] || fail "nothing in the wastebasket"
[ ! -e "$HOME/Musik/Abgebrochene Datei.mid" ] || fail "the deleted file is still there"

end_program 6-end
[ -s "$STAVORA_REGISTRY" ] || fail "nothing was saved"
dragged=$("$console" registry get 'Jobs\Job 0000' SourceFilelistNum)
[ "$dragged" = 4 ] || fail "$dragged files in the free list instead of 4"
echo "story: $(ls "$HOME/Musik" | grep -c cnv) files converted, ended in order"
