#!/bin/bash
# A musician turns MIDI into a score and a score of another program into ours, with real mouse and keys: converts,
# reads the details, looks at the notes, turns pages, makes them larger, ends. Needs Xvfb, xdotool and ImageMagick's
# import.
#
#   tests/desktop/notation.sh PROGRAM [PICTURES]
#
# Exit status 0 when both scores are there, their notes were shown, and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
data=$(realpath "$(dirname "$0")/../data")
cp "$data/midi/mutopia_satie-gymnopedie-no1.mid" "$HOME/Musik/1-satie.mid"
cp "$data/musicxml/openscore_Beethoven_Das_Bluemchen_Wunderhold.musicxml" "$HOME/Musik/2-beethoven.musicxml"

# convert TITLE PICTURE: runs, opens the details and from there the notes.
convert() {
  to_main
  keys ctrl+Return
  results=$(window "$1") || fail "no results: $1"
  xdotool windowfocus "$results" || true
  keys alt+e
  sleep 0.5
  picture "$2-details"
  keys alt+t
  preview=$(window '^Notenbild - ') || fail "no look at the notes"
  sleep 2
  picture "$2-notes"
}

leave() {
  xdotool windowfocus "$1" || true
  sleep 0.3
  keys Escape
}
close_notes() {
  leave "$preview"
  closed '^Notenbild - ' || fail "the notes stay"
}

start_program

# The directory "Musik", its first file.
click 320 128
sleep 1.5
click 620 135
sleep 0.3
keys Home
sleep 0.5
dialog=$(tile '^Midi-Stavora-Konvertierungsparameter') || fail "no tile opens the parameters of MIDI to score"
picture 1-midi-to-score
xdotool windowfocus "$dialog" || true
keys Return
closed '^Midi-Stavora-Konvertierungsparameter' || fail "the parameters stay"
convert '^Ergebnisse der Midi-Stavora-Konvertierung' 2-midi
xdotool windowfocus "$preview" || true
keys Page_Down
picture 3-next-page
keys ctrl+plus ctrl+plus
picture 4-larger
close_notes
leave "$results"
closed '^Ergebnisse der Midi-Stavora-Konvertierung' || fail "the results stay"
[ -s "$HOME/Musik/1-satie.stv" ] || fail "no score of the MIDI file"

to_main
click 620 135
sleep 0.3
keys End
sleep 0.5
dialog=$(tile '^XML-Konvertierung') || fail "no tile opens the parameters of the XML converter"
picture 5-xml
xdotool windowfocus "$dialog" || true
keys Return
closed '^XML-Konvertierung' || fail "the parameters stay"
convert '^Ergebnisse der XML-Konvertierung' 6-xml
close_notes
leave "$results"
closed '^Ergebnisse der XML-Konvertierung' || fail "the results stay"
[ -s "$HOME/Musik/2-beethoven.stvx" ] || fail "no StvXML"

# From the list of files, and the properties.
to_main
keys ctrl+e
properties=$(window '^(MusicXML|StvXML)-Dateieigenschaften') || fail "no properties"
picture 7-properties
keys Escape
to_main
keys ctrl+b
preview=$(window '^Notenbild - ') || fail "no notes from the list"
sleep 2
picture 8-from-the-list
close_notes
end_program 9-end
