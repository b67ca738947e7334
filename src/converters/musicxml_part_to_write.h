// One part of a score on its way into MusicXML, and the time it is counted in. Used inside the writer only.
#pragma once

#include <cstdint>
#include <string>

#include "score/score_bars.h"

namespace ts5::converters::musicxml {

struct PartToWrite {
  const ScoreDocument& document;
  const ScoreMusic& music;
  const ScorePart& part;
  std::string id;
  std::size_t firstStaff = 0;
  bool ownBeams = false;  // of the document; else flags are beamed by beats

  [[nodiscard]] const ScoreBar& Bar(std::size_t bar) const { return music.bars[bar]; }
  // By its number within the part.
  [[nodiscard]] const StaffLayout& Layout(std::size_t staff) const {
    return document.staves[firstStaff + staff];
  }
  // The number of a staff where one is needed to tell it from others; else "", which is not written.
  [[nodiscard]] std::string StaffNumber(std::size_t staff) const {
    return part.staves > 1 ? std::to_string(staff + 1) : std::string();
  }
};

struct Divisions {
  std::int64_t ofQuarter = 1;
  [[nodiscard]] std::int64_t Ticks(Fraction place) const { return place.In(4 * ofQuarter); }
};

}  // namespace ts5::converters::musicxml
