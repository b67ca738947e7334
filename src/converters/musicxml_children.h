// The children of a note, found in one pass instead of a search for each. Used inside the reader only.
#pragma once

#include <algorithm>
#include <array>
#include <pugixml.hpp>
#include <string_view>

namespace ts5::converters::musicxml {

enum class NotePart : std::uint8_t {
  Accidental,
  Chord,
  Cue,
  Dot,
  Duration,
  Grace,
  Instrument,
  Notations,
  Pitch,
  Rest,
  Staff,
  Tie,
  TimeModification,
  Type,
  Unpitched,
  Voice,
};
inline constexpr auto kNoteParts = std::to_array<std::string_view>(
    {"accidental", "chord", "cue", "dot", "duration", "grace", "instrument", "notations", "pitch", "rest",
     "staff", "tie", "time-modification", "type", "unpitched", "voice"});

// The first letter and the length tell the names apart.
constexpr std::size_t PlaceOfName(std::string_view name) {
  return (static_cast<unsigned char>(name[0]) & 31U) * 4 + name.size() % 4;
}
inline constexpr auto kPartAtPlace = [] {
  std::array<std::uint8_t, 128> table{};
  table.fill(kNoteParts.size());
  for (std::size_t i = 0; i < kNoteParts.size(); ++i)
    table[PlaceOfName(kNoteParts[i])] = static_cast<std::uint8_t>(i);
  return table;
}();
static_assert(kNoteParts.size() ==
              static_cast<std::size_t>(std::ranges::count_if(kPartAtPlace, [](std::size_t i) {
                return i < kNoteParts.size();
              })));

class NoteParts {
 public:
  explicit NoteParts(pugi::xml_node note) : note_(note) {
    for (pugi::xml_node child = note.first_child(); child; child = child.next_sibling()) {
      const std::string_view name = child.name();
      const std::size_t index = name.empty() ? kNoteParts.size() : kPartAtPlace[PlaceOfName(name)];
      if (index < kNoteParts.size() && name == kNoteParts[index] && !parts_[index]) parts_[index] = child;
    }
  }

  [[nodiscard]] pugi::xml_node Note() const { return note_; }
  // The first of its name, or none.
  [[nodiscard]] pugi::xml_node operator[](NotePart part) const {
    return parts_[static_cast<std::size_t>(part)];
  }
  [[nodiscard]] bool Has(NotePart part) const { return static_cast<bool>((*this)[part]); }
  [[nodiscard]] const char* Text(NotePart part) const { return (*this)[part].child_value(); }
  // Calls visit with each of its name.
  template <typename Visit>
  void ForEach(NotePart part, const Visit& visit) const {
    for (pugi::xml_node node = (*this)[part]; node; node = node.next_sibling(node.name())) visit(node);
  }

 private:
  pugi::xml_node note_;
  std::array<pugi::xml_node, kNoteParts.size()> parts_;
};

}  // namespace ts5::converters::musicxml
