#!/bin/bash
# Every target of the audio compressor read by other decoders than ours: what comes out must be the music that went
# in, at the place where it was, and the headers must say what was asked. Needs ffmpeg, mpg123, oggdec and python3;
# without one of them the test is skipped (77). Monkey's Audio is also read by libjmac-java where it is installed;
# of Windows Media there is no second decoder, but Perl's Audio::WMA reads what its header says.
#
#   tests/encode/decoders.sh CONSOLE
set -eu
console=$(realpath "$1")
for tool in ffmpeg ffprobe mpg123 oggdec python3; do command -v "$tool" >/dev/null || exit 77; done
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work XDG_DATA_HOME=$work/data STAVORA_REGISTRY=$work/registry.sqlite XDG_RUNTIME_DIR=$work
cd "$work"

cat >judge.py <<'PYTHON'
# make FILE FRAMES: music. judge SOURCE DECODED EXACT SLACK: whether the second is the first.
import array, math, random, sys, wave
def read(name):
    with wave.open(name) as file:
        samples = array.array("h", file.readframes(file.getnframes()))
        return file.getparams(), samples[::file.getnchannels()]
if sys.argv[1] == "make":
    random.seed(1)
    out = array.array("h")
    for i in range(int(sys.argv[3])):
        t = i / 44100
        for c in (0, 1):
            tone = math.sin(2764 * t * (c + 1)) * math.exp(-(t % 0.37) * 6) + 0.5 * math.sin(4147 * t)
            out.append(int(9000 * tone + random.uniform(-60, 60)))
    with wave.open(sys.argv[2], "wb") as file:
        file.setparams((2, 2, 44100, 0, "NONE", ""))
        file.writeframes(out.tobytes())
    sys.exit()
(a_format, a), (b_format, b) = read(sys.argv[2]), read(sys.argv[3])
exact, slack = sys.argv[4] == "exact", int(sys.argv[5])
if (a_format.nchannels, a_format.framerate) != (b_format.nchannels, b_format.framerate):
    sys.exit(f"another format: {b_format}")
if exact and a != b: sys.exit(f"other samples, {len(a)} and {len(b)}")
if len(b) < len(a) or len(b) - len(a) > slack: sys.exit(f"another length: {len(a)} and {len(b)}")
middle = a[20000:28000]
best = max(range(slack + 1), key=lambda d: sum(x * y for x, y in zip(middle[::7], b[20000 + d:28000 + d:7])))
part = b[20000 + best:28000 + best]
likeness = sum(x * y for x, y in zip(middle, part)) / math.sqrt(sum(x * x for x in middle) * sum(y * y for y in part))
if likeness < 0.95: sys.exit(f"another sound: {likeness:.3f} at {best}")
PYTHON
python3 judge.py make in.wav 54321

failed=0
fail() { echo "decoders: $*" >&2; failed=1; }
# probe FILE FIELDS: what ffprobe says of the stream, "a,b,c".
probe() { ffprobe -v error -select_streams a:0 -show_entries "stream=$2" -of default=nw=1:nk=1 "$1" | head -3 | paste -sd,; }
decode_ffmpeg() { ffmpeg -v error -y -i "$1" -c:a pcm_s16le -map_metadata -1 "$2"; }
decode_mpg123() { mpg123 -q -w "$2" "$1"; }
decode_jmac() { java -jar "$jmac" d "$1" "$2" >/dev/null; }
decode_oggdec() { oggdec -Q -o "$2" "$1"; }

