#!/bin/bash
# Two programs on one registry, in the real window: a second start, the console while a window is open, a notice at the
# start under a plain window manager, a registry that is held.
#
#   tests/desktop/two_programs.sh PROGRAM [PICTURES]
#
# Exit status 0 when nothing that either of them did was lost. Needs openbox and sqlite3 of Python.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
openbox >/dev/null 2>&1 &
manager=$!
trap 'kill $manager 2>/dev/null; cleanup' EXIT

titles() { "$console" jobs --json | python3 -c 'import json,sys; print(",".join(j["title"] for j in json.load(sys.stdin)["jobs"]))'; }
value() { "$console" registry get "$1" "$2" 2>/dev/null; }
cp "$demo"/*.mid "$HOME/Musik"
printf '[sts5 Filelist]\r\nFiles=1\r\n1=%s\r\n' "$HOME/Musik/Maple Leaf Rag.mid" >"$work/liste.sts"
"$console" registry set 'Jobs\Job 0000' Filter 5

# A second start hands its list over, relative to where it was started, and goes.
start_program
(cd "$work" && timeout 20 "$program" liste.sts) || fail "the second start did not go: $?"
sleep 1
picture 1-handed-over
front() { [ "$(xdotool getactivewindow)" = "$main" ]; }
within 5 front || fail "the first window is not in front"

# The console imports jobs meanwhile and changes a setting and the active job.
cat >"$work/jobs.reg" <<'REG'
REGEDIT4

[HKEY_LOCAL_MACHINE\software\qlw\Stavora-dialog\5.0]
"Job Number"="2"
"SuffixConvert"="neu"

[HKEY_LOCAL_MACHINE\software\qlw\Stavora-dialog\5.0\Jobs\Job 0001]
"Title"="Chor"
"Filter"="5"

[HKEY_LOCAL_MACHINE\software\qlw\Stavora-dialog\5.0\Jobs\Job 0002]
"Title"="Orgel"
"Filter"="8"
REG
"$console" registry import "$work/jobs.reg" || fail "no import"
"$console" registry set 'Jobs\Job 0000' Description 'von der Konsole'
sleep 1.5
picture 2-imported
# The window makes a job of its own.
to_main
keys ctrl+n
window '^Job erzeugen$' >/dev/null || fail "no dialog for a job"
xdotool type --delay 30 Fenster
keys Return
sleep 0.5
picture 3-own-job
end_program
[ "$(titles)" = "Default Job,Chor,Orgel,Fenster" ] || fail "jobs: $(titles)"
[ "$(value . SuffixConvert)" = neu ] || fail "the setting of the console is lost"
[ "$(value 'Jobs\Job 0000' Description)" = "von der Konsole" ] || fail "the description of the console is lost"
[ "$(value 'Jobs\Job 0000' 'SourceListFile 0001')" = "$HOME/Musik/Maple Leaf Rag.mid" ] || fail "the list of the second start is lost"

# Many imports while the window is opened and closed.
for round in 1 2 3; do
  start_program
  for n in 1 2 3 4 5; do "$console" registry set "Suchmelodien" "Melodie $round-$n" 0001 --binary; done
  end_program
done
[ "$("$console" registry list Suchmelodien | grep -c ' = hex')" = 15 ] || fail "melodies are lost"

# A damaged key is told about in a box that lies over the window, and costs that job only.
python3 - "$STAVORA_REGISTRY" <<'PYTHON'
import sys
data = bytearray(open(sys.argv[1], "rb").read())
data[data.index(b"Job 0002") + 60] ^= 1
open(sys.argv[1], "wb").write(data)
PYTHON
"$console" jobs 2>"$work/said" >/dev/null
grep -q beschädigt "$work/said" || fail "the console does not tell of the damage"
[ ! -e "$work/registry.defekt.sqlite" ] || fail "a look renamed the registry"
"$program" &
app=$!
boxes() { [ "$(xdotool search --onlyvisible --name '^Stavora Tonstudio 5$' | wc -l)" -ge 2 ]; }
within 30 boxes || fail "no box at the start"
sleep 1
picture 4-notice
keys Return
sleep 1
picture 5-after-notice
main=$(xdotool getactivewindow)
end_program
[ "$(titles)" = "Default Job,Chor,Job 2,Fenster" ] || fail "after the damage: $(titles)"

# A held registry: the session's job waits for it.
python3 - "$STAVORA_REGISTRY" "$work/free" <<'PYTHON' &
import os, sqlite3, sys, time
db = sqlite3.connect(sys.argv[1], isolation_level=None)
db.execute("BEGIN EXCLUSIVE")
open(sys.argv[2] + ".held", "w")
while not os.path.exists(sys.argv[2]): time.sleep(0.1)
db.execute("ROLLBACK")
PYTHON
within 10 [ -e "$work/free.held" ] || fail "not held"
"$program" &
app=$!
within 40 boxes || fail "no box about the held registry"
sleep 1
picture 6-held
keys Return
sleep 0.5
main=$(xdotool getactivewindow)
keys ctrl+n
window '^Job erzeugen$' >/dev/null || fail "no dialog for a job"
xdotool type --delay 30 Gewartet
keys Return
sleep 0.5
touch "$work/free"
waited() { titles | grep -q Gewartet; }
within 20 waited || fail "the job of the waiting session is not in the registry"
picture 7-reached
end_program
case "$(titles)" in *Chor*Fenster*Gewartet*) ;; *) fail "after waiting: $(titles)" ;; esac

echo "two programs: hand-over, import beside a window, a damaged key, a held registry: nothing lost"
