#!/bin/bash
# A musician plays and converts a score with real mouse and keys: looks at its properties, sets parameters, plays it
# with another tempo and from another place, converts it by both methods, reads the results, ends. Needs Xvfb, xdotool
# and ImageMagick's import.
#
#   tests/desktop/score.sh PROGRAM [PICTURES] [KIND]
#
# KIND is the extension of the scores: stv unless given; xml, mxl, stvx.
# Exit status 0 when both MIDI files are there with the same notes and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
take_demo "${3:-stv}"
properties_title='^(Datei-Eigenschaften von|(MusicXML|StvXML)-Dateieigenschaften)'

# press WINDOW KEY...: keys for a window that is open.
press() {
  xdotool windowfocus "$1" 2>/dev/null || true
  sleep 0.2
  shift
  keys "$@"
}

start_program

# The directory "Musik", its last score.
click 320 128
sleep 1.5
click 620 135
sleep 0.3
keys End
sleep 0.5

keys ctrl+e
properties=$(window "$properties_title") || fail "no properties"
press "$properties" End
picture 1-properties
keys Escape
closed "$properties_title" || fail "the properties stay"
to_main

playback=$(tile '^Playback-Parameter') || fail "no tile opens the playback window"
press "$playback" Tab
picture 2-stopped
xdotool windowfocus "$playback"
eval "$(xdotool getwindowgeometry --shell "$playback")"
for page in 3-staves 4-articulation 5-accents 6-sounds 7-dynamics; do
  keys ctrl+Tab
  picture "$page"
done

# Play, from the main window; later at another place and tempo, and paused.
to_main
keys ctrl+Return
sleep 2
picture 8-playing
keys space
sleep 0.5
picture 9-paused
keys space
sleep 1
keys Escape
sleep 1
picture 10-stopped
press "$playback" Escape
closed '^Playback-Parameter' || fail "the playback window stays"
to_main

# convert KEY PICTURE: with the method of that key; the MIDI file is moved out of the way.
convert() {
  to_main
  eval "$(xdotool getwindowgeometry --shell "$main")"
  converter=$(tile '^Partitur-Midi-Parameter') || fail "no tile opens the converter's parameters"
  press "$converter" "$1"
  picture "$2-parameters"
  keys Return
  closed '^Partitur-Midi-Parameter' || fail "the parameters were not taken"
  to_main
  keys ctrl+Return
  results=$(window '^Ergebnisse der Partitur-Midi-Konvertierung') || fail "no results"
  picture "$2-results"
  press "$results" Return
  closed '^Ergebnisse der Partitur-Midi-Konvertierung' || fail "the results stay"
  within 10 sh -c 'ls "$HOME"/Musik/*.mid >/dev/null 2>&1' || fail "no MIDI file"
  mv "$HOME"/Musik/*.mid "$work/$2.mid"
}
notes() { "$console" info "$work/$1.mid" | grep 'Noten:'; }
convert alt+s 11-library
convert alt+m 12-engine
! cmp -s "$work/11-library.mid" "$work/12-engine.mid" || fail "both methods give the same file"
[ "$(notes 11-library)" = "$(notes 12-engine)" ] || fail "the methods do not play the same notes"
"$console" info "$work/12-engine.mid"

end_program 13-end
echo "score: played, converted, ended in order"
