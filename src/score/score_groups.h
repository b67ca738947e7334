// Rests and chords of a score: their records, how long they last and at which keys they sound.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/base/bytes.h"
#include "score/score_drawings.h"
#include "score/score_source.h"

namespace ts5 {

inline constexpr std::size_t kMaxChordKeys = 32;  // further notes of a chord are not kept
inline constexpr std::size_t kMaxVerses = 64;     // nor are further verses
inline constexpr std::uint32_t kScoreTicksPerQuarter = 480;

struct ScoreTimeSignature {
  std::uint16_t numerator = 4;  // in a file below 256
  std::int16_t power = 2;       // the denominator is 2 to the power; what the file holds, so -1..126

  [[nodiscard]] bool Usable() const { return numerator > 0 && power >= 0 && power < 13; }
  bool operator==(const ScoreTimeSignature&) const = default;
};

struct ScoreClef {
  std::uint8_t form = 0;    // 0 treble, 1 alto, 2 bass position; 3 and 4 as 0
  std::uint8_t line = 0;    // 0..4
  std::uint8_t octave = 1;  // 0 an octave higher, 2 an octave lower

  bool operator==(const ScoreClef&) const = default;
};

struct ScoreTuplet {
  std::uint8_t number = 0;  // 0: no tuplet
  bool compound = false;
  bool doubled = false;

  bool operator==(const ScoreTuplet&) const = default;
};
// So many notes are played in the time of so many.
struct TupletCount {
  std::int64_t number = 0;
  std::int64_t played = 0;
};
[[nodiscard]] TupletCount CountOf(const ScoreTuplet& tuplet);

struct ScoreNote {
  std::int8_t position = 0;    // staff steps, -64..63
  std::int8_t accidental = 0;  // -2..2
  std::uint8_t value = 0;      // 0..6, kept
};

struct LyricVerse {
  bool present = false;
  std::uint8_t flags = 0;
  ByteView syllable;  // Windows-1252
  ByteView second;
};

// Bits of ScoreGroup::flags.
inline constexpr std::uint8_t kGroupZeroDuration = 0x04;
inline constexpr std::uint8_t kGroupFlag3 = 0x08;
inline constexpr std::uint8_t kGroupGrace = 0x10;
inline constexpr std::uint8_t kGroupSilent = 0x20;

// A rest or chord as it stands in the file.
struct ScoreGroup {
  bool isRest = false;
  std::uint8_t flags = 0;
  std::uint8_t dots = 0;
  std::uint8_t durationCode = 0;  // 0 whole .. 8 two-hundred-fifty-sixth, 9 breve
  ScoreTuplet tuplet;
  DrawnMarks marks;
  std::uint32_t wholeBars = 0;       // of a rest that fills bars
  std::uint8_t graceForm = 0;        // 0..5
  std::uint8_t articulation = 0;     // the code of the chord, else that of its texts
  std::uint8_t ownArticulation = 0;  // the code of the chord
  std::size_t drawingsAt = 0;        // where its list of drawings stands in the source; 0 none
  bool tieFromBefore = false;
  bool tieOnward = false;
  std::vector<LyricVerse> lyrics;  // at most kMaxVerses
  std::uint32_t noteCount = 0;
  std::vector<ScoreNote> notes;  // at most kMaxChordKeys
};

// The record behind an object's parameters. When it is invalid the source is not Ok().
[[nodiscard]] ScoreGroup ReadRest(ScoreSource& in);
[[nodiscard]] ScoreGroup ReadChord(ScoreSource& in);

// Ticks, at most 2^31 - 1.
[[nodiscard]] std::uint32_t GroupDuration(const ScoreGroup& group, std::uint32_t ticksPerQuarter,
                                          ScoreTimeSignature time);

// The MIDI key of a note before transposition and note map. key: sharps, negative for flats. A note far below
// the staff follows the scale downwards; what lies outside 0..127 is moved by octaves into it.
[[nodiscard]] std::uint8_t NoteKey(const ScoreNote& note, ScoreClef clef, int key);

struct NoteGroup {
  std::uint32_t duration = 0;  // ticks
  bool isRest = false;
  bool tieFromBefore = false;
  bool tieOnward = false;
  std::uint8_t noteCount = 0;
  std::array<std::uint8_t, kMaxChordKeys> keys{};
  std::uint8_t graceForm = 0;
  std::uint8_t durationCode = 0;
  std::uint8_t dots = 0;
  std::uint8_t flags = 0;  // kGroup...
  std::uint8_t articulation = 0;
  DrawnMarks marks;
};
[[nodiscard]] NoteGroup DecodeGroup(const ScoreGroup& group, std::uint32_t ticksPerQuarter,
                                    ScoreTimeSignature time, ScoreClef clef, int key);

}  // namespace ts5
