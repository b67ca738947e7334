#!/bin/bash
# Two conversions of 3,000 files with one that cannot be converted in each hundred: the table of the results, the second
# try of what failed, and how true the remaining times come that the console shows. Prints the times.
#
#   tests/desktop/results.sh PROGRAM [PICTURES]
#
# Exit status 0 when the table, the second try and the files are right. How true times come is printed only: the machine
# may have other work.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
count=${TS5_RESULT_FILES:-3000}

# --- the console: MIDI files and wave files, watched on a terminal of its own
mkdir -p "$work/midi" "$work/wave"
python3 - "$demo" "$work" "$count" <<'PYTHON'
import glob, os, random, shutil, struct, sys
demo, work, count = sys.argv[1], sys.argv[2], int(sys.argv[3])
random.seed(5)
songs = [song for song in sorted(glob.glob(f"{demo}/*.mid")) if "Abgebrochen" not in song]
for i in range(count):
    broken = i % 100 == 57
    name = f"lied{i:05}"
    if broken:
        open(f"{work}/midi/{name}.mid", "wb").write(b"kein Midi")
        open(f"{work}/wave/{name}.wav", "wb").write(b"kein Wave")
        continue
    shutil.copy(random.choice(songs), f"{work}/midi/{name}.mid")
    data = random.randbytes(2 * random.randrange(2000, 300000))
    head = struct.pack("<4sI4s4sIHHIIHH4sI", b"RIFF", 36 + len(data), b"WAVE", b"fmt ", 16, 1, 1, 44100, 88200, 2, 16,
                       b"data", len(data))
    open(f"{work}/wave/{name}.wav", "wb").write(head + data)
PYTHON
cat >"$work/watch.py" <<'PYTHON'
import os, pty, re, sys, time
began = time.monotonic()
shown = []
def read(fd):
    data = os.read(fd, 4096)
    for text in data.decode("utf-8", "replace").split("\r"):
        at = re.search(r"\((\d+) %\)  [\d:]+, (?:noch etwa (?:(\d+):)?(\d+):(\d\d)|noch wenige)", text)
        if at:
            left = 3600 * int(at[2] or 0) + 60 * int(at[3]) + int(at[4]) if at[3] else 3
            shown.append((time.monotonic() - began, int(at[1]), left))
    return data
status = os.waitstatus_to_exitcode(pty.spawn(sys.argv[2:], read))
total = time.monotonic() - began
later = [(at, left) for at, done, left in shown if at >= total / 4]
worst = max((abs(at + left - total) / total for at, left in later), default=0)
first = f"after {shown[0][0]:.1f} s ({shown[0][1]} %)" if shown else "never"
print(f"{sys.argv[1]}: {total:.1f} s; time left first told {first}, {len(later)} times from the first quarter on, "
      f"off by at most {100 * worst:.0f} % of the whole", file=os.fdopen(3, "w"))
sys.exit(status)
PYTHON
tell() {
  local status=0
  # What the terminal shows is only looked at.
  python3 "$work/watch.py" "$@" 3>&1 >/dev/null || status=$?
  [ "$status" = 1 ] || fail "$1: exit status $status, and 1 says that some failed"
}
mkdir "$work/midi-neu" "$work/wave-neu"
tell "MIDI files, time base" "$console" run MidiConverter --set ChangeTimebase=1 --set NewTimebase=11 --overwrite yes \
  --dest-dir "$work/midi-neu" --dir "$work/midi"
tell "wave files, 48 kHz" "$console" run WaveConverter --set SamplesPerSec=48000 --overwrite yes \
  --dest-dir "$work/wave-neu" --dir "$work/wave"
for kind in midi wave; do
  made=$(find "$work/$kind-neu" -type f | wc -l)
  [ "$made" = $((count - count / 100)) ] || fail "$made $kind files of $count"
done

# --- the window: the table, and the second try
{
  printf '[sts5 Filelist]\r\nFiles=%d\r\n' "$count"
  seq 0 $((count - 1)) | awk -v d="$work/midi" '{ printf "%d=%s/lied%05d.mid\r\n", $1 + 1, d, $1 }'
} >"$work/liste.sts"
"$console" registry set 'Jobs\Job 0000' Filter 5
start_program "$work/liste.sts"
click 620 135
keys shift+End
sleep 1
keys ctrl+Return
sleep 3
picture 1-running
results=$(within 300 shown '^Ergebnisse der Midi-Konvertierung') || fail "no results"
sleep 0.5
picture 2-results
keys alt+e
sleep 1
picture 3-details
# What failed comes first: Enter shows it in the list.
keys Return
sleep 0.5
picture 4-shown
# The files are mended, and only they are converted.
for broken in $(seq 57 100 $((count - 1))); do
  cp "$demo/Maple Leaf Rag.mid" "$work/midi/lied$(printf %05d "$broken").mid"
done
find "$work/midi" -name '*.cnv.mid' -delete
keys alt+n
again() { [ "$(find "$work/midi" -name '*.cnv.mid' | wc -l)" = $((count / 100)) ]; }
within 60 again || fail "$(find "$work/midi" -name '*.cnv.mid' | wc -l) files of the second try"
within 20 shown '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results of the second try"
sleep 0.5
picture 5-again
keys Return
end_program 6-end
echo "table and second try: $((count / 100)) files of $count"
