// How a score lies on its pages, as far as whoever made it has said so. Score files keep it as an item of
// their own in the parameter block of the information part, and the beams of a chord as an item among the
// chord's parameters; programs that do not know these items pass over them.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/bytes.h"

namespace ts5 {

struct ScorePageLayout {
  bool given = false;               // else nothing below has a meaning
  std::uint16_t narrowLines = 120;  // distance of staff lines, 1/100 mm
  std::uint16_t normalLines = 175;
  std::uint8_t above = 6;  // a staff, in spaces (of normal lines); so are the others
  std::uint8_t below = 6;
  std::uint8_t betweenSystems = 0;
  std::uint8_t beforeFirst = 0;
  bool slashes = false;      // two of them between systems
  std::uint8_t justify = 1;  // the staves over the height: 0 of no page, 1 of all but the last, 2 of all
  bool barNumbers = true;    // at the start of each system
  std::uint8_t barsPerSystem = 4;  // 0 all
  std::uint8_t beaming = 2;        // 0 flags alone, 1 small, 2 middle, 3 large groups, 4 whole bars

  bool operator==(const ScorePageLayout&) const = default;
};

inline constexpr std::uint8_t kPageItem = 0x54;  // types of the items
inline constexpr std::uint8_t kBeamItem = 0x42;

// The content of the item. Reading takes nothing from bytes that are something else.
[[nodiscard]] Bytes PageItem(const ScorePageLayout& page);
void TakePageItem(ByteView item, ScorePageLayout& page);

// The parameters of a chord with the beams of its stem (as ScoreItem::beams), and back: beams are taken out
// of the parameters.
[[nodiscard]] Bytes WithBeams(Bytes parameters, const std::string& beams);
[[nodiscard]] std::string TakeBeams(Bytes& parameters, std::uint8_t durationCode);

}  // namespace ts5
