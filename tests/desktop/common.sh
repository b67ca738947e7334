# What the stories on a display of their own share. Needs Xvfb, xdotool and ImageMagick's import.
# Set before: program, the workbench; pictures, a directory for pictures or "".
set -eu
desktop=$(realpath "$(dirname "${BASH_SOURCE[0]}")")
demo=$(realpath "$desktop/../../demo")
program=$(realpath "$program")
console=$(dirname "$program")/ts5-batch
[ -x "$console" ] || console=$(dirname "$program")/../batch/ts5-batch
work=$(mktemp -d)
# The server takes a display that is free, and says which.
mkfifo "$work/display"
Xvfb -displayfd 3 -screen 0 1280x860x24 3>"$work/display" >/dev/null 2>&1 &
server=$!
read -r display <"$work/display"
display=:$display
sound=
app=
cleanup() {
  [ -z "$app" ] || kill "$app" 2>/dev/null || true
  [ -z "$sound" ] || kill "$sound" 2>/dev/null || true
  kill "$server" 2>/dev/null || true
  # It takes its display with it, which the next story may have got.
  wait "$server" 2>/dev/null || true
  rm -rf "$work"
}
trap cleanup EXIT

export DISPLAY=$display HOME=$work/home XDG_RUNTIME_DIR=$work/run XDG_DATA_HOME=$work/data
export STAVORA_REGISTRY=$work/registry.sqlite QT_QPA_PLATFORM=xcb
mkdir -p "$HOME/Musik" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
[ -z "$pictures" ] || mkdir -p "$pictures"

fail() {
  echo "${0##*/}: $*" >&2
  [ -z "$pictures" ] || import -window root "$pictures/failure.png" || true
  exit 1
}
# within SECONDS COMMAND...: waits until the command succeeds.
within() {
  local end=$((SECONDS + $1))
  shift
  until "$@"; do
    [ "$SECONDS" -lt "$end" ] || return 1
    sleep 0.1
  done
}
shown() { xdotool search --onlyvisible --name "$1" 2>/dev/null | tail -1 | grep .; }
# window NAME: waits until a window whose title holds NAME is on the screen, and prints its number.
window() { within 20 shown "$1"; }
hidden() { ! shown "$1" >/dev/null; }
# closed NAME: waits until no window of that title is left.
closed() { within 20 hidden "$1"; }
gone() { ! kill -0 "$app" 2>/dev/null; }
picture() { [ -z "$pictures" ] || { sleep 0.5; import -window root "$pictures/$1.png"; }; }
keys() { for key in "$@"; do xdotool key --clearmodifiers "$key"; sleep 0.25; done; }
click() { xdotool mousemove $((X + $1)) $((Y + $2)) click 1; }
to_main() { xdotool windowfocus "$main" || true; }

# tile TITLE: clicks on the tiles of the filter bar until a window of that title opens, and prints its number.
tile() {
  local dialog y
  for y in $(seq 90 20 700); do
    click 100 "$y"
    sleep 0.3
    if dialog=$(shown "$1"); then
      echo "$dialog"
      return
    fi
    xdotool key Escape
    sleep 0.15
  done
  return 1
}
# directory Y: chooses the line of the tree at that height, and its first file.
directory() {
  to_main
  click 320 "$1"
  sleep 2
  click 620 135
  sleep 0.5
}
# back_to TITLE: without a window manager nobody gives the keys back to the window below.
back_to() { xdotool windowfocus "$(window "$1")"; sleep 0.3; }
all_files() { keys shift+End; sleep 0.5; }
type_text() { xdotool type --delay 20 -- "$1"; sleep 0.3; }

# start_program [FILE.sts]: starts it and waits for the main window, not the splash of the same name: main, X, Y.
start_program() {
  "$program" "$@" &
  app=$!
  is_main() {
    main=$(shown '^Stavora Tonstudio 5$') || return 1
    eval "$(xdotool getwindowgeometry --shell "$main" 2>/dev/null)"
    [ "${WIDTH:-0}" -ge 800 ]
  }
  within 60 is_main || fail "no main window"
  sleep 1
  to_main
}
# end_program: the end by its key and with its question.
end_program() {
  to_main
  keys ctrl+w
  sleep 0.7
  picture "${1:-end}"
  keys alt+j
  within 10 gone || fail "the program did not end"
  app=
}

# start_sound: a sound server of its own that swallows what it gets; needs pulseaudio.
start_sound() {
  pulseaudio -n --exit-idle-time=-1 --realtime=no --high-priority=no -L 'module-null-sink sink_name=probe sink_properties=device.description=Probeklang' \
    -L module-native-protocol-unix >/dev/null 2>&1 &
  sound=$!
  within 10 [ -S "$XDG_RUNTIME_DIR/pulse/native" ] || fail "no sound server"
}
sounds() { pactl list short sink-inputs | grep -q .; }
silent() { ! sounds; }

# take_demo KIND...: the demo files with these extensions; what there is not as such (xml, mxl, stvx) is made of the
# scores.
take_demo() {
  local kind score
  for kind in "$@"; do
    case $kind in
      xml | musicxml | mxl | stvx)
        for score in "$demo"/*.stv; do
          "$console" run XmlConverter --dest "$HOME/Musik/$(basename "$score" .stv).$kind" "$score" >/dev/null
        done ;;
      *) cp "$demo"/*."$kind" "$HOME/Musik" ;;
    esac
  done
}

# make_files DIRECTORY COUNT: as many MIDI files of one song, lied000001.mid and on, as links.
make_files() {
  mkdir -p "$1"
  python3 - "$demo/Maple Leaf Rag.mid" "$1" "$2" <<'PYTHON'
import os, shutil, sys
for i in range(int(sys.argv[3])):
    name = f"{sys.argv[2]}/lied{i + 1:06}.mid"
    if i % 50000 == 0:  # no more links to one file than a file system bears
        original = shutil.copy(sys.argv[1], name)
    else:
        os.link(original, name)
PYTHON
}
# drag_selection FROM TO: takes the selected files of the view at one height and holds them over the free list's
# strip at the other.
drag_selection() {
  xdotool mousemove $((X + 620)) $((Y + $1)) mousedown 1
  local step
  for step in 1 2 3 4 5 6 7 8; do
    xdotool mousemove $((X + 620 + step * 20)) $((Y + $1 + step * ($2 - $1) / 8))
    sleep 0.1
  done
  sleep 0.5
}
