// A score in the middle of all formats: what readers make and writers take. Score files (.stv), their XML
// form
// (.stvx), MusicXML and MIDI meet in it; each reader and writer knows its own format and this.
//
//   ScoreDocument score;
//   score.staves.push_back({.name = "Sopran", .sound = 52, .volume = 100});
//   score.systems.push_back({.tempo = 96, .staves = {{.voices = {{ClefItem(0), KeyItem(1), ...}}}}});
//   const Bytes file = WriteScore(score);
//
// Its shape is that of the notation program: systems, in them staves (each names its layout), in them voices,
// in them items one after another: clefs, keys, times, rests, chords, and a bar line at the end of each bar.
// A voice's items follow one another in time by their lengths alone, so a voice that pauses has rests, and
// one that is silent for a while has rests of GapItem. What one asks of music (bars, onsets, keys in force)
// is worked out by score_bars.h; score_builder.h makes a document of bars.
//
// Members marked (+) hold what score files have no field for. They are kept by .stvx and MusicXML; a score
// file is written without them, and what that costs is in the loss report. Texts are UTF-8 unless said
// otherwise.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "score/fraction.h"
#include "score/score_drawings.h"
#include "score/score_groups.h"
#include "score/score_info.h"
#include "score/score_objects.h"

namespace ts5 {

// Something that hangs on a rest or chord: a text or sign, a hairpin, a slur (FourPointCurve), an ending
// (Volta).
struct DrawingItem {
  std::uint8_t kind = 0;   // DrawingKind
  std::uint16_t span = 0;  // chords from this one to the one where it ends; at most 4095
  Bytes text = {};         // of a text, as it stands in the file: symbol font or Windows-1252
  std::uint8_t value = 0;  // of a hairpin (80 diminuendo) or an ending (last << 4 | first number)
  std::vector<DrawingItem> nested = {};  // of a group; readers take kMaxDrawingDepth
  // (+) What it is, by the name MusicXML has for it ("trill-mark", "segno", "metronome"), "" when kind and
  // text say it all. A Text with a sign and without a text has no form in score files.
  std::string sign = {};
  std::string words = {};     // (+) what the sign needs: a number, a fingering, a chord name
  Fraction offset = {};       // (+) from the start of its group
  std::int8_t placement = 0;  // (+) 1 above, -1 below the staff
  Fraction extent = {};       // (+) how long it lasts, where the span does not say it exactly

  [[nodiscard]] bool Is(DrawingKind k) const { return kind == static_cast<std::uint8_t>(k); }
  bool operator==(const DrawingItem&) const = default;
};
// symbols: in the symbol font, for example "f" or "pq"; see score_drawings.h.
[[nodiscard]] DrawingItem TextDrawing(std::string_view symbols);
// A text to be read, never taken for a symbol.
[[nodiscard]] DrawingItem WordsDrawing(std::string_view words);
[[nodiscard]] DrawingItem SignDrawing(std::string_view sign, std::string_view words = {});
[[nodiscard]] DrawingItem HairpinDrawing(std::uint16_t span, bool diminuendo);
[[nodiscard]] DrawingItem VoltaDrawing(std::uint8_t number);
[[nodiscard]] DrawingItem VoltaDrawing(std::uint8_t first, std::uint8_t last, std::uint16_t span);
[[nodiscard]] DrawingItem CurveDrawing(std::uint16_t span);

// Whether a drawing is a text to be read, and the text (UTF-8, "" when it is none).
[[nodiscard]] std::string WordsOf(const DrawingItem& drawing);

// Bits of LyricItem::flags: the word goes on after a hyphen; the syllable is held by a line.
inline constexpr std::uint8_t kLyricHyphen = 2;
inline constexpr std::uint8_t kLyricExtender = 4;

struct LyricItem {
  std::string syllable;    // "": the verse has none here
  std::uint8_t flags = 0;  // bits 1 and 2

  bool operator==(const LyricItem&) const = default;
};

// So many notes (actual) in the time of so many (normal); 0: none.
struct TupletRatio {
  std::uint16_t actual = 0;
  std::uint16_t normal = 0;

