// One part of a MusicXML score on its way into the document, with the bars that all parts share. Used inside
// the reader only.
#pragma once

#include <algorithm>

#include "converters/musicxml_raw.h"
#include "score/playback_parameters.h"

namespace ts5::converters::musicxml {

struct BarTimes {
  std::vector<Fraction> starts;
  std::vector<Fraction> lengths;
  [[nodiscard]] Fraction End(std::size_t bar) const { return starts[bar] + lengths[bar]; }
};

// A chord of a voice of a staff: where it begins in the score, and its group.
struct ChordAt {
  Fraction at;
  std::size_t group = 0;
};

// The most chords that a drawing spans in a score file.
inline constexpr std::uint16_t kMostSpan = 4095;
// Between two looks at the stop.
inline constexpr std::size_t kBarsBetween = 16;

// A bit for each note of a group.
[[nodiscard]] inline std::uint32_t AllNotes(const Group& group) {
  return static_cast<std::uint32_t>((std::uint64_t{1} << group.item.pitches.size()) - 1);
}

struct PartToPlace {
  Part& part;
  const BarTimes& bars;
  LossReport& losses;

  [[nodiscard]] std::size_t MeasureOf(std::size_t group) const {
    const auto after = std::ranges::upper_bound(part.measures, group, {}, &Measure::first);
    return static_cast<std::size_t>(after - part.measures.begin()) - 1;
  }
  // Where a group begins in the score.
  [[nodiscard]] Fraction PlaceOf(std::size_t group) const {
    return bars.starts[MeasureOf(group)] + part.groups[group].start;
  }
  void Lose(TextId kind, std::size_t measure, std::size_t staff) const {
    losses.Add(kind, static_cast<int>(measure), static_cast<int>(part.firstStaff + staff));
  }
};

}  // namespace ts5::converters::musicxml
