#!/bin/bash
# Jobs in the real window: many files dropped at once, two jobs that run side by side while the user goes from one to
# the other, windows that are open when the program is told to end. Prints how long the drop takes.
#
#   tests/desktop/jobs.sh PROGRAM [PICTURES]
#
# Exit status 0 when both jobs converted all their files and nothing was lost or left half-written.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
dropped=${TS5_TROUBLE_FILES:-100000}
converted=12000

# set_job NUMBER NAME VALUE
set_job() { "$console" registry set "Jobs\\Job $1" "$2" "$3"; }
done_in() { [ "$(find "$HOME/$1" -name '*.cnv.mid' | wc -l)" -eq "$2" ]; }
begun_in() { find "$HOME/$1" -name '*.cnv.mid' | grep -q .; }
half_written() { find "$HOME" -type f \( -name '*.cnv.mid' -size 0 -o -name '.*.tmp*' \) | grep -q .; }

# --- a drop of many files on the free list: the next window opens when the drop has been taken

make_files "$HOME/Musik/Viele" "$dropped"
set_job 0000 Filter 5
set_job 0000 SourceDrive 0
set_job 0000 SourcePath "$HOME/Musik/Viele"
start_program
sleep 3
click 620 135
keys shift+End
sleep 2
picture 1-selected
drag_selection 175 497
began=$(date +%s%N)
xdotool mouseup 1
xdotool key --clearmodifiers F10
xdotool key --clearmodifiers ctrl+s
window 'speichern' >/dev/null || fail "no window after the drop"
echo "$dropped files dropped, shown as list: $((($(date +%s%N) - began) / 1000000)) ms to the next window"
picture 2-dropped
keys Escape
end_program

[ "$("$console" registry get 'Jobs\Job 0000' SourceFilelistNum)" = "$dropped" ] || fail "$("$console" registry get 'Jobs\\Job 0000' SourceFilelistNum) of the dropped files came"
rm -r "$HOME/Musik/Viele"

# --- two jobs at once

for job in 1 2; do
  make_files "$HOME/Chor$job" "$converted"
  {
    printf 'REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\software\\qlw\\Stavora-dialog\\5.0\\Jobs\\Job %04d]\n' "$job"
    printf '"Title"="Chor %d"\n"Filter"="5"\n"SourcePath"="%s"\n"SourceDrive"="-1"\n"SourceFilelistNum"="%d"\n' \
      "$job" "$HOME" "$converted"
    seq "$converted" |
      awk -v d="$HOME/Chor$job" '{ printf "\"SourceListFile %04d\"=\"%s/lied%06d.mid\"\n", $1, d, $1 }'
  } >"$work/job.reg"
  "$console" registry import "$work/job.reg" >/dev/null
done
"$console" registry set '' 'Job Number' 2
start_program
# The buttons of the jobs stand side by side; Shift+End selects the whole list of each.
for button in 130 200; do
  click "$button" 46
  sleep 0.7
  click 400 135
  keys shift+End
  sleep 0.3
  keys ctrl+Return
  job=$((button == 130 ? 1 : 2))
  within 20 begun_in "Chor$job" || fail "job $job does not run"
done
for round in 1 2 3; do
  click 130 46
  picture "3-first-$round"
  click 200 46
  picture "3-second-$round"
done
within 120 done_in Chor1 "$converted" || fail "the first job did not come to its end"
within 120 done_in Chor2 "$converted" || fail "the second job did not come to its end"
window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results"
picture 4-results
while within 3 shown '^Ergebnisse der Midi-Konvertierung' >/dev/null; do
  back_to '^Ergebnisse der Midi-Konvertierung'
  keys Return
  sleep 1
done
picture 5-results
end_program
! half_written || fail "something half-written"

# --- the results, and then the properties of a file, are open when the program is told to end

mkdir "$HOME/Musik/Ende"
cp "$demo/Maple Leaf Rag.mid" "$HOME/Musik/Ende/lied.mid"
set_job 0000 SourceDrive 0
set_job 0000 SourcePath "$HOME/Musik/Ende"
for open in results properties; do
  start_program
  sleep 1
  click 620 135
  sleep 0.5
  case $open in
    results)
      # A name of the user's own for the converted file.
      click 600 566
      keys ctrl+a
      xdotool type --delay 30 "$HOME/Musik/Ende/neu.mid"
      keys ctrl+Return
      window '^Ergebnisse der Midi-Konvertierung' >/dev/null || fail "no results"
      [ -s "$HOME/Musik/Ende/neu.mid" ] || fail "the typed name was not taken"
      ;;
    properties)
      keys ctrl+e
      window 'igenschaften' >/dev/null || fail "no properties"
      ;;
  esac
  picture "6-$open"
  kill -TERM "$app"
  within 20 gone || fail "the program hangs on its $open"
  app=
done
echo "jobs: $dropped files dropped, 2 jobs of $converted files side by side, ended with windows open: all in order"