  bool operator==(const TupletRatio&) const = default;
};

// ScoreGroup::flags bit 3: not printed. A rest with both this and kGroupSilent is no rest of the music but
// the time for which a voice has nothing (GapItem).
inline constexpr std::uint8_t kGroupInvisible = kGroupFlag3;
inline constexpr std::uint8_t kGroupGap = kGroupInvisible | kGroupSilent;
// ScoreGroup::graceForm of a grace note (flags kGroupZeroDuration | kGroupGrace; durationCode is what is
// printed).
inline constexpr std::uint8_t kGracePlain = 1;
inline constexpr std::uint8_t kGraceSlashed = 2;
// ScoreItem::barLine. Repeats: BarLineType.
inline constexpr std::uint8_t kBarLinePlain = 0;
inline constexpr std::uint8_t kBarLineDouble = 1;
inline constexpr std::uint8_t kBarLineFinal = 2;
// ScoreClef::form.
inline constexpr std::uint8_t kClefG = 0;
inline constexpr std::uint8_t kClefC = 1;
inline constexpr std::uint8_t kClefF = 2;
inline constexpr std::uint8_t kClefPercussion = 3;
// Bits of ScoreItem::noteTies.
inline constexpr std::uint8_t kTieFromBefore = 1;
inline constexpr std::uint8_t kTieOnward = 2;

// A pitch as it is written.
struct SpelledPitch {
  std::int8_t step = 0;    // 0 C .. 6 B
  std::int8_t alter = 0;   // semitones, sharps above 0
  std::int8_t octave = 4;  // 4 begins with middle C

  [[nodiscard]] int Key() const;  // MIDI; may lie outside 0..127
  bool operator==(const SpelledPitch&) const = default;
};

struct ScoreItem {
  std::uint8_t kind = 0;  // ObjectKind
  Bytes parameters = {};
  ScoreGroup group = {};  // marks and lyrics are taken from the members below
  std::vector<DrawingItem> drawings = {};
  std::vector<LyricItem> lyrics = {};
  ScoreClef clef = {};
  int key = 0;
  ScoreTimeSignature time = {};
  std::uint8_t barLine = 0;
  TupletRatio ratio = {};                   // (+) a tuplet that group.tuplet cannot say; see SetTuplet
  std::vector<std::uint8_t> noteTies = {};  // (+) of each note; empty: all as the group's flags
  // (+) Bar line: MusicXML's bar-style; time: "common", "cut" or "3+2"; key: its mode; clef: "TAB".
  std::string style = {};
  std::uint8_t times = 0;  // (+) of a repeat end: how often it is played, when not twice
  // (+) Bit n: note n has an accidental that it does not need; and in brackets.
  std::uint32_t courtesy = 0;
  std::uint32_t bracketed = 0;
  std::string beams = {};  // a letter a beam: b begin, c continue, e end, f and h hooks (forward, back);
                           // "-" flags alone, "" automatic
  char stem = 0;           // (+) u up, d down, n none; 0 automatic
  // While a document is made: the pitches of a chord, low to high, of which PlaceNotes (score_builder.h)
  // makes group.notes.
  std::vector<SpelledPitch> pitches = {};
  // The bytes of its record when they hold more than the members say. They are written as long as the members
  // still say the same as they do.
  Bytes record = {};

