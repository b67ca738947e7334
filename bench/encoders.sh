#!/bin/bash
# Sizes and speeds of the encoders beside those of other programs, on music that the synthesiser plays from the demo
# files. Each time is the best of three runs of the whole program, from the command line to its end, on one core.
# Needs lame, oggenc, flac, wavpack, ffmpeg and python3.
#
#   bench/encoders.sh CONSOLE     (a release build)
set -eu
console=$(realpath "$1")
demo=$(realpath "$(dirname "$0")/../demo")
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work XDG_DATA_HOME=$work/data STAVORA_REGISTRY=$work/registry.sqlite LC_ALL=C.UTF-8
cd "$work"

count=0
for song in "$demo"/*.mid; do
  count=$((count + 1))
  "$console" run MidiToWave --quiet --set 'DestFormat=44100 2 16' --dest "$work/$count.wav" "$song" >/dev/null || true
  [ "$count" -lt 4 ] || break
done
ls ./*.wav >/dev/null
seconds=$(python3 -c '
import sys, wave
print(sum(w.getnframes() / w.getframerate() for w in map(wave.open, sys.argv[1:])))' ./*.wav)
bytes=$(cat ./*.wav | wc -c)
echo "$(ls ./*.wav | wc -l) pieces, $seconds s, $bytes bytes of 44,100 Hz, 16 bits, stereo"

# best COMMAND...: its shortest time of three, in seconds.
best() { python3 -c '
import subprocess, sys, time
def once():
    start = time.perf_counter()
    subprocess.run(sys.argv[1:], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return time.perf_counter() - start
print(min(once() for _ in range(3)))' "$@"; }
ours() { taskset -c "${cores:-0}" "$console" run "$1" --quiet --overwrite yes --dest-dir out "${@:2}"; }
each() { local file; for file in ./*.wav; do taskset -c 0 "$@" "$file"; done; }
export -f ours each
export console work
mkdir -p out
row() { python3 -c '
import sys
name, time, size, seconds, whole = sys.argv[1], *map(float, sys.argv[2:])
print(f"{name:34} {time:8.2f} s {seconds / time:7.0f} x {size / 1024:9.0f} KB {100 * size / whole:6.2f} %")' "$1" "$2" "$3" "$seconds" "$bytes"; }
# peer NAME EXTENSION COMMAND-WITH-$f
peer() {
  local time
  time=$(best bash -c "for f in ./*.wav; do taskset -c 0 $3; done")
  row "$1" "$time" "$(cat ./*."$2" | wc -c)"
}
self() {
  local name=$1 extension=$2 time settings=() setting
  shift 2
  for setting in "$@"; do settings+=(--set "$setting"); done
  time=$(best bash -c 'ours AudioCompressor "$@"' _ "${settings[@]}" ./*.wav)
  row "$name" "$time" "$(cat out/*."$extension" | wc -c)"
}
mp3=$("$console" codecs --json | python3 -c '
import json, sys
for codec in json.load(sys.stdin)["codecs"]:
    if codec["name"] == "MPEG Layer-3 Audio Codec":
        print(*["CodingObject=%d CodingFormat=%d" % (codec["index"], f["index"]) for f in codec["formats"]
                if (f["rate"], f["channels"], f["bitrate"]) == (44100, 2, 128000)])')

self 'MP3 128, this system' mp3 CodecType=1 $mp3
peer 'MP3 128, lame -b 128' mp3 'lame --quiet -b 128 $f ${f%.wav}.mp3'
self 'Ogg 5, this system' ogg CodecType=3 OggMode=2 OggQuality=5
peer 'Ogg 5, oggenc -q 5' ogg 'oggenc -Q -q 5 -o ${f%.wav}.ogg $f'
for level in 1000 2000 3000 4000 5000; do self "Monkey's Audio $level" ape CodecType=2 ApeLevel=$level EncodeVerify=0; mkdir -p a$level; mv out/*.ape a$level; done
peer 'FLAC -8' flac 'flac -s -f -8 -o ${f%.wav}.flac $f'
peer 'WavPack -hh' wv 'wavpack -q -y -hh $f -o ${f%.wav}.wv'

echo
echo 'Decoding, against ffmpeg to a wave file'
decoding() {
  local ourTime theirs
  ourTime=$(best bash -c 'ours AudioDecompressor "$@"' _ "${@:2}")
  theirs=$(best bash -c 'for f in "$@"; do taskset -c 0 ffmpeg -v error -y -i "$f" -threads 1 -c:a pcm_s16le out/peer.wav; done' _ "${@:2}")
  python3 -c 'import sys; a, b = map(float, sys.argv[2:]); print(f"{sys.argv[1]:34} {a:8.2f} s {b:8.2f} s {a / b:6.2f}")' "$1" "$ourTime" "$theirs"
}
decoding MP3 ./*.mp3
decoding Ogg ./*.ogg
decoding FLAC ./*.flac
for level in 1000 3000 5000; do decoding "Monkey's Audio $level" a$level/*.ape; done

echo
# Four equal pieces, so that no core waits for the other one's last piece.
mkdir equal
for i in 1 2 3 4; do cp "$(ls -S ./*.wav | head -1)" equal/$i.wav; done
both() { cores=$1 best bash -c 'ours AudioCompressor "$@"' _ --set CodecType=1 --set "${mp3% *}" --set "${mp3#* }" equal/*.wav; }
export cores
one=$(both 0)
two=$(both 0,1)
python3 -c 'import sys; a, b = map(float, sys.argv[1:]); print(f"two cores: {a / b:.2f} times one")' "$one" "$two"
mkdir many
for i in $(seq 1000); do cp 1.mp3 many/$i.mp3; done 2>/dev/null
# What they are besides, their length and bit rate, is told without decoders where the first frame says it, as here.
opened=$(best head -qc 4096 many/*.mp3)
read=$(best "$console" attributes many/*.mp3)
told=$(best "$console" attributes --json many/*.mp3)
python3 -c 'import sys; a, b, c = map(float, sys.argv[1:]); print(f"attributes of 1,000 files: {a:.3f} s, {a / c:.1f} times opening them; with what they are: {b:.3f} s")' "$read" "$told" "$opened"
