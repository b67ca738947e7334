#!/bin/bash
# The printed parts of a CD with real mouse and keys: the editor opens, a template is chosen, it fills itself with the
# titles of the list, its title is moved and typed anew, a picture is drawn on the booklet, everything is written into
# a PDF file and measured, and all steps are taken back to the same bytes. Then layouts that are damaged, lack their
# picture or their font. Needs Xvfb, xdotool, ImageMagick, pdfinfo, pdftotext and pdftoppm.
#
#   tests/desktop/artworker.sh PROGRAM [PICTURES]
#
# Exit status 0 when the PDF file has three pages of the right measures with all of that, the layout came back, and
# nothing damaged was taken.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

press() {
  xdotool windowfocus "$1" 2>/dev/null || true
  sleep 0.3
  shift
  keys "$@"
}
# ask KEY TITLE FILE: a file dialog of the editor, and the name that is typed there.
ask() {
  press "$editor" "$1"
  window "$2" >/dev/null || fail "nobody asks: $2"
  keys ctrl+a
  type_text "$3"
  keys Return
}
# save NAME: the layout under that name.
save() {
  ask ctrl+s '^Layout speichern' "$HOME/$1"
  within 10 [ -s "$HOME/$1" ] || fail "$1 was not saved"
  closed '^Layout speichern' || fail "the dialog stays"
}
# print_pdf NAME: everything into that file.
print_pdf() {
  ask alt+d '^PDF-Datei des Artworkers' "$HOME/$1"
  within 30 [ -s "$HOME/$1" ] || fail "no PDF file"
  within 20 shown '^Artworker-Druckergebnisse' >/dev/null || fail "no results"
}
# press_ok WINDOW: the button OK of an element's dialog.
press_ok() {
  eval "$(xdotool getwindowgeometry --shell "$1")"
  xdotool mousemove $((X + WIDTH - 250)) $((Y + HEIGHT - 26)) click 1
}

python3 - "$HOME" <<'PYTHON'
import sys, wave
for name in ("01 - Kammerchor - Der Mond ist aufgegangen", "02 - Kammerchor - Innsbruck"):
    with wave.open(f"{sys.argv[1]}/Musik/{name}.wav", "wb") as out:
        out.setparams((1, 1, 8000, 0, "NONE", ""))
        out.writeframes(bytes([128]) * 8000 * 65)
PYTHON
{
  printf '[sts5 Filelist]\r\nFiles=2\r\n'
  ls "$HOME"/Musik/*.wav | awk '{ printf "%d=%s\r\n", NR, $0 }'
} >"$work/liste.sts"
convert -size 1200x900 gradient:orange-purple "$HOME/Bild.png"

start_program "$work/liste.sts"
for y in $(seq 90 20 700); do
  click 130 "$y"
  sleep 0.3
  editor=$(shown '^Artworker \[') && break
  xdotool key Escape
  to_main
done
[ -n "${editor:-}" ] || fail "no tile opens the editor"
sleep 1
save leer.awl

press "$editor" ctrl+n
window '^Vorlagen' >/dev/null || fail "no gallery"
sleep 5
picture 1-gallery
keys Right Right Right Right Return
closed '^Vorlagen' || fail "the gallery stays"
sleep 1
picture 2-template

# The label's title: moved with the keys, typed anew.
press "$editor" Prior Prior F2 Right Down
keys F3 Return
text=$(window '^Textfeld') || fail "Enter edits nothing"
keys ctrl+a
xdotool type "Abendlieder"
picture 3-text
press_ok "$text"
closed '^Textfeld' || fail "the dialog stays"

# A picture on the booklet, drawn with the mouse over its ground.
press "$editor" ctrl+Tab ctrl+Tab shift+F4
eval "$(xdotool getwindowgeometry --shell "$editor")"
xdotool mousemove $((X + 120)) $((Y + 400)) mousedown 1 mousemove $((X + 200)) $((Y + 450)) \
  mousemove $((X + 320)) $((Y + 550)) mouseup 1
image=$(window '^Abbildung') || fail "nothing is drawn"
keys Tab ctrl+a
type_text "$HOME/Bild.png"
picture 4-image
press_ok "$image"
closed '^Abbildung' || fail "the dialog stays"
sleep 1
picture 5-booklet

print_pdf cd.pdf
picture 6-printed
[ "$(pdfinfo "$HOME/cd.pdf" | awk '/^Pages/ {print $2}')" = 3 ] || fail "not three pages"
pdftotext "$HOME/cd.pdf" "$work/cd.txt"
for words in Abendlieder Kammerchor "Der Mond ist aufgegangen" Innsbruck 1:05; do
  grep -q "$words" "$work/cd.txt" || fail "not printed: $words"
done
pdfimages -list "$HOME/cd.pdf" | grep -q '^ *3 .* 300 ' || fail "no picture on the booklet"
pdftoppm -r 300 -gray "$HOME/cd.pdf" "$work/page"
python3 - "$work" <<'PYTHON' || fail "the page has other measures"
import glob, sys
for name, width, height in zip(sorted(glob.glob(sys.argv[1] + "/page*.pgm")), (117, 150, 242), (117, 118, 120)):
    data = open(name, "rb").read()
    head = data.split(None, 4)
    w, h = int(head[1]), int(head[2])
    pixels = data[-w * h:]
    rows = [y for y in range(h) if min(pixels[y * w:(y + 1) * w]) < 200]
    columns = [x for x in range(w) if min(pixels[x::w]) < 200]
    mm = lambda dots: dots * 25.4 / 300
    found = (mm(columns[-1] - columns[0] + 1), mm(rows[-1] - rows[0] + 1))
    print("%s: %.2f x %.2f mm" % (name.split("/")[-1], *found))
    assert abs(found[0] - width) < 0.2 and abs(found[1] - height) < 0.2, found
PYTHON

keys Return
closed '^Artworker-Druckergebnisse' || fail "the results stay"
sleep 1
save voll.awl
for _ in $(seq 12); do press "$editor" ctrl+z; done
picture 7-undone
save wieder.awl
cmp "$HOME/leer.awl" "$HOME/wieder.awl" || fail "the layout is another one"

# A damaged layout is refused, and nothing changes.
head -c 900 "$HOME/voll.awl" >"$HOME/kaputt.awl"
ask ctrl+o '^Layout laden' "$HOME/kaputt.awl"
closed '^Layout laden' || fail "the dialog stays"
sleep 1
picture 8-damaged
keys Return
save danach.awl
cmp "$HOME/leer.awl" "$HOME/danach.awl" || fail "a damaged layout changed something"

# What a layout lacks is said, and printed all the same.
sed -e "s|^ElemImageFilename=$HOME/Bild.png|ElemImageFilename=$HOME/fehlt.png|" -e 's/^ElemTextFontName=.*/ElemTextFontName=Gibtesnicht\r/' \
  "$HOME/voll.awl" >"$HOME/lueckig.awl"
ask ctrl+o '^Layout laden' "$HOME/lueckig.awl"
closed '^Layout laden' || fail "the dialog stays"
sleep 1
picture 9-said
keys Return
press "$editor" Next
picture 9-lacking
print_pdf lueckig.pdf
picture 10-printed
keys Return
pdftotext "$HOME/lueckig.pdf" - | tr '\n' ' ' | grep -q 'Bild nicht vorhanden oder unbrauchbar!' || fail "the missing picture is not named"
pdftotext "$HOME/lueckig.pdf" - | grep -q Abendlieder || fail "the text without its font is missing"
closed '^Artworker-Druckergebnisse' || fail "the results stay"
press "$editor" Escape Escape
end_program
