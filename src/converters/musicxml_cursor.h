// Where the reading of a part is: its measure, the place in it, what is in force there. Those that read
// attributes, directions and bar lines share it. Used inside the reader only.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "converters/musicxml_note.h"
#include "converters/musicxml_raw.h"

namespace ts5::converters::musicxml {

inline constexpr std::int64_t kMostDivisions = std::int64_t{1} << 24;  // of a quarter
inline constexpr std::int64_t kLongestMeasure = 1024;                  // whole notes
inline constexpr std::size_t kMostStaves = 64;                         // of a part

struct NamedCode {
  std::string_view name;
  std::uint8_t code;
};

[[nodiscard]] std::optional<std::int64_t> WholeNumber(std::string_view text);
// A number of divisions, which may have decimals.
[[nodiscard]] std::optional<Fraction> DivisionsOf(std::string_view text);

struct PartCursor {
  Reading& reading;
  Part& part;
  Fraction divisions = Fraction(1);
  ScoreTimeSignature time = {};
  Fraction now = {};  // by written note values
  int bar = 0;
  std::vector<Transposition> shifts = {};    // of each staff, against the first one
  std::array<bool, kMostStaves> begun = {};  // staves that have notes already

  [[nodiscard]] int Staff(std::size_t staff) const { return static_cast<int>(part.firstStaff + staff); }
  [[nodiscard]] NotePlace Place(std::size_t staff) const { return {bar, Staff(staff)}; }
  [[nodiscard]] Measure& Now() const { return part.measures.back(); }
  void Lose(TextId kind, std::size_t staff = 0, std::string detail = {}) const {
    reading.score.losses.Add(kind, bar, Staff(staff), 1, std::move(detail));
  }
  void Fail(std::size_t staff = 0) const { reading.Fail(bar, Staff(staff)); }
  void GrowStaves(std::size_t count) const;
  // The staff of a number, or that an element names, counted from 0.
  [[nodiscard]] std::size_t StaffNumbered(std::string_view text) const;
  [[nodiscard]] std::size_t StaffOf(pugi::xml_node element) const;
  // The staff that an attribute is for; nothing for all of them.
  [[nodiscard]] std::optional<std::size_t> NumberedStaff(pugi::xml_node attribute) const;
  void AddMark(DrawingItem drawing, Fraction at, std::size_t staff) const;
};

// Divisions, keys, times, clefs, staves and transpositions.
void ReadAttributes(PartCursor& at, pugi::xml_node attributes);
// Repeats, endings and the form of a bar line.
void ReadBarLine(PartCursor& at, pugi::xml_node line);

}  // namespace ts5::converters::musicxml
