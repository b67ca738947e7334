// What hangs on the chords of one part and has a place of its own in MusicXML: directions, and the ends of
// slurs. Used inside the writer only.
#pragma once

#include <map>
#include <vector>

#include "converters/score_losses.h"
#include "score/score_bars.h"

namespace ts5::converters::musicxml {

// Something beside the notes.
struct Direction {
  Fraction at;  // in the score
  const DrawingItem* drawing = nullptr;
  bool stop = false;     // the end of a hairpin or octave line
  bool endsBar = false;  // it stands at the end of its bar, not at the start of the next one
  unsigned number = 1;
  double tempo = 0;  // of a system: quarters a minute
};
// One end of a slur.
struct SlurEnd {
  bool start = true;
  unsigned number = 1;
  std::int8_t placement = 0;
};
struct VoiceMarks {
  std::vector<Direction> directions;                  // in order
  std::map<std::size_t, std::vector<SlurEnd>> slurs;  // by event
};
using PartMarks = std::vector<std::vector<VoiceMarks>>;  // staff of the part, voice

[[nodiscard]] PartMarks CollectMarks(const ScoreMusic& music, std::size_t firstStaff, std::size_t staves,
                                     LossReport& losses);

}  // namespace ts5::converters::musicxml
