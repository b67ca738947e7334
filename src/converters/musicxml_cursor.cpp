#include "converters/musicxml_cursor.h"

#include <algorithm>
#include <cmath>

#include "platform/base/text.h"

namespace ts5::converters::musicxml {

std::optional<std::int64_t> WholeNumber(std::string_view text) {
  return ParseInteger(Trim(text));
}

// A number of divisions, which may have decimals.
std::optional<Fraction> DivisionsOf(std::string_view text) {
  constexpr std::int64_t kDecimals = 1000;
  text = Trim(text);
  if (const auto whole = ParseInteger(text)) {
    if (*whole < 0 || *whole > kMostDivisions * kLongestMeasure * 4) return std::nullopt;
    return Fraction(*whole);
  }
  const auto number = ParseNumber(text);
  if (!number || !std::isfinite(*number) || *number < 0 || *number > 1e9) return std::nullopt;
  return Fraction(std::llround(*number * kDecimals), kDecimals);
}

void PartCursor::GrowStaves(std::size_t count) const {
  part.staves = std::max(part.staves, std::min(count, kMostStaves));
  part.transpositions.resize(part.staves);
  part.drums.resize(part.staves);
}

std::size_t PartCursor::StaffOf(pugi::xml_node element) const {
  return StaffNumbered(element.child("staff").text().get());
}

std::size_t PartCursor::StaffNumbered(std::string_view text) const {
  const auto number = WholeNumber(text);
  if (!number || *number < 1) return 0;
  const auto staff = static_cast<std::size_t>(std::min<std::int64_t>(*number, kMostStaves)) - 1;
  GrowStaves(staff + 1);
  return staff;
}

std::optional<std::size_t> PartCursor::NumberedStaff(pugi::xml_node attribute) const {
  const auto number = WholeNumber(attribute.attribute("number").value());
  if (!number || *number < 1) return std::nullopt;
  const auto staff = static_cast<std::size_t>(std::min<std::int64_t>(*number, kMostStaves)) - 1;
  GrowStaves(staff + 1);
  return staff;
}

void PartCursor::AddMark(DrawingItem drawing, Fraction place, std::size_t staff) const {
  Now().marks.push_back({std::move(drawing), place, staff, {}, SIZE_MAX});
}

}  // namespace ts5::converters::musicxml
