#!/bin/bash
# A user's story of a CD project with real mouse and keys: the burner's pages, a blank disc from the recorder's menu, files,
# a pause, a simulation, two copies with the prompt between them, what is on the disc, grabbing it compressed, copying it, erasing the
# copy. Needs Xvfb, xdotool and ImageMagick's import.
#
#   tests/desktop/burn.sh PROGRAM [PICTURES]
#
# Exit status 0 when both discs hold the same music, the tracks were grabbed and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
# What is grabbed has a name alone, and lands where the program was started.
cd "$HOME"

recorder='STAVORA VIRTUELLER BRENNER'
mkdir "$HOME/CDs"
python3 - "$HOME" <<'PYTHON'
import random, sys, wave
random.seed(7)
for name, seconds in (("01 - Chor - Abendlied", 5), ("Der Mond", 4), ("Zum Schluss", 3)):
    with wave.open(f"{sys.argv[1]}/Musik/{name}.wav", "wb") as out:
        out.setparams((2, 2, 44100, 0, "NONE", ""))
        out.writeframes(random.randbytes(seconds * 44100 * 4))
PYTHON

# recorder_menu KEY: the context menu of the list of recorders, and the entry of that key.
recorder_menu() {
  to_main
  click 500 358
  keys Menu
  sleep 0.5
  [ -z "${2:-}" ] || picture "$2"
  keys "$1"
}
status() { "$console" cd list --json | python3 -c "
import json, sys
print(next((d['disc'] or {}).get('status', '') for d in json.load(sys.stdin)['drives'] if d['name'] == '$recorder'))"; }
# change_to TITLE: the tile that opens those parameters. The change of the filter costs the list of the project, and is
# asked about.
change_to() {
  local y
  for y in $(seq 90 20 700); do
    click 100 "$y"
    sleep 0.5
    keys alt+j
    sleep 0.7
    ! shown "$1" >/dev/null || return 0
    xdotool key Escape
  done
  return 1
}
# burn NAME: the run, up to its results.
burn() {
  to_main
  keys ctrl+Return
  within 60 shown '^Brenn-Ergebnisse' >/dev/null || fail "no results"
  picture "$1"
}

# --- the burner's pages
start_program
keys F10
sleep 1
tile '^Brenn-Job-Parameter' >/dev/null || fail "no tile opens the burner"
picture 1-sources
keys ctrl+Tab
picture 2-parameters
keys alt+s ctrl+Tab
picture 3-conversion
keys ctrl+Tab
picture 4-normalise
keys Return
closed '^Brenn-Job-Parameter' || fail "the parameters were not taken"

# --- a blank disc and three files
recorder_menu r 5-menu
window 'aufbewahrt' >/dev/null || fail "nobody asks where the disc is kept"
xdotool type "$HOME/CDs"
picture 6-folder
keys Return
sleep 1
picture 7-inserted
keys Return
[ "$(status)" = blank ] || fail "there is no blank disc"
"$program" "$HOME/Musik/01 - Chor - Abendlied.wav" "$HOME/Musik/Der Mond.wav" "$HOME/Musik/Zum Schluss.wav"
sleep 2
picture 8-project

# --- a pause of three seconds before all tracks
to_main
keys alt+k p
window '^Track-Pause' >/dev/null || fail "no dialog for pauses"
keys ctrl+a
xdotool type 3
keys alt+a
picture 9-pause
keys Return
closed '^Track-Pause' || fail "the pause was not taken"
picture 10-pauses

# --- simulated, then two copies
burn 11-simulated
keys Return
closed '^Brenn-Ergebnisse'
[ "$(status)" = blank ] || fail "a simulation wrote something"
tile '^Brenn-Job-Parameter' >/dev/null || fail "no tile opens the burner again"
keys ctrl+Tab alt+f alt+k ctrl+a
xdotool type 2
picture 12-two-copies
keys Return
closed '^Brenn-Job-Parameter'
burn 13-next-disc
"$console" cd blank "$HOME/CDs/zwei" --rw >/dev/null || fail "no second disc"
keys Return
sleep 1
within 60 shown '^Brenn-Ergebnisse' >/dev/null || fail "no results of both copies"
picture 14-burnt
keys Return
closed '^Brenn-Ergebnisse'
[ "$(status)" = finalized ] || fail "the second disc is $(status)"
cmp "$HOME/CDs/Virtuelle CD 1/disc.bin" "$HOME/CDs/zwei/disc.bin" || fail "the copies differ"

# --- what is on it
to_main
keys alt+k d Return
window '^Disk-Informationen' >/dev/null || fail "no disc information"
picture 15-disc
keys Return

# --- its tracks: one is looked at, all are grabbed and compressed
to_main
click 500 78
sleep 0.5
keys End Return
sleep 2
click 620 135
picture 16-tracks
keys ctrl+e
window '^Eigenschaften von Track 1' >/dev/null || fail "no track information"
keys alt+e
sleep 1
picture 17-track
keys Return
closed '^Eigenschaften von Track' || fail "the track information stays"
to_main
click 620 135
all_files
change_to '^CD-Grabber-Parameter' || fail "no tile opens the grabber"
keys alt+o
picture 18-grabber
keys alt+g
window '^Wave-Kompression' >/dev/null || fail "nobody asks how tracks are compressed"
keys alt+o
picture 19-compression
keys Return
sleep 0.5
keys alt+j
closed '^Wave-Kompression' || fail "the compression was not taken"
back_to '^CD-Grabber-Parameter'
keys Return
closed '^CD-Grabber-Parameter' || fail "the grabber's parameters were not taken"
to_main
keys ctrl+Return
within 60 shown '^CD-Grabbing-Ergebnisse' >/dev/null || fail "no results of the grabbing"
picture 20-grabbed
keys Return
[ "$(find "$HOME" -name "*.ogg" | wc -l)" = 3 ] || fail "the grabbed files: $(find "$HOME" -name "*.ogg")"

# --- copied from the CD drive
"$console" cd insert "$HOME/CDs/zwei/disc.cue" >/dev/null || fail "the disc does not go into the CD drive"
"$console" cd blank "$HOME/CDs/kopie" --rw >/dev/null || fail "no third disc"
to_main
click 500 78
sleep 0.5
keys End Up Return
sleep 2
# A disc is copied whole: no track is marked.
change_to '^CD-Kopierer-Parameter' || fail "no tile opens the copier"
picture 21-copier
keys Return
closed '^CD-Kopierer-Parameter' || fail "the copier's parameters were not taken"
to_main
keys ctrl+Return
within 60 shown '^Kopier-Ergebnisse' >/dev/null || fail "no results of the copy"
picture 22-copied
keys Return
cmp "$HOME/CDs/zwei/disc.bin" "$HOME/CDs/kopie/disc.bin" || fail "the copy differs"

# --- erased
to_main
keys alt+k c
window '^CD-RW löschen' >/dev/null || fail "no dialog to erase a disc"
picture 23-erase
keys Return
sleep 2
picture 24-erased
keys Return
closed '^CD-RW löschen' || fail "the dialog stays"
[ "$(status)" = blank ] || fail "the disc was not erased"
end_program 25-end
