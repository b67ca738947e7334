// The rests and chords of a voice as they are printed bar by bar: what crosses a bar line is divided and
// tied, tuplets get brackets, and flags become beams where the document has none of its own.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "score/score_bars.h"

namespace ts5::converters {

struct NotationSlice {
  const ScoreEvent* event = nullptr;
  std::size_t index = 0;  // of the event in its voice
  Fraction start;         // in the score
  Fraction length;
  std::uint32_t bar = 0;
  NoteValue value;
  bool first = true;  // of its event
  bool last = true;
  bool measureRest = false;  // a rest of the whole bar
  bool grace = false;
  bool tupletStart = false;
  bool tupletStop = false;
  std::string beams;  // as ScoreItem::beams
};

// In order of time; every slice lies within its bar. beam: make beams.
[[nodiscard]] std::vector<NotationSlice> SliceVoice(const std::vector<ScoreEvent>& events,
                                                    const ScoreMusic& music, bool beam);

// The ties of a note of the slice, kTie...: those of its event, and those that divide it.
[[nodiscard]] std::uint8_t TiesOf(const NotationSlice& slice, std::size_t note);

}  // namespace ts5::converters
