#!/bin/bash
# The first minute of somebody who has never seen the program, by mouse and without the help: a start on a folder with
# music, a piece is heard, a melody found and heard, a CD made, and its cover.
#
#   tests/desktop/first_minute.sh PROGRAM [PICTURES]
#
# Exit status 0 when the CD and the PDF file of the cover are there and the program ended by itself. Needs pulseaudio, too.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"
take_demo mid
python3 - "$HOME" <<'PYTHON'
import random, sys, wave
for name in ("01 - Chor - Abendlied", "02 - Chor - Innsbruck"):
    with wave.open(f"{sys.argv[1]}/Musik/{name}.wav", "wb") as out:
        out.setparams((2, 2, 44100, 0, "NONE", ""))
        out.writeframes(random.randbytes(4 * 44100 * 4))
PYTHON
"$console" cd blank "$HOME/CD" >/dev/null
double_click() { xdotool mousemove $((X + $1)) $((Y + $2)) click --repeat 2 --delay 80 1; }
# in_window NUMBER X Y: a click at a place of another window.
in_window() { xdotool mousemove --window "$1" "$2" "$3" click 1; sleep 0.5; }

start_sound
start_program
picture 1-start

# The folder with the music is there; a double click is heard.
double_click 620 215
within 20 sounds || fail "a double click is not heard"
picture 2-heard

# Three notes, any key and rhythm; what is found stands in the window, and a double click is heard again.
search=$(tile '^Parameter der Melodiesuche') || fail "no tile opens the melody's parameters"
for note in 0 1 2; do in_window "$search" $((144 + note * 45)) $((270 - note * 7)); done
in_window "$search" 118 420
picture 3-melody
keys Return
closed '^Parameter der Melodiesuche' || fail "the melody was not taken"
to_main
click 620 175
keys shift+End alt+m ctrl+Return
window '^Ergebnisse der Melodiesuche' >/dev/null || fail "no results"
picture 4-found
keys Return
within 20 silent || fail "the piece does not end before the hit is heard"
to_main
double_click $((WIDTH / 2)) $((HEIGHT - 150))
within 20 sounds || fail "a hit is not heard"
picture 5-hit

# The burner first, as it begins with an empty list; then the titles.
to_main
keys F10
sleep 1
tile '^Brenn-Job-Parameter' >/dev/null || fail "no tile opens the burner"
keys Return
closed '^Brenn-Job-Parameter' || fail "the burner was not chosen"
to_main
keys F10
sleep 1.5
click 620 135
xdotool keydown shift
click 620 155
xdotool keyup shift
keys ctrl+c F10
sleep 1
click 620 135
keys ctrl+v
sleep 1
picture 6-project
keys ctrl+Return
within 60 shown '^Brenn-Ergebnisse' >/dev/null || fail "nothing was burnt"
picture 7-burnt
keys Return
closed '^Brenn-Ergebnisse' || fail "the results stay"
[ -s "$HOME/CD/disc.bin" ] || fail "the CD is empty"

# The project is kept as a job of its own, and the cover takes its titles from there.
to_main
keys ctrl+n
window '^Job erzeugen' >/dev/null || fail "no new job"
keys Return
closed '^Job erzeugen' || fail "the job was not kept"
to_main
for y in $(seq 90 20 840); do
  click 100 "$y"
  sleep 0.5
  keys alt+j
  sleep 0.7
  ! editor=$(shown '^Artworker \[') || break
  xdotool key Escape
  to_main
done
[ -n "${editor:-}" ] || fail "no tile opens the editor"
xdotool windowfocus "$editor" || true
in_window "$editor" 28 30
window '^Vorlagen' >/dev/null || fail "no gallery"
sleep 3
picture 8-gallery
keys Return
closed '^Vorlagen' || fail "no template was taken"
xdotool windowfocus "$editor" || true
sleep 1
picture 9-cover
keys alt+d
window '^PDF-Datei des Artworkers' >/dev/null || fail "nobody asks where to print"
keys ctrl+a
type_text "$HOME/Hülle.pdf"
keys Return
within 30 [ -s "$HOME/Hülle.pdf" ] || fail "nothing was printed"
window '^Artworker-Druckergebnisse' >/dev/null || fail "no results of the print"
picture 10-printed
keys Return
xdotool windowfocus "$editor" || true
keys Escape
end_program 11-end
echo "first minute: heard, found, burnt, printed"
