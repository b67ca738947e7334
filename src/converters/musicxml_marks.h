// What hangs on the chords of one part, sorted into what MusicXML has beside its notes (directions, with a
// place of their own) and what it has within them (notations). Used inside the writer only.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "converters/musicxml_writer.h"
#include "converters/xml_out.h"
#include "score/score_bars.h"

namespace ts5::musicxml {

// Something beside the notes.
struct Direction {
  Fraction at;  // in the score
  const DrawingItem* drawing = nullptr;
  bool stop = false;  // the end of a hairpin or octave line
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

void WriteDirection(XmlOut& out, const Direction& direction, std::int64_t offset, unsigned voice,
                    unsigned staff);

// <notations> of a chord beside ties, slurs and tuplets: signs by group.
struct NotationSign {
  std::string name;
  std::string words;
  std::int8_t placement = 0;
};
struct NotationSigns {
  std::vector<NotationSign> articulations;
  std::vector<NotationSign> ornaments;
  std::vector<NotationSign> technical;
  std::vector<NotationSign> others;

  [[nodiscard]] bool Empty() const {
    return articulations.empty() && ornaments.empty() && technical.empty() && others.empty();
  }
};
[[nodiscard]] NotationSigns SignsOf(const ScoreItem& item);
// Those that each further note of a chord has as well.
[[nodiscard]] NotationSigns SignsOfEachNote(const ScoreItem& item);
void WriteSigns(XmlOut& out, const NotationSigns& signs);

}  // namespace ts5::musicxml
