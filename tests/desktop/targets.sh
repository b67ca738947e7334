#!/bin/bash
# The ways in which a file could be lost between two filters, with real mouse and keys: a source whose name lies about
# what it holds, a name in the target field that belongs to another filter, a click on a file that looks like a target,
# a source typed as the target.
#
#   tests/desktop/targets.sh PROGRAM [PICTURES]
#
# Exit status 0 when every byte that was there before is there after.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
set_job() { "$console" registry set 'Jobs\Job 0000' "$1" "$2"; }
kept() { sha256sum --quiet --check "$work/sums" >/dev/null 2>&1 || fail "a file was changed or is gone: $1"; }
remember() { find "$HOME" -type f -exec sha256sum {} + >"$work/sums"; }

# The tree: Klang, Musik, Noten.
mkdir "$HOME/Klang" "$HOME/Noten"
cp "$demo/Gymnopédie Nr. 1.rmi" "$HOME/Musik/lied.mid"
cp "$demo/Maple Leaf Rag.mid" "$HOME/Musik/rag.mid"
cp "$demo/Amazing Grace.stv" "$HOME/Noten"
"$console" run MidiToWave --set 'DestFormat=22050 2 16' --dest "$HOME/Klang/rag.wav" "$demo/Maple Leaf Rag.mid" \
  >/dev/null || fail "no wave file"
set_job Filter 5
set_job FormatSmall 1
set_job FormatBig 0
set_job Option1 0
remember
start_program

# --- RIFF data in a file called .mid: its target would be the file itself
directory 148
all_files
picture 1-selected
keys ctrl+Return
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results of the conversion"
picture 2-converted
keys Return
closed '^Ergebnisse der Midi-Konvertierung'
kept "a source whose name lies"
made=$(find "$HOME" -newer "$work/sums" -type f | wc -l)
[ "$made" -ge 1 ] || fail "nothing was made"
remember

# --- another directory, another filter, a file as the target: the name of the one before does not stay
directory 168
picture 3-scores
search=$(tile '^Parameter der Melodiesuche') || fail "no tile opens the search"
xdotool type --delay 120 '8c4.d.8e'
xdotool windowfocus "$search" || true
keys Return
closed '^Parameter der Melodiesuche' || fail "the melody was not taken"
to_main
keys alt+t
picture 4-search
keys ctrl+Return
window '^Ergebnisse der Melodiesuche' >/dev/null || fail "no results of the search"
picture 5-found
keys Return
closed '^Ergebnisse der Melodiesuche'
kept "a search wrote into it"
remember

# --- MIDI to wave is the filter, and a click shows a wave file
to_main
directory 148
tile '^Midi-Wave-Parameter' >/dev/null || fail "no tile opens MIDI to wave"
keys Escape
closed '^Midi-Wave-Parameter'
directory 128
picture 6-wave
keys ctrl+Return
sleep 3
picture 7-not-run
keys Escape
kept "a clicked file was the target"

# --- the source itself is typed as the target
to_main
directory 148
tile '^Midi-Konvertierungsparameter' >/dev/null || fail "no tile opens the MIDI converter"
keys Return
closed '^Midi-Konvertierungsparameter'
to_main
click 620 135
sleep 0.5
keys alt+t Tab ctrl+a
type_text "$HOME/Musik/lied.mid"
picture 8-typed
keys ctrl+Return
sleep 2
picture 9-refused
keys Escape Escape
kept "the source was the target"
end_program 10-end
echo "targets: four ways to lose a file, nothing lost"
