#!/bin/bash
# A musician's story of an album, with real mouse and keys: compress it with attributes and names made of them, look at the
# page of a decoder, decompress it, change the attributes of ten files at once, plug in an encoder with the assistant.
# Needs Xvfb, xdotool and ImageMagick's import.
#
#   tests/desktop/encode.sh PROGRAM [PICTURES]
#
# Exit status 0 when the files hold what was typed and the program ended by itself.
program=$1
pictures=${2:-}
. "$(dirname "$0")/common.sh"

mkdir "$HOME/Klang"
number=0
for song in 'Maple Leaf Rag' 'Gymnopédie Nr. 1'; do
  number=$((number + 1))
  "$console" run MidiToWave --quiet --set 'DestFormat=22050 2 16' --dest "$HOME/Klang/$number.wav" "$demo/$song.mid" >/dev/null ||
    fail "the console makes no wave file"
  "$console" attributes "$HOME/Klang/$number.wav" --set "Title=$song" --set "WM/TrackNumber=$number" >/dev/null
done

# value FILE NAME: an attribute of the file.
value() { "$console" attributes "$1" | sed -n "s/^ *$2: *//p"; }

start_program
directory 128
all_files

# --- compress with attributes and names
tile '^Wave-Kompression' >/dev/null || fail "no tile opens the compressor"
keys alt+o
picture 1-compressor
keys alt+a
window '^Audioattribute der Zieldateien' >/dev/null || fail "no window of the attributes"
keys Home F2
type_text 'Klavierspieler'
keys Return
picture 2-attributes
keys Tab Tab Tab Tab Tab Return
closed '^Audioattribute der Zieldateien' || fail "the attributes were not taken"
back_to '^Wave-Kompression'
keys alt+n
window '^Namen der Zieldateien' >/dev/null || fail "no window of the names"
type_text '%track% - %artist% - %title%'
sleep 1
picture 3-names
keys Return
closed '^Namen der Zieldateien' || fail "the names were not taken"
back_to '^Wave-Kompression'
keys alt+l Return
sleep 0.5
keys alt+j
closed '^Wave-Kompression' || fail "the compressor's parameters were not taken"
to_main
keys ctrl+Return
within 120 shown '^Ergebnisse der Wave-Komprimierung' >/dev/null || fail "no results of the compression"
picture 4-compressed
keys Return
one="$HOME/Klang/01 - Klavierspieler - Maple Leaf Rag.ogg"
[ -s "$one" ] || fail "the files: $(ls "$HOME/Klang")"
[ "$(value "$one" Author)" = Klavierspieler ] || fail "the artist: $(value "$one" Author)"
[ "$(value "$one" Title)" = 'Maple Leaf Rag' ] || fail "the title did not come from the source"
value "$one" REPLAYGAIN_ALBUM_GAIN | grep -q dB || fail "no ReplayGain"

# --- the page of a decoder, then all files
rm "$HOME/Klang/"*.wav
directory 148
directory 128
tile '^Dekoder' >/dev/null || fail "no tile opens the page of the decoder"
picture 5-decoder
keys Return
closed '^Dekoder'
to_main
click 620 135
all_files
keys ctrl+Return
within 120 shown '^Ergebnisse der Dekompression' >/dev/null || fail "no results of the decompression"
picture 6-decompressed
keys Return
[ "$(value "${one%.ogg}.wav" Title)" = 'Maple Leaf Rag' ] || fail "the wave file has no title"

# --- ten files at once: what differs is marked, undo, OK
rm "$HOME/Klang/"*
for number in 1 2 3 4 5 6 7 8 9 10; do
  cp "$desktop/../data/audio/mpeg1_layer3_cbr128.mp3" "$HOME/Klang/$number.mp3"
  "$console" attributes "$HOME/Klang/$number.mp3" --set "Title=Titel $number" --set WM/Genre=Jazz >/dev/null
done
directory 148
directory 128
all_files
keys ctrl+e
window '^Eigenschaften von' >/dev/null || fail "no properties of ten files"
sleep 1
picture 7-ten-files
keys ctrl+Tab
picture 8-ten-files-attributes
xdotool mousemove 574 200 click 1  # the value of the first one
sleep 0.5
type_text 'falsch'
keys Return
keys ctrl+z
picture 9-undone
keys F2
type_text 'Die Zehn'
keys Return
picture 10-changed
keys Tab Tab Tab Tab Tab Return
closed '^Eigenschaften von' || fail "the attributes were not saved"
for number in 1 10; do
  [ "$(value "$HOME/Klang/$number.mp3" Author)" = 'Die Zehn' ] || fail "$number: the artist was not saved"
  [ "$(value "$HOME/Klang/$number.mp3" Title)" = "Titel $number" ] || fail "$number: the title was changed"
done

# --- an encoder with the assistant
cat >"$work/encoder" <<'SCRIPT'
#!/bin/sh
cp "$2" "$3"
SCRIPT
chmod +x "$work/encoder"
to_main
rm "$HOME/Klang/"*
"$console" run MidiToWave --quiet --set 'DestFormat=22050 1 16' --dest "$HOME/Klang/1.wav" "$demo/Gymnopédie Nr. 1.mid" >/dev/null
directory 148
directory 128
tile '^Wave-Kompression' >/dev/null || fail "no tile opens the compressor again"
keys Escape
to_main
keys alt+k m
window '^MP3-Interface-Assistent' >/dev/null || fail "no assistant"
picture 11-assistant
keys alt+w
sleep 0.3
keys ctrl+a
type_text "$work/encoder"
picture 12-encoder
keys alt+w
type_text 'Kopierer'
keys Tab
keys ctrl+a
type_text 'cpy'
keys alt+w
picture 13-sets
keys alt+w
type_text '-k {q} {z}'
keys alt+w
picture 14-properties
keys alt+w
keys alt+f
picture 15-done
keys Return
closed '^MP3-Interface-Assistent' || fail "the assistant stays"
"$console" interfaces | grep -q 'Kopierer (.cpy)' || fail "the interface: $("$console" interfaces)"

# --- the same encoder in the manager: another set, another name, and away with it
to_main
keys alt+k 3
window '^MP3-Interface verwalten' >/dev/null || fail "no manager"
picture 16-manager
keys alt+b
window '^Interface bearbeiten' >/dev/null || fail "no editor"
picture 17-editor
keys alt+n
type_text '-k -V {q} {z}'
picture 18-new-set
keys Return
closed '^Interface bearbeiten' || fail "the editor stays"
back_to '^MP3-Interface verwalten'
"$console" interfaces | grep -q '1  -k -V {q} {z}' || fail "the second set: $("$console" interfaces)"
mv "$work/encoder" "$work/gone"
keys alt+b
window '^Interface bearbeiten' >/dev/null || fail "no editor for the second time"
picture 19-missing
keys Return
sleep 0.5
picture 20-ask-missing
keys alt+n
back_to '^Interface bearbeiten'
keys Escape
closed '^Interface bearbeiten' || fail "the editor stays for the second time"
back_to '^MP3-Interface verwalten'
keys alt+l
sleep 0.5
picture 21-ask-delete
keys alt+j
back_to '^MP3-Interface verwalten'
picture 22-none
keys Escape
closed '^MP3-Interface verwalten' || fail "the manager stays"
"$console" interfaces | grep -q 'Keine MP3-Interfaces vorhanden' || fail "the interface is still there"

end_program 23-end
echo "encode: compressed, decompressed, ten files changed, an encoder plugged in, changed and removed, ended in order"
