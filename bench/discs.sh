#!/bin/bash
# How long a disc takes to be burnt and grabbed beside copying the same bytes, on the virtual drives without the time of
# real ones. Each time is the best of three runs of the whole program. What the program makes is on the disk when it ends,
# so the copy is, too. Needs python3.
#
#   bench/discs.sh CONSOLE     (a release build)
set -eu
console=$(realpath "$1")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work XDG_DATA_HOME=$work/data STAVORA_REGISTRY=$work/registry.sqlite TMPDIR=$work LC_ALL=C.UTF-8
cd "$work"
recorder='STAVORA VIRTUELLER BRENNER'

# Twelve tracks of five minutes, which fill most of a disc.
python3 - <<'PYTHON'
import random, wave
random.seed(3)
for track in range(1, 13):
    with wave.open(f"{track:02}.wav", "wb") as out:
        out.setparams((2, 2, 44100, 0, "NONE", ""))
        for _ in range(300):
            out.writeframes(random.randbytes(176400))
PYTHON
bytes=$(cat ./*.wav | wc -c)
echo "12 tracks, $((bytes / 1000000)) MB"

now() { date +%s.%N; }
# best PREPARATION COMMAND: the shortest time of the command of three, in seconds.
best() {
  local i start
  for i in 1 2 3; do
    eval "$1"
    start=$(now)
    eval "$2"
    python3 -c "print($(now) - $start)"
  done | sort -g | head -1
}
# row WHAT SECONDS [SECONDS_OF_THE_PEER]: the peer is the copy.
row() { python3 -c 'import sys; a, b = map(float, sys.argv[2:]); print(f"{sys.argv[1]:44} {a:7.2f} s {a / b:6.2f} times")' "$1" "$2" "${3:-$copy}"; }
new() { rm -rf disc; "$console" cd blank disc >/dev/null; }
burn() { "$console" run CdBurner --quiet --drive "$recorder" "$@" ./*.wav >/dev/null; }
grab() { "$console" run CdGrabber --quiet --dir "$recorder" --dest-dir grabbed --overwrite yes "$@" >/dev/null; }

copy=$(best 'rm -rf copy; mkdir copy' 'cp ./*.wav copy; sync copy/*')
row 'cp' "$copy"
compared=$(best 'rm -rf copy; mkdir copy' 'cp ./*.wav copy; sync copy/*; for file in *.wav; do cmp "$file" "copy/$file"; done')
row 'cp and cmp' "$compared"
rm -rf copy
row 'burning at once' "$(best new 'burn --set BurnMode=2 --set BurnVerify=0')"
row 'burning at once, read back, to cp and cmp' "$(best new 'burn --set BurnMode=2')" "$compared"
row 'burning track by track' "$(best new 'burn --set BurnMode=2 --set BurnVerify=0 --set BurnDisc-at-Once=0')"
mkdir grabbed
row 'grabbing' "$(best 'rm -f grabbed/*' grab)"
