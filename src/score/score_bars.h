// The music of a document: its bars, and for every rest and chord when it comes, how long it lasts and under
// which clef and key. All places are counted from the start of the score, each bar once; repeats are marks
// here.
//
//   const ScoreMusic music = ReadMusic(document);
//   for (const ScoreEvent& event : music.voices[staff][voice]) ... event.start, event.item->group ...
//   for (const ScoreBar& bar : music.bars) ... bar.start, bar.repeatEnd ...
//
// Bars end at bar lines, in whichever voice they stand. Between two of them that lie further apart than a bar
// is long (rests of several bars, scores without bar lines) the bars are those of the time signature. A
// system begins where the longest voice of the one before it has ended. A clef holds for its staff and a time
// signature (of the first staff) for all from its place on; of voices at the same place the upper one comes
// first. The document must outlive the music.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/work_watch.h"
#include "score/drawing_words.h"
#include "score/score_document.h"

namespace ts5 {

// A rest or chord in its place. Chord variants are left out.
struct ScoreEvent {
  const ScoreItem* item = nullptr;
  Fraction start;  // in whole notes
  Fraction length;
  ScoreClef clef;
  int key = 0;
  std::uint32_t bar = 0;     // index into bars
  std::uint32_t system = 0;  // index into the document, and of the item within its voice there
  std::uint32_t object = 0;

  [[nodiscard]] bool IsRest() const { return item->group.isRest; }
  [[nodiscard]] bool IsGap() const { return IsRest() && (item->group.flags & kGroupGap) == kGroupGap; }
};

struct ScoreBar {
  Fraction start;
  Fraction length;  // of what is in it: for an upbeat or a short bar less than its time signature says
  ScoreTimeSignature time;
  std::string number;  // printed; counted from 1, an upbeat 0, where the document has none
  bool implicit = false;
  std::uint32_t system = 0;  // in which it begins
  std::uint8_t line = 0;     // the bar line at its end, as ScoreItem::barLine
  std::string lineStyle;
  bool repeatStart = false;
  bool repeatEnd = false;
  unsigned passes = 2;        // of what a repeat end here repeats, all in all
  std::uint32_t endings = 0;  // bit n: it belongs to ending n
  std::uint8_t jumps = 0;     // kJump...
  bool toFine = false;        // the jump back ends at the fine, or goes on at the coda
  bool toCoda = false;
};

// An ending bracket.
struct ScoreEnding {
  std::uint32_t first = 0;  // bars
  std::uint32_t last = 0;
  std::uint8_t from = 1;  // numbers
  std::uint8_t to = 1;
  const DrawingItem* drawing = nullptr;
};

struct ScoreTempo {
  Fraction at;
  double quarters = 120;  // a minute
};

// A clef, key or time signature in its place; those that change nothing are left out.
struct ScoreChange {
  const ScoreItem* item = nullptr;
  Fraction at;
};

struct ScoreMusic {
  std::vector<ScoreBar> bars;
  std::vector<std::vector<std::vector<ScoreEvent>>> voices;  // of each staff layout
  std::vector<std::vector<ScoreChange>> changes;             // of each staff layout
  std::vector<ScoreEnding> endings;                          // in order
  std::vector<ScoreTempo> tempos;                            // in order
  Fraction length;
};

// A cancelled reading gives what it has got.
[[nodiscard]] ScoreMusic ReadMusic(const ScoreDocument& document, const CancelCheck& cancelled = {});

// The event to which something on a chord reaches that spans so many chords, or the last chord there is.
[[nodiscard]] std::size_t SpanEnd(const std::vector<ScoreEvent>& events, std::size_t event,
                                  std::uint16_t span);

// The MIDI keys at which a chord sounds: transposed, through the note map of a drum staff, within 0..127.
[[nodiscard]] std::vector<std::uint8_t> SoundingKeys(const ScoreEvent& event, const StaffLayout& staff);

// The bar in which a place lies: the last one that begins there or before; 0 in a score without bars.
[[nodiscard]] std::uint32_t BarAt(const ScoreMusic& music, Fraction place);

// Whether the score says itself which notes share a beam; else they are grouped by the metre.
[[nodiscard]] bool HasBeams(const ScoreMusic& music);

}  // namespace ts5
