#!/bin/bash
# A user's story of audio CDs with real mouse and keys: choose the empty virtual drive, put an image in, play its tracks
# with the playback window open, drag them into the free list, take the image out. The sound goes to a server of its own
# that swallows it. Needs Xvfb, xdotool, ImageMagick's import and pulseaudio.
#
#   tests/desktop/disc.sh PROGRAM [PICTURES]
#
# Exit status 0 when the tracks sounded and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

start_sound

"$console" run MidiToWave --set 'DestFormat=44100 2 16' --dest "$HOME/Rag.wav" "$demo/Maple Leaf Rag.mid" >/dev/null ||
  fail "the console makes no wave file"
cat >"$HOME/Rag.cue" <<'END'
FILE "Rag.wav" WAVE
  TRACK 01 AUDIO
    INDEX 01 00:00:00
  TRACK 02 AUDIO
    INDEX 00 00:28:00
    INDEX 01 00:30:00
END

# --- the empty drive asks for its disc
start_program
picture 1-start
click 500 78
sleep 0.5
# The recorder is the last one.
keys End Up Return
window '^CD-Abbild einlegen' >/dev/null || fail "the empty drive asks for nothing"
picture 2-empty
xdotool type "$HOME/Rag.cue"
keys Return
closed '^CD-Abbild einlegen' || fail "the image was not taken"
sleep 1
picture 3-tracks

# --- both tracks play; the second by its key
click 620 135
keys shift+End
picture 4-selected
player=$(tile '^Playback-Parameter') || fail "no tile opens the audio player"
to_main
keys ctrl+Return
within 10 sounds || fail "nothing sounds"
sleep 2
xdotool windowfocus "$player" || true
picture 5-playing
to_main
keys Next
sleep 2
xdotool windowfocus "$player" || true
picture 6-next
to_main
"$console" cd eject 2>/dev/null && fail "the disc was taken out while it plays"
keys Escape
within 10 silent || fail "it still sounds"
xdotool windowfocus "$player" || true
keys Escape
closed '^Playback-Parameter' || fail "the window of the player stays"

# --- tracks are dragged into the free list
to_main
drag_selection 135 525
xdotool mouseup 1
sleep 1
keys F10
sleep 1
picture 7-list
keys F10
sleep 2

# --- out again; the list has kept them
"$console" cd eject || fail "the disc stays"
sleep 2
picture 8-ejected
end_program 9-end
[ "$("$console" registry get 'Jobs\Job 0000' 'SourceListFile 0002')" = 'STAVORA VIRTUELLE CD\Track 02' ] ||
  fail "the list has lost its tracks"
