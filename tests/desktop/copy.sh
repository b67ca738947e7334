#!/bin/bash
# A user's story of copies that ask: a cue sheet that the recorder refuses, the next disc, a track that cannot be read, pauses that
# nobody finds. Each question is answered with real keys, Yes and No. Needs Xvfb, xdotool and ImageMagick's import.
#
#   tests/desktop/copy.sh PROGRAM [PICTURES]
#
# Exit status 0 when the discs hold what was answered and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

recorder='STAVORA VIRTUELLER BRENNER'
cd_drive='STAVORA VIRTUELLE CD'
mkdir "$HOME/CDs"
python3 - "$HOME/CDs" <<'PYTHON'
import random, sys
random.seed(9)
with open(sys.argv[1] + "/album.bin", "wb") as out:
    out.write(random.randbytes(2352 * 1500))
with open(sys.argv[1] + "/album.cue", "w") as out:
    out.write('FILE "album.bin" BINARY\n'
              '  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n'
              '  TRACK 02 AUDIO\n    INDEX 00 00:06:00\n    INDEX 01 00:08:00\n'
              '  TRACK 03 AUDIO\n    INDEX 00 00:14:00\n    INDEX 01 00:15:00\n')
PYTHON

# disc NAME: its state and its tracks with their pauses.
disc() { python3 -c "
import json, sys
disc = json.load(open('$HOME/CDs/$1/disc.json'))
print(disc['status'], *(t['index'][1] - t['index'][0] if len(t['index']) > 1 else 0 for s in disc['sessions'] for t in s['tracks']))"; }
blank() { "$console" cd blank "$HOME/CDs/$1" --rw >/dev/null || fail "no disc for $1"; }
faults() { echo "$1" >"$work/faults.json"; }
# copy PICTURE TEXT: a run, up to a question or to its results.
copy() {
  to_main
  keys ctrl+Return
  within 60 asked || fail "$1: nobody asks"
  picture "$1"
}
# A question and the results are windows besides the main one.
asked() { [ "$(xdotool search --onlyvisible --pid "$app" --name . 2>/dev/null | wc -l)" -gt 1 ]; }
results() {
  within 60 shown '^Kopier-Ergebnisse' >/dev/null || fail "$1: no results"
  picture "$1"
  keys Return
  closed '^Kopier-Ergebnisse' || fail "$1: the results stay"
}

export STAVORA_SCSI_FAULTS=$work/faults.json
faults '[]'
"$console" cd insert "$HOME/CDs/album.cue" >/dev/null || fail "the disc does not go into the CD drive"
blank eins
start_program
click 500 78
sleep 0.5
keys End Up Return
sleep 2
tile '^CD-Kopierer-Parameter' >/dev/null || fail "no tile opens the copier"
picture 1-copier
keys Return
closed '^CD-Kopierer-Parameter' || fail "the copier's parameters were not taken"

# --- the cue sheet is refused once: No, then Yes
faults '[{"op":"5D","times":1,"sense":"05/26/00"}]'
copy 2-cue-sheet
keys alt+n
results 3-not-copied
[ "$(disc eins)" = blank ] || fail "No wrote something: $(disc eins)"
faults '[{"op":"5D","times":1,"sense":"05/26/00"}]'
copy 4-cue-sheet
keys alt+j
results 5-without-pauses
[ "$(disc eins)" = 'finalized 150 0 0' ] || fail "Yes: $(disc eins)"

# --- a track that cannot be read: the rest of the album, in two copies, and the next disc
blank zwei
faults '[{"drive":"'"$cd_drive"'","op":"BE","lba":1200,"times":99999,"sense":"03/11/00"}]'
tile '^CD-Kopierer-Parameter' >/dev/null || fail "no tile opens the copier again"
keys alt+k Tab ctrl+a
xdotool type 2
picture 6-two-copies
keys Return
closed '^CD-Kopierer-Parameter'
copy 7-unreadable
keys alt+j
within 60 shown '^Kopier-Ergebnisse' >/dev/null || fail "nobody asks for the next disc"
picture 8-next-disc
faults '[]'
blank drei
keys Return
sleep 1
results 9-two-copies
for name in zwei drei; do
  [ "$(disc $name)" = 'finalized 150 150' ] || fail "$name without its third track: $(disc $name)"
done
cmp "$HOME/CDs/zwei/disc.bin" "$HOME/CDs/drei/disc.bin" || fail "the copies differ"

# --- pauses that nobody finds: go on without them
blank vier
faults '[{"drive":"'"$cd_drive"'","op":"42","times":99999,"sense":"05/24/00"}]'
tile '^CD-Kopierer-Parameter' >/dev/null || fail "no tile opens the copier for the third time"
keys alt+k Tab ctrl+a
xdotool type 1
keys Return
closed '^CD-Kopierer-Parameter'
copy 10-pauses
keys alt+n
results 11-no-pauses
[ "$(disc vier)" = 'finalized 150 0 0' ] || fail "without pauses: $(disc vier)"
cmp <(tail -c +$((150 * 2352 + 1)) "$HOME/CDs/vier/disc.bin") "$HOME/CDs/album.bin" || fail "the sectors are not those of the album"
end_program 12-end
