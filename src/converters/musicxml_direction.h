// Directions of a part: words, dynamics, hairpins, octave lines, tempos, chord symbols, and what they sound.
// Used inside the reader only.
#pragma once

#include <map>
#include <string>

#include "converters/musicxml_cursor.h"

namespace ts5::converters::musicxml {

class DirectionReader {
 public:
  explicit DirectionReader(PartCursor& at) : at_(at) {}

  void Read(pugi::xml_node node);
  // words: the text that shows what sounds.
  void ReadSound(pugi::xml_node node, Fraction at, std::size_t staff, DrawingItem* words);
  void ReadHarmony(pugi::xml_node node);

 private:
  void ReadDirectionType(pugi::xml_node node, Fraction at, std::size_t staff);
  void ReadLasting(pugi::xml_node node, Fraction at, std::size_t staff, std::string_view name);
  void ReadMetronome(pugi::xml_node node, Fraction at, std::size_t staff);
  void AddTempo(DrawingItem drawing, Fraction at, std::size_t staff);

  PartCursor& at_;
  std::map<std::string, std::size_t> lasting_;  // by name, number and staff: index into Part::ends
};

}  // namespace ts5::converters::musicxml