  [[nodiscard]] bool Is(ObjectKind wanted) const { return kind == static_cast<std::uint8_t>(wanted); }
  [[nodiscard]] bool IsGroup() const { return Is(ObjectKind::Rest) || Is(ObjectKind::Chord); }
  [[nodiscard]] bool IsGrace() const { return (group.flags & kGroupZeroDuration) != 0; }
};
// The clef on its usual line. octave: 0 an octave higher, 1 as printed, 2 an octave lower.
[[nodiscard]] ScoreItem ClefItem(std::uint8_t form, std::uint8_t octave = 1);
[[nodiscard]] ScoreItem KeyItem(int sharps);
[[nodiscard]] ScoreItem TimeItem(std::uint16_t numerator, std::int16_t power);
[[nodiscard]] ScoreItem BarItem(std::uint8_t type = 0);
[[nodiscard]] ScoreItem RestItem(std::uint8_t durationCode, std::uint8_t dots = 0);
[[nodiscard]] ScoreItem WholeBarRest(std::uint32_t bars = 1);
[[nodiscard]] ScoreItem ChordItem(std::uint8_t durationCode, const std::vector<ScoreNote>& notes,
                                  std::uint8_t dots = 0);
// Note values that make up a length together, exactly: one where one is enough, else the longest first.
struct NoteValue {
  std::uint8_t code = 2;  // as ScoreGroup::durationCode
  std::uint8_t dots = 0;
  TupletRatio ratio = {};
};
[[nodiscard]] std::vector<NoteValue> NoteValues(Fraction length);
// Rests that fill so much time in which a voice has nothing, the longest first.
[[nodiscard]] std::vector<ScoreItem> GapItems(Fraction length);

using VoiceItems = std::vector<ScoreItem>;
struct StaffItems {
  std::uint8_t layout = 0;
  ScoreTimeSignature time = {};
  std::vector<VoiceItems> voices = {};   // at most kMaxVoices are played
  Bytes record = {};                     // as ScoreItem::record: of the staff's own fields
  std::vector<Bytes> voiceRecords = {};  // of its voices' own fields; may be shorter than voices
};
struct SystemItems {
  std::uint32_t tempo = 0;  // quarter notes per minute, 0 as before
  std::vector<StaffItems> staves = {};
  Bytes record = {};
};

// (+) Staves that belong to one player, in the order of ScoreDocument::staves. A score without any has one
// part a staff.
struct ScorePart {
  std::string name = {};
  std::string abbreviation = {};
  std::string instrument = {};
  std::size_t staves = 1;
  std::int32_t diatonic = 0;  // of a transposing instrument: staff steps
  std::string group = {};     // of parts: its name
};

// (+) A bar as it is printed, in the order of the score.
struct ScoreBarLabel {
  std::string number = {};  // printed; "" when none is
  bool implicit = false;    // does not count: an upbeat, a part of a divided bar
  bool newPage = false;     // it begins a page
};

// (+)
struct ScoreCredits {
  std::string title = {};  // a score file has it as the first line of its comment
  std::string movement = {};
  std::string lyricist = {};
  std::string arranger = {};
  std::string rights = {};
  std::string software = {};  // the program that made it
  std::string source = {};
};

struct ScoreDocument {
  std::string author = {};  // the composer
  std::string keywords = {};
  std::string comment = {};
  bool landscape = false;
  std::vector<StaffLayout> staves = {};
  std::int32_t systemSpacing = 0;
  ScorePageLayout page = {};
  std::vector<Bytes> gallery = {};
  std::vector<SystemItems> systems = {};
  Bytes record = {};  // as ScoreItem::record: of the information part
  Bytes tail = {};    // behind the last system
  std::vector<ScorePart> parts = {};
  std::vector<ScoreBarLabel> bars = {};  // empty: counted
  ScoreCredits credits = {};
};

// What its drawings say about the sound of a group. Its articulation is group.articulation, else that of the
// marks.
[[nodiscard]] DrawnMarks MarksOf(const ScoreItem& item);
// A drawing that score files have no form for.
[[nodiscard]] bool IsBeyondScoreFile(const DrawingItem& drawing);

// The ratio of a group: group.tuplet's, or ratio.
[[nodiscard]] TupletRatio RatioOf(const ScoreItem& item);
// Sets group.tuplet to this ratio, or to the nearest that score files know, and then ratio to the exact one.
void SetTuplet(ScoreItem& item, TupletRatio ratio);
// How long an item lasts, exactly: 0 for all but rests and chords, and for grace notes.
[[nodiscard]] Fraction LengthOf(const ScoreItem& item, ScoreTimeSignature time);
// A notated length without tuplet: durationCode 0..9 and dots 0..3.
[[nodiscard]] Fraction NotatedLength(std::uint8_t durationCode, std::uint8_t dots);
// One bar, exactly; 4/4 for a signature that is not usable.
[[nodiscard]] Fraction BarLength(ScoreTimeSignature time);

// How a key alters a step (0 C .. 6 B): -1, 0 or 1 semitones.
[[nodiscard]] int KeyAlter(int step, int key);
[[nodiscard]] SpelledPitch PitchOf(const ScoreNote& note, ScoreClef clef, int key);
// The note of a pitch under this clef and key. A pitch that has no note there (far away, or altered too far
// from the key) is respelled, or moved by octaves: exact is then false.
struct PlacedNote {
  ScoreNote note = {};
  bool exact = true;
};
[[nodiscard]] PlacedNote NoteOf(SpelledPitch pitch, ScoreClef clef, int key);

}  // namespace ts5
