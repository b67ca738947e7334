#!/bin/bash
# What a musician sees when a disc goes wrong: drives that fail, sources that change, folders that are full, a program that
# is killed. Each case names what the console must say, its status, and what must be on the disc then. Needs python3; full
# folders are tried where this user may mount.
#
#   tests/disc/faults.sh TS5_BATCH
batch=$(realpath "$1")
work=$(mktemp -d) || exit 1
trap 'mountpoint -q "$work/full" && umount "$work/full"; rm -rf "$work"' EXIT
export STAVORA_REGISTRY=$work/r.sqlite XDG_DATA_HOME=$work/data HOME=$work TMPDIR=$work
cd "$work" || exit 1
recorder='STAVORA VIRTUELLER BRENNER'
cd_drive='STAVORA VIRTUELLE CD'
failed=0

python3 - <<'PYTHON'
import random, struct, wave
random.seed(5)
def sound(name, frames, channels=2, rate=44100):
    with wave.open(name, "wb") as out:
        out.setparams((channels, 2, rate, 0, "NONE", ""))
        out.writeframes(random.randbytes(frames * 2 * channels))
sound("a.wav", 588 * 300)
sound("b.wav", 588 * 300)
sound("lang.wav", 44100 * 60)
sound("mono.wav", 22050 * 20, 1, 22050)
sound("zwei.wav", 44100 * 2)
# Files that take no room: what fits on 74 minutes, and one frame more.
for name, sectors in (("passt.wav", 74 * 60 * 75 - 151), ("zulang.wav", 74 * 60 * 75 - 150)):
    size = sectors * 2352
    with open(name, "wb") as out:
        out.write(b"RIFF" + struct.pack("<I", 36 + size) + b"WAVEfmt " +
                  struct.pack("<IHHIIHH", 16, 1, 2, 44100, 176400, 4, 16) + b"data" + struct.pack("<I", size))
        out.truncate(44 + size)
open("bild.bin", "wb").write(random.randbytes(2352 * 1500))
def sheet(name, *tracks):
    with open(name, "w") as out:
        out.write('FILE "bild.bin" BINARY\n')
        for i, (kind, at) in enumerate(tracks):
            out.write(f"TRACK {i + 1:02} {kind}\nINDEX 01 00:{at // 75:02}:{at % 75:02}\n")
sheet("musik.cue", ("AUDIO", 0), ("AUDIO", 300), ("AUDIO", 700))
sheet("spiel.cue", ("MODE1/2352", 0), ("AUDIO", 600), ("AUDIO", 900))
sheet("extra.cue", ("AUDIO", 0), ("AUDIO", 300), ("MODE2/2352", 700))
sheet("verkehrt.cue", ("AUDIO", 700), ("AUDIO", 300))
sheet("dahinter.cue", ("AUDIO", 0), ("AUDIO", 3000))
sheet("viele.cue", *(("AUDIO", i) for i in range(200)))
PYTHON

