#include "score/score_parts.h"

#include <algorithm>

#include "score/texts.h"

namespace ts5 {

std::vector<ScorePart> PartsOf(const ScoreDocument& document) {
  constexpr std::size_t kMostStaves = 3;  // of one player without a word
  std::size_t covered = 0;
  for (const ScorePart& part : document.parts) covered += part.staves;
  if (covered == document.staves.size() &&
      std::ranges::none_of(document.parts, [](const ScorePart& p) { return p.staves == 0; }))
    return document.parts;
  std::vector<ScorePart> parts;
  for (std::size_t i = 0; i < document.staves.size(); ++i) {
    const StaffLayout& staff = document.staves[i];
    const bool named = !staff.name.empty() && staff.name != Text(texts::ScoreStaffUnnamed);
    const bool same = i > 0 && named && document.staves[i - 1].name == staff.name &&
                      document.staves[i - 1].sound == staff.sound &&
                      document.staves[i - 1].transpose == staff.transpose &&
                      parts.back().staves < kMostStaves;
    if (same) {
      ++parts.back().staves;
    } else {
      parts.push_back({staff.name, {}, {}, 1, 0, {}});
    }
  }
  return parts;
}

}  // namespace ts5
