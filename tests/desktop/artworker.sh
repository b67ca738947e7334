#!/bin/bash
# The printed parts of a CD with real mouse and keys: the editor opens, a template is chosen, its title is
# moved and typed anew, everything is written into a PDF file and measured, and all steps are taken back to the same
# bytes. Needs Xvfb, xdotool, ImageMagick's import, pdfinfo and pdftoppm.
#
#   tests/desktop/artworker.sh PROGRAM [PICTURES]
#
# Exit status 0 when the PDF file has three pages of the right measures and the layout came back.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

press() {
  xdotool windowfocus "$1" 2>/dev/null || true
  sleep 0.3
  shift
  keys "$@"
}
# save NAME: the layout under that name.
save() {
  press "$editor" ctrl+s
  window '^Layout speichern' >/dev/null || fail "the editor does not ask for a name"
  xdotool type "$HOME/$1"
  keys Return
  within 10 [ -s "$HOME/$1" ] || fail "$1 was not saved"
  closed '^Layout speichern' || fail "the dialog stays"
}

start_program
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
eval "$(xdotool getwindowgeometry --shell "$text")"
xdotool mousemove $((X + WIDTH - 250)) $((Y + HEIGHT - 26)) click 1  # OK
closed '^Textfeld' || fail "the dialog stays"

press "$editor" alt+d
window '^PDF-Datei des Artworkers' >/dev/null || fail "nobody asks where the PDF file goes"
keys ctrl+a
xdotool type "$HOME/cd.pdf"
keys Return
within 30 [ -s "$HOME/cd.pdf" ] || fail "no PDF file"
sleep 1
picture 4-printed
[ "$(pdfinfo "$HOME/cd.pdf" | awk '/^Pages/ {print $2}')" = 3 ] || fail "not three pages"
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
for _ in $(seq 12); do press "$editor" ctrl+z; done
picture 5-undone
save wieder.awl
cmp "$HOME/leer.awl" "$HOME/wieder.awl" || fail "the layout is another one"
press "$editor" Escape
end_program