disc() { python3 -c "
import json
disc = json.load(open('d/disc.json'))
print(disc['status'], sum(len(one['tracks']) for one in disc['sessions']))"; }
# check NAME STATUS DISC TEXT COMMAND...: DISC is its state and its tracks, or "-"; TEXT must be in the output.
check() {
  local name=$1 status=$2 disc=$3 text=$4 out got
  shift 4
  out=$(timeout 60 "$@" 2>&1 </dev/null)
  got=$?
  [ "$got" = "$status" ] || { echo "$name: status $got, not $status"; failed=1; }
  [[ $out == *"$text"* ]] || { printf '%s: nothing says "%s":\n%s\n' "$name" "$text" "$out"; failed=1; }
  [ "$disc" = - ] || [ "$(disc)" = "$disc" ] || { echo "$name: the disc is $(disc), not $disc"; failed=1; }
}
blank() { rm -rf d; "$batch" cd blank d "$@" >/dev/null || failed=1; }
# with FAULTS COMMAND...: drives that fail.
with() { echo "$1" >f.json; shift; STAVORA_SCSI_FAULTS=$work/f.json "$@"; }
burn() { "$batch" run CdBurner --quiet --drive "$recorder" --set BurnMode=2 "$@"; }
grab() { rm -rf g; mkdir g; "$batch" run CdGrabber --quiet --dir "$cd_drive" --dest-dir g "$@"; }
copy() { "$batch" run CdCopier --quiet --source "$cd_drive" --drive "$recorder" "$@"; }

# For the shells that timeout starts.
export batch recorder cd_drive work
export -f with burn grab copy

# --- the drive, while a disc is burnt
while IFS='|' read -r name faults disc text; do
  blank
  check "$name" 1 "$disc" "$text" bash -c 'with "$@"' with "$faults" burn a.wav b.wav
done <<'END'
the drive vanishes|[{"op":"2A","skip":3,"times":99999,"sense":"00/00/00"}]|damaged 0|antwortet nicht mehr
the medium is changed|[{"op":"2A","skip":3,"sense":"06/28/00"}]|damaged 0|gewechselt oder herausgenommen
the cue sheet is refused|[{"op":"5D","sense":"05/26/00"}]|blank 0|(Code 2401)
a sector cannot be written|[{"op":"2A","lba":333,"sense":"03/0C/00"}]|damaged 0|kann auf den Rohling nicht schreiben
the data come too late|[{"op":"2A","lba":333,"sense":"03/0C/09"}]|damaged 0|Unterbrochener Datenfluss
the disc cannot be closed|[{"op":"5B","sense":"05/72/03"}]|damaged 0|Fehler beim Schließen
END

# --- sources that change while the drive takes its time
slow='[{"op":"2A","lba":100,"delayMs":1500,"sense":null}]'
# changing NAME STATUS DISC TEXT SOURCE CHANGE FILE...
changing() {
  blank
  cp "$5" s.wav
  (sleep 0.7; $6 s.wav) &
  check "$1" "$2" "$3" "$4" bash -c 'with "$@"' with "$slow" burn "${@:7}"
}
changing "a source shrinks" 1 "damaged 0" "Quelle wurde während des Brennens kürzer" lang.wav "truncate -s 3000000" s.wav b.wav
changing "a source vanishes while it is read" 0 "finalized 2" "nicht mit den Daten verglichen" lang.wav rm s.wav b.wav
changing "a source vanishes before its turn" 1 "damaged 0" "Quelle wurde während des Brennens kürzer" b.wav rm lang.wav s.wav
blank
check "a source was never there" 1 "blank 0" "Quelldatei ist nicht vorhanden" bash -c 'burn "$@"' burn nichts.wav b.wav

# --- lengths
blank
check "two seconds" 0 "finalized 1" "alle Sektoren stimmen" bash -c 'burn "$@"' burn zwei.wav
blank
mkdir n
for i in $(seq 1 100); do ln zwei.wav "n/$(printf %03d "$i").wav"; done
check "100 tracks" 1 "blank 0" "höchstens 99 Tracks" bash -c 'burn n/*.wav'
rm n/100.wav
check "99 tracks" 0 "finalized 99" "alle Sektoren stimmen" bash -c 'burn n/*.wav'
blank --minutes 74
check "one frame too long" 1 "blank 0" "nicht ausreichend" bash -c 'burn "$@"' burn --set BurnVerify=0 zulang.wav
check "full to the last frame" 0 "finalized 1" "Bemerkungen" bash -c 'burn "$@"' burn --set BurnVerify=0 passt.wav

# --- killed in the middle
blank
echo '[{"op":"2A","lba":100,"delayMs":9000,"sense":null}]' >f.json
STAVORA_SCSI_FAULTS=f.json "$batch" run CdBurner --quiet --drive "$recorder" --set BurnMode=2 a.wav >/dev/null 2>&1 &
burning=$!
until [ -s d/disc.bin ]; do sleep 0.1; done
check "a drive that burns" 1 - "wird gerade von einem anderen" bash -c 'burn "$@"' burn a.wav
kill -9 "$burning" && wait "$burning" 2>/dev/null
check "after the kill" 0 "damaged 0" "Brennvorgang abgebrochen" "$batch" cd list
check "a disc that broke off" 1 "damaged 0" "Rohling ist nicht leer" bash -c 'burn "$@"' burn a.wav

# --- what makes no disc
for sheet in verkehrt dahinter viele; do
  check "$sheet.cue" 1 - "ist kein CUE-Sheet" "$batch" cd insert "$sheet.cue"
done
mkfifo rohr
printf 'FILE "rohr" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n' >rohr.cue
printf 'FILE "/dev/zero" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n' >geraet.cue
for sheet in rohr geraet; do
  check "$sheet.cue" 1 - "kann nicht gelesen werden" "$batch" cd insert "$sheet.cue"
done

# --- music beside data
for sheet in spiel extra; do
  "$batch" cd insert "$sheet.cue" >/dev/null || failed=1
  check "$sheet: its music" 0 - "gelesene Tracks:                 2" bash -c 'grab'
done
blank
check "a copy up to the data" 0 "finalized 2" "alle Sektoren stimmen" bash -c 'copy'
"$batch" cd insert spiel.cue >/dev/null
blank
check "data first" 1 "blank 0" "ist keine Audio-CD" bash -c 'copy'

# --- reading
"$batch" cd insert musik.cue >/dev/null || failed=1
bad='[{"op":"BE","drive":"STAVORA VIRTUELLE CD","lba":400,"times":99999,"sense":"03/11/00"}]'
check "a sector is unreadable" 1 - "(Code 1804) Die Quell-CD ist an einer Stelle nicht zu lesen" bash -c 'with "$@"' with "$bad" grab
[ "$(ls g)" = $'Track01.wav\nTrack03.wav' ] || { echo "grabbed in spite of it: $(ls g)"; failed=1; }
check "another disc" 1 - "Quell-CD wurde während des Lesens gewechselt" bash -c 'with "$@"' with '[{"op":"BE","lba":400,"sense":"06/28/00"}]' grab
[ "$(ls g)" = Track01.wav ] || { echo "grabbed from another disc: $(ls g)"; failed=1; }
check "a sector is read at last" 0 - "keine" bash -c 'with "$@"' with "${bad/99999/3}" grab
blank
check "a copy on the fly breaks off" 1 "damaged 0" "nicht mehr zu lesen" bash -c 'with "$@"' with "$bad" copy --set CopyOnTheFly=1
blank
check "a copy lacks a track" 1 "blank 0" "an einer Stelle nicht zu lesen" bash -c 'with "$@"' with "$bad" copy

# --- drives that answer what cannot be
# toc NUMBER:START...: a table of contents in hexadecimal
toc() { python3 -c '
import sys
rows = b"".join(bytes([0, 16, int(n), 0]) + int(at).to_bytes(4, "big") for n, at in (one.split(":") for one in sys.argv[1:]))
print((2 + len(rows)).to_bytes(2, "big").hex() + "0101" + rows.hex())' "$@"; }
while IFS='|' read -r name op reply text run; do
  blank
  check "$name" 1 "blank 0" "$text" bash -c 'with "$@"' with '[{"op":"'"$op"'","times":999,"reply":"'"$reply"'"}]' $run
done <<END
200 tracks|43|$(toc $(seq 200 | sed 's/.*/&:&/') 170:30000)|keine brauchbare Auskunft|copy
tracks in no order|43|$(toc 1:500 2:100 170:1500)|keine brauchbare Auskunft|copy
music beyond all discs|43|$(toc 1:0 2:900000 170:1000000)|keine brauchbare Auskunft|copy
a length that lies|43|ffff0101001001|keine brauchbare Auskunft|copy
no table of contents|43||keine lesbare Audio-CD|grab
information that is cut|51|0020|keine brauchbare Auskunft|burn a.wav
a place before the disc|52|001a010100004f01800000008000000000000000$(printf %016d 0)|keine brauchbare Auskunft|burn a.wav
no write parameters|5A|$(printf %0120d 0)|nimmt die Brennparameter nicht an|burn a.wav
sectors that are cut|BE|0102|an einer Stelle nicht zu lesen|copy
END

# --- full folders
mkdir full
if mount -t tmpfs -o size=1m tmpfs full 2>/dev/null; then
  check "no room to grab" 1 - "kein Platz mehr" "$batch" run CdGrabber --quiet --dir "$cd_drive" --dest-dir full
  [ "$(ls -A full)" = Track01.wav ] || { echo "left in the full folder: $(ls -A full)"; failed=1; }
  rm full/*
  blank
  check "no room for a copy" 1 "blank 0" "nicht genug Platz" bash -c 'copy "$@"' copy --set CopySysTempPath=0 --set CopyUserTempPath="$work/full"
  check "no room to convert" 1 "blank 0" "konnte nicht geschrieben werden" bash -c 'burn "$@"' burn --set BurnSysTempPath=0 --set BurnUserTempPath="$work/full" mono.wav
  [ -z "$(ls -A full)" ] || { echo "left in the full folder: $(ls -A full)"; failed=1; }
fi
exit $failed