# check NAME EXTENSION EXACT SLACK PROBED DECODERS SETTING...: encodes and looks at what came out. SLACK: how many more
# samples a decoder may give that is told nothing of the length.
check() {
  local name=$1 extension=$2 exact=$3 slack=$4 probed=$5 decoders=$6
  shift 6
  local target=$work/$name.$extension settings=() setting
  for setting in "$@"; do settings+=(--set "$setting"); done
  "$console" run AudioCompressor --quiet "${settings[@]}" --set EncodeVerify=1 --attribute 'Title=Größe "1"' --dest "$target" \
    --overwrite yes in.wav >log 2>&1 || { fail "$name: $(tail -3 log)"; return; }
  [ "$(probe "$target" codec_name,sample_rate,channels)" = "$probed" ] ||
    fail "$name: $(probe "$target" codec_name,sample_rate,channels), not $probed"
  local title
  title=$(ffprobe -v error -show_entries format_tags=title:stream_tags=title -of default=nw=1:nk=1 "$target" | grep . | head -1)
  [ "$title" = 'Größe "1"' ] || fail "$name: the title is $title"
  local decoder
  for decoder in $decoders; do
    rm -f out.wav
    "decode_$decoder" "$target" out.wav 2>err || fail "$name: $decoder: $(head -2 err)"
    [ ! -s err ] || fail "$name: $decoder says $(head -2 err)"
    local reference=in.wav
    case $probed in *,1) reference=mono.wav ;; esac
    python3 judge.py judge "$reference" out.wav "$exact" "$slack" || fail "$name: $decoder"
  done
  # Ours: exactly what went in, whatever the format tells.
  "$console" run AudioDecompressor --quiet --dest out.wav --overwrite yes "$target" >log 2>&1 || fail "$name: $(tail -3 log)"
  python3 judge.py judge "$reference" out.wav "$exact" 0 || fail "$name: ours"
}
ffmpeg -v error -y -i in.wav -ac 1 mono.wav

codec() { "$console" codecs --json | python3 -c '
import json, sys
for codec in json.load(sys.stdin)["codecs"]:
    if codec["name"] == sys.argv[1]:
        wanted = [f["index"] for f in codec["formats"] if [f["rate"], f["channels"], f["bitrate"]] == list(map(int, sys.argv[2:]))]
        print("CodingObject=%d CodingFormat=%d" % (codec["index"], (wanted or [0])[0]))' "$@"; }
for rate in 64000 128000 320000; do
  check "layer3-$rate" mp3 like 0 mp3,44100,2 "ffmpeg mpg123" CodecType=1 $(codec 'MPEG Layer-3 Audio Codec' 44100 2 $rate)
done
check layer2 mp2 like 2400 mp2,44100,2 "ffmpeg mpg123" CodecType=1 $(codec 'MPEG Layer-2 Audio Codec' 44100 2 192000)
check wma wma like 8192 wmav2,44100,2 ffmpeg CodecType=1 $(codec 'Windows Media Audio' 44100 2 128000)
if perl -MAudio::WMA -e 1 2>/dev/null; then
  said=$(perl -MAudio::WMA -e 'binmode STDOUT, ":utf8"; my $w = Audio::WMA->new("wma.wma"); print join ",", @{$w->info()}{qw(sample_rate channels max_bitrate)}, $w->tags()->{TITLE}')
  [ "$said" = '44100,2,128000,Größe "1"' ] || fail "wma: another reader of its header says $said"
fi
for engine in Lame Blade; do
  engine="$engine Encoder Engine"
  for options in 'EncoderMode=0' 'EncoderMode=2 EncoderCrc=1 EncoderCopyright=0' 'EncoderBitrate=320 EncoderCrc=1' 'EncoderMode=3 EncoderBitrate=64'; do
    channels=2
    case $options in *Mode=3*) channels=1 ;; esac
    check "${engine%% *}-${options// /-}" mp3 like 0 "mp3,44100,$channels" "ffmpeg mpg123" CodecType=1 $(codec "$engine") $options
  done
done
check lame-constant mp3 like 0 mp3,44100,2 "ffmpeg mpg123" CodecType=1 $(codec 'Lame Encoder Engine') EncoderVbr=0 EncoderBitrate=192
for mode in 'OggMode=1' 'OggMode=2 OggQuality=1' 'OggMode=2 OggQuality=9'; do
  check "ogg-${mode// /-}" ogg like 0 vorbis,44100,2 "oggdec ffmpeg" CodecType=3 $mode
done
jmac=/usr/share/java/jmac.jar
apeDecoders=ffmpeg
if [ -e "$jmac" ] && command -v java >/dev/null; then apeDecoders+=" jmac"; fi
for level in 1000 2000 3000 4000 5000; do
  check "ape-$level" ape exact 0 ape,44100,2 "$apeDecoders" CodecType=2 ApeLevel=$level
done
[ "$failed" = 0 ] && echo "decoders: all targets are read by others as they were meant"
exit "$failed"
