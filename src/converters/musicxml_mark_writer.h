// Writes what hangs on chords: directions beside the notes, and the signs within them. Used inside the writer
// only.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "converters/musicxml_marks.h"
#include "converters/xml_out.h"

namespace ts5::converters::musicxml {

// "above", "below" or "".
[[nodiscard]] std::string_view PlacementName(std::int8_t placement);

// How many of the directions stand side by side in one: dynamics at one place ("p", "sempre"), else the
// first.
[[nodiscard]] std::size_t Together(std::span<const Direction> directions);
void WriteDirections(XmlOut& out, std::span<const Direction> together, std::int64_t offset, unsigned voice,
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

}  // namespace ts5::converters::musicxml
