// The children of a note, found in one pass instead of a search for each. Used inside the reader only.
#pragma once

#include <algorithm>
#include <array>
#include <pugixml.hpp>
#include <string_view>

namespace ts5::musicxml {

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

class NoteParts {
 public:
  explicit NoteParts(pugi::xml_node note) : note_(note) {
    for (pugi::xml_node child = note.first_child(); child; child = child.next_sibling()) {
      const auto* const found = std::ranges::find(kNoteParts, std::string_view(child.name()));
      if (found == kNoteParts.end()) continue;
      pugi::xml_node& part = parts_[static_cast<std::size_t>(found - kNoteParts.begin())];
      if (!part) part = child;
    }
  }

  [[nodiscard]] pugi::xml_node Note() const { return note_; }
  // The first of its name, or none.
  [[nodiscard]] pugi::xml_node operator[](NotePart part) const {
    return parts_[static_cast<std::size_t>(part)];
  }
  [[nodiscard]] bool Has(NotePart part) const { return static_cast<bool>((*this)[part]); }
  [[nodiscard]] const char* Text(NotePart part) const { return (*this)[part].text().get(); }
  // Calls visit with each of its name.
  template <typename Visit>
  void ForEach(NotePart part, const Visit& visit) const {
    for (pugi::xml_node node = (*this)[part]; node; node = node.next_sibling(node.name())) visit(node);
  }

 private:
  pugi::xml_node note_;
  std::array<pugi::xml_node, kNoteParts.size()> parts_;
};

}  // namespace ts5::musicxml
