#!/bin/bash
# A user's story of sound with real mouse and keys: convert wave files, look at the properties of one, make waves of MIDI
# files, play audio and MIDI files with the playback window open. The sound goes to a server of its own that swallows it.
# Needs Xvfb, xdotool, ImageMagick's import and pulseaudio.
#
#   tests/desktop/audio.sh PROGRAM [PICTURES]
#
# Exit status 0 when the converted files are there in their formats, both players played and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

start_sound

mkdir "$HOME/Klang"
cp "$demo/Maple Leaf Rag.mid" "$demo/Gymnopédie Nr. 1.rdl" "$HOME/Musik"
"$console" run MidiToWave --set 'DestFormat=22050 2 16' --dest "$HOME/Klang/Rag.wav" "$demo/Maple Leaf Rag.mid" \
  >/dev/null || fail "the console makes no wave file"
cp "$HOME/Klang/Rag.wav" "$HOME/Klang/Rag 2.wav"

# format FILE: what the console says of a file's format.
format() { "$console" info --json "$1" | grep -A1 '"Format"' | grep -o '[0-9]* Hz.*"' || true; }

# The tree of the drive: "Klang", then "Musik".
start_program
directory 128
all_files
picture 1-directory

# --- the wave converter: another format by its place in the list, then the run
tile '^Zielformat für die Konvertierung' >/dev/null || fail "no tile opens the wave converter"
picture 2-converter
keys Home Down Down Return
closed '^Zielformat für die Konvertierung' || fail "the format was not taken"
to_main
keys ctrl+Return
window '^Ergebnisse der Wave-Konvertierung' >/dev/null || fail "no results of the conversion"
picture 3-converted
keys Return
closed '^Ergebnisse der Wave-Konvertierung'
for name in Rag 'Rag 2'; do
  [ "$(format "$HOME/Klang/$name.cnv.wav")" = '8000 Hz (Samples per Sek), 16 Bits per Sample, Mono"' ] ||
    fail "$name: $(format "$HOME/Klang/$name.cnv.wav")"
done

# --- properties, with what is measured
to_main
click 620 135
keys ctrl+e
window '^Eigenschaften von' >/dev/null || fail "no properties"
sleep 2
picture 4-properties
keys Escape
closed '^Eigenschaften von'

# --- the audio player: all four files, with the window, seeking and skipping
directory 128
all_files
player=$(tile '^Playback-Parameter') || fail "no tile opens the audio player"
to_main
keys ctrl+Return
sleep 3
xdotool windowfocus "$player" || true
sleep 0.5
picture 5-playing
# Ten seconds back and on, then the next title.
keys ctrl+Next ctrl+Prior
sleep 1
picture 6-seeked
sounds || fail "nothing sounds"
to_main
keys Next
sleep 1
picture 7-next
keys Escape
within 10 silent || fail "it still sounds"
xdotool windowfocus "$player" || true
keys Escape
closed '^Playback-Parameter' || fail "the window of the player stays"

# --- MIDI to wave and the MIDI player
directory 148
all_files
parameters=$(tile '^Midi-Wave-Parameter') || fail "no tile opens the MIDI-to-wave parameters"
picture 8-midi-to-wave
keys alt+f
window '^Format für TiMidity' >/dev/null || fail "no window for the format"
picture 9-format
keys alt+m Return
closed '^Format für TiMidity' || fail "the format was not taken"
xdotool windowfocus "$parameters" || true
keys Return
closed '^Midi-Wave-Parameter' || fail "the parameters were not taken"
to_main
keys ctrl+Return
within 60 shown '^Ergebnisse der Midi-Wave-Konvertierung' >/dev/null || fail "no results of MIDI to wave"
picture 10-made
keys Return
[ "$(format "$HOME/Musik/Maple Leaf Rag.wav")" = '44100 Hz (Samples per Sek), 16 Bits per Sample, Mono"' ] ||
  fail "the wave file: $(format "$HOME/Musik/Maple Leaf Rag.wav")"
[ "$(head -c 4 "$HOME/Musik/Gymnopédie Nr. 1.rdl")" = RDL3 ] || fail "the sequencer file was changed"

# The MIDI files alone, read anew.
rm "$HOME/Musik/"*.wav
directory 128
all_files
directory 148
all_files
player=$(tile '^Playback-Parameter') || fail "no tile opens the MIDI player"
to_main
keys ctrl+Return
sleep 3
xdotool windowfocus "$player" || true
picture 11-midi-player
sounds || fail "the MIDI file does not sound"
to_main
keys Escape
sleep 1
xdotool windowfocus "$player" || true
keys Escape
[ "$(head -c 4 "$HOME/Musik/Gymnopédie Nr. 1.rdl")" = RDL3 ] || fail "the player changed the sequencer file"

# --- a sound server that hangs keeps nobody from leaving
closed '^Playback-Parameter' || fail "the window of the MIDI player stays"
to_main
keys ctrl+Return
within 10 sounds || fail "the MIDI file does not sound again"
kill -STOP "$sound"
leaving=$app
end_program 12-end
kill -CONT "$sound"
wait "$leaving" || fail "it ended with status $?"
"$console" jobs >/dev/null || fail "the registry was not left in order"
echo "audio: converted, measured, played, ended in order"
