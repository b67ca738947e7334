#!/bin/bash
# Discs made with every setting, read by programs that others wrote: bchunk takes the tracks out, cdrdao reads the table
# of contents and all samples. Both must find the samples, starts, pauses, codes and flags that were burnt.
#
#   tests/disc/peers.sh TS5_BATCH
#
# Exit status 77 where bchunk or cdrdao is missing.
for peer in bchunk cdrdao python3; do
  command -v "$peer" >/dev/null || { echo "$peer is missing"; exit 77; }
done
batch=$(realpath "$1")
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
export STAVORA_REGISTRY=$work/r.sqlite XDG_DATA_HOME=$work/data HOME=$work TMPDIR=$work
cd "$work" || exit 1

python3 - <<'PYTHON'
import random, wave
random.seed(5)
# No whole number of sectors, a whole one, and one of a single frame beyond.
for name, frames in (("a", 44100 * 4 + 5), ("b", 588 * 300), ("c", 588 * 320 + 1)):
    with wave.open(name + ".wav", "wb") as out:
        out.setparams((2, 2, 44100, 0, "NONE", ""))
        out.writeframes(random.randbytes(frames * 4))
PYTHON

failed=0
# settings, then pauses
while read -r name pauses settings; do
  "$batch" cd blank "$work/$name" $([[ $name == rw* ]] && echo --rw) >/dev/null || exit 1
  set --
  for setting in $settings; do set -- "$@" --set "$setting"; done
  "$batch" run CdBurner --quiet --drive "STAVORA VIRTUELLER BRENNER" --pauses "$pauses" "$@" a.wav b.wav c.wav >log 2>&1 ||
    { echo "$name: not burnt"; cat log; failed=1; continue; }
  mkdir "$name/aus"
  bchunk -w "$name/disc.bin" "$name/disc.cue" "$name/aus/t" >"$name/bchunk" 2>&1 || { echo "$name: bchunk"; failed=1; }
  (cd "$name" && cdrdao show-toc disc.cue) >"$name/toc" 2>&1 || { echo "$name: cdrdao show-toc"; cat "$name/toc"; failed=1; }
  (cd "$name" && cdrdao read-test disc.cue) >"$name/read" 2>&1 || { echo "$name: cdrdao read-test"; cat "$name/read"; failed=1; }
  python3 - "$name" "$pauses" "$settings" <<'PYTHON' || failed=1
import json, re, sys, wave
name, pauses, settings = sys.argv[1:4]
on = set(settings.split())
once = "BurnDisc-at-Once=0" not in on
pauses = [0] + [int(p) * 75 for p in pauses.split(",")][1:]
sectors = lambda data: -(-len(data) // 2352)
pad = lambda data: data + bytes(-len(data) % 2352)
songs = [wave.open(n + ".wav").readframes(1 << 30) for n in "abc"]
if "BurnGapless=1" in on and not any(pauses):  # cut at the sectors
    whole = pad(b"".join(songs))
    ends = [sum(map(len, songs[:i])) // 2352 * 2352 for i in range(3)] + [len(whole)]
    songs = [whole[ends[i]:ends[i + 1]] for i in range(3)]
if not once:
    pauses = [0, 152, 152]
toc = open(name + "/toc").read()
disc = json.load(open(name + "/disc.json"))
faults = []
starts, at = [], 0
for i, song in enumerate(songs):
    at += pauses[i] if i else 0
    starts.append(at)
    got = wave.open(f"{name}/aus/t{i + 1:02}.wav").readframes(1 << 30)
    # bchunk leaves the pauses out; track by track the recorder has run out for two sectors
    want = pad(song) + bytes(2 * 2352 if i < 2 and not once else 0)
    if got != want: faults.append(f"track {i + 1}: bchunk has other samples ({len(got)}, not {len(want)})")
    at += sectors(song)
msf = lambda n: f"{n // 4500:02}:{n // 75 % 60:02}:{n % 75:02}"
for i, start in enumerate(starts):
    begin = f"START  {msf(start + 150)}"  # the file begins with the first pre-gap
    if begin not in toc: faults.append(f"track {i + 1}: cdrdao does not find its {begin}")
    isrc = disc["sessions"][0]["tracks"][i]["isrc"]
    if isrc.replace("-", "") not in toc.replace("-", "").replace(" ", ""): faults.append(f"track {i + 1}: no ISRC {isrc}")
if "0123456789012" not in toc: faults.append("no catalogue number")
lines = [line.strip() for line in toc.splitlines()]
for flag, wanted in (("COPY PERMITTED", "BurnNoCopy=1" not in on), ("PRE-EMPHASIS", "BurnPreemphasis=1" in on)):
    if lines.count(flag) != (3 if wanted else 0): faults.append(f"{flag} {lines.count(flag)} times")
for fault in faults: print(f"{name}: {fault}")
sys.exit(bool(faults))
PYTHON
done <<'END'
einfach 0,0,2 BurnVerify=1
pausen 0,1,10 BurnVerify=0
luecken 0,0,0 BurnGapless=1
schutz 0,2,2 BurnNoCopy=1
hoehen 0,2,0 BurnPreemphasis=1
beides 0,0,0 BurnNoCopy=1 BurnPreemphasis=1
text 0,2,2 BurnCdText=1 BurnTitle=Abend BurnPerformer=Chor
einzeln 0,0,0 BurnDisc-at-Once=0
erst 0,2,2 BurnMode=1
rw74 0,2,2 BurnSpeed=4
END
exit $failed
