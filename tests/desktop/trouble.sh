#!/bin/bash
# Trouble in the real window: a list of 100,000 files, a run that is stopped, a window that is closed during a run, a
# directory that vanishes while it is shown, files beyond the allowed size. Prints how long the long list takes.
#
#   tests/desktop/trouble.sh PROGRAM [PICTURES]
#
# Exit status 0 when the program stood it all and left nothing half-written.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
count=${TS5_TROUBLE_FILES:-100000}

make_files "$work/viele" "$count"
{
  printf '[sts5 Filelist]\r\nFiles=%d\r\n' "$count"
  seq "$count" | awk -v d="$work/viele" '{ printf "%d=%s/lied%06d.mid\r\n", $1, d, $1 }'
} >"$work/liste.sts"
"$console" registry set 'Jobs\Job 0000' Filter 5
left_over() { find "$work/viele" -name '*.cnv.mid' -size 0 -o -name '.*' -type f | grep -q .; }

# The list comes with the start; all of it is selected by mouse and key.
began=$(date +%s%N)
start_program "$work/liste.sts"
echo "$count files: $((($(date +%s%N) - began) / 1000000 - 1000)) ms from the start to the window with the list"
click 620 135
keys shift+End
sleep 1
picture 1-list
keys ctrl+Return
begun() { find "$work/viele" -name '*.cnv.mid' | grep -q .; }
within 60 begun || fail "nothing is converted"
sleep 1
picture 2-running
keys Escape
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results after a stop"
picture 3-stopped
converted=$(find "$work/viele" -name '*.cnv.mid' | wc -l)
[ "$converted" -gt 0 ] && [ "$converted" -lt "$count" ] || fail "$converted files converted by a run that was stopped"
keys Return
! left_over || fail "something half-written after the stop"

# Closed in the middle of a run.
to_main
keys ctrl+Return
sleep 1
end_program 4-closing
! left_over || fail "something half-written after the end"

# A directory vanishes under the view, and comes back.
mkdir "$HOME/Musik/Chor"
cp "$demo"/*.mid "$HOME/Musik/Chor"
"$console" registry set 'Jobs\Job 0000' SourcePath "$HOME/Musik/Chor"
"$console" registry set 'Jobs\Job 0000' SourceDrive 0
start_program
# What was closed in the middle is offered to go on; it is thrown away here.
picture 5-offer
xdotool windowfocus "$(xdotool search --onlyvisible --name . | grep -v "^$main\$" | tail -1)"
sleep 0.3
keys alt+v
sleep 0.5
to_main
click 620 135
rm -rf "$HOME/Musik/Chor"
sleep 2
picture 5-vanished
keys ctrl+Return Escape
! gone || fail "the program went with the directory"
end_program
# No file may be longer than 64 KiB: the long one fails, the short one does not, and the program lives.
export STAVORA_REGISTRY=$work/small.sqlite
mkdir "$HOME/Musik/Grenze"
cp "$demo/Maple Leaf Rag.mid" "$HOME/Musik/Grenze/kurz.mid"
python3 - "$HOME/Musik/Grenze/lang.mid" <<'PYTHON'
import sys
track = b"\0\xff\x01\x86\x8d\x20" + b"t" * 100000 + b"\0\xff\x2f\0"
data = b"MThd\0\0\0\6\0\1\0\1\0\x60MTrk" + len(track).to_bytes(4, "big") + track
open(sys.argv[1], "wb").write(data)
PYTHON
"$console" registry set 'Jobs\Job 0000' Filter 5
"$console" registry set 'Jobs\Job 0000' SourcePath "$HOME/Musik/Grenze"
"$console" registry set 'Jobs\Job 0000' SourceDrive 0
ulimit -S -f 64
start_program
click 620 135
keys shift+End
sleep 0.5
keys ctrl+Return
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results under the limit"
ulimit -S -f unlimited
picture 6-limit
[ -s "$HOME/Musik/Grenze/kurz.cnv.mid" ] || fail "the short file was not converted under the limit"
[ ! -e "$HOME/Musik/Grenze/lang.cnv.mid" ] || fail "a file beyond the limit"
keys Return
end_program

echo "trouble: $converted of $count files converted before the stop; closed during a run; directory gone; size limit: all in order"
