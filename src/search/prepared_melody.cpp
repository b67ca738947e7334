#include "search/prepared_melody.h"

namespace ts5 {
namespace {

constexpr float kPerMelodyTick = 0.004166667F;  // 1/240
constexpr float kHundredth = 0.01F;

}  // namespace

PreparedMelody PrepareMelody(const std::vector<MelodyElement>& elements, std::uint16_t division) {
  const float factor = static_cast<float>(division) * kPerMelodyTick;
  PreparedMelody notes;
  notes.reserve(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (IsRest(elements[i])) continue;
    int duration = elements[i].duration;
    if (i + 1 < elements.size() && IsRest(elements[i + 1])) duration += elements[i + 1].duration;
    const auto ticks = static_cast<std::int64_t>(duration * double{factor});
    notes.push_back({KeyOf(elements[i].pitch), static_cast<std::uint16_t>(ticks)});
  }
  return notes;
}

std::uint64_t DurationTolerance(std::uint16_t duration, Tolerance tolerance) {
  return static_cast<std::uint64_t>(duration * double{kHundredth} * Percent(tolerance));
}

}  // namespace ts5
