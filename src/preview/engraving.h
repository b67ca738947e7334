// A document made ready to be drawn: its music in slices that lie within bars, the accidentals that are
// printed, and how wide each bar is by itself.
#pragma once

#include <span>
#include <vector>

#include "converters/notation_slices.h"
#include "score/accidentals.h"
#include "score/score_bars.h"

namespace ts5::preview {

inline constexpr double kHeadWidth = 1.25;
inline constexpr double kGraceSize = 0.65;
inline constexpr double kGraceWidth = 1.7;
inline constexpr double kAccidentalWidth = 1.15;
inline constexpr double kLyricSize = 2.0;

// A place where something begins, in any staff.
struct Column {
  Fraction at;      // in the score
  double x = 0;     // from the left edge of the bar
  double lead = 0;  // what accidentals and graces need before it
};
struct BarWidth {
  double prefix = 0;            // clefs, keys and times at its start, changes only
  double width = 0;             // with the prefix
  std::vector<Column> columns;  // in order
};

// The clef and key of a staff at a place.
struct StaffSigns {
  ScoreClef clef = ClefItem(kClefG).clef;
  int key = 0;
};

struct Engraving {
  ScoreDocument document;
  ScoreMusic music;
  std::vector<std::vector<std::vector<converters::NotationSlice>>> slices;  // staff, voice
  std::vector<std::vector<std::vector<std::size_t>>> marked;  // staff, voice: events with drawings
  std::vector<AccidentalBits> accidentals;                    // staff
  std::vector<std::vector<StaffSigns>> signs;                 // staff, bar: before what changes there
  std::vector<BarWidth> bars;
  std::vector<ScorePart> parts;

  Engraving() = default;
  Engraving(const Engraving&) = delete;
  Engraving& operator=(const Engraving&) = delete;

  // The slices of a voice in a bar.
  [[nodiscard]] std::span<const converters::NotationSlice> SlicesOf(std::size_t staff, std::size_t voice,
                                                                    std::size_t bar) const;
};

// Fills an empty engraving. A cancelled one is not to be used.
void Engrave(ScoreDocument document, Engraving& engraving, const CancelCheck& cancelled = {});

// Width of signs at the start of a bar or system.
[[nodiscard]] double KeyWidth(int key, int before);
inline constexpr double kClefWidth = 3.6;
inline constexpr double kTimeWidth = 2.6;

// Steps above the bottom line (0) at which a pitch stands.
[[nodiscard]] int StepOn(SpelledPitch pitch, ScoreClef clef);
// Steps of the sharps or flats of a key, in their order.
[[nodiscard]] std::vector<int> KeySteps(int key, ScoreClef clef);
// The line of the clef, counted from the bottom one, 0.
[[nodiscard]] int ClefLine(ScoreClef clef);

}  // namespace ts5::preview
