#include "converters/transcribe/drums.h"

#include <algorithm>
#include <numeric>
#include <set>

namespace ts5::transcribe {
namespace {

// Steps above C0.
constexpr int Step(int letter, int octave) {
  return 7 * octave + letter;
}
struct Usual {
  std::uint8_t drum = 0;
  int step = 0;
};
constexpr Usual kUsual[] = {
    {35, Step(2, 4)}, {36, Step(3, 4)},                    // bass drums
    {37, Step(1, 5)}, {38, Step(0, 5)}, {40, Step(0, 5)},  // side stick, snares
    {41, Step(4, 4)}, {43, Step(5, 4)}, {45, Step(6, 4)},  // toms
    {47, Step(1, 5)}, {48, Step(2, 5)}, {50, Step(3, 5)},
    {42, Step(4, 5)}, {44, Step(1, 4)}, {46, Step(4, 5)},  // hi-hats
    {49, Step(5, 5)}, {51, Step(3, 5)}, {53, Step(3, 5)},  // cymbals
    {57, Step(6, 5)}, {59, Step(3, 5)},
};
constexpr int kOther = Step(0, 6);
constexpr int kLowest = Step(0, 2);
constexpr int kHighest = Step(6, 8);

SpelledPitch PitchAt(int step) {
  return {static_cast<std::int8_t>(step % 7), 0, static_cast<std::int8_t>(step / 7)};
}

}  // namespace

DrumMap::DrumMap(std::span<const std::uint8_t> keys) {
  std::set<int> taken;
  for (const std::uint8_t drum : std::set<std::uint8_t>(keys.begin(), keys.end())) {
    const auto* const usual = std::ranges::find(kUsual, drum, &Usual::drum);
    const int wanted = usual == std::end(kUsual) ? kOther : usual->step;
    int step = wanted;
    for (int distance = 0; taken.contains(step) && distance < 2 * (kHighest - kLowest); ++distance) {
      step = distance % 2 == 0 ? wanted + distance / 2 + 1 : wanted - distance / 2 - 1;
      step = std::clamp(step, kLowest, kHighest);
    }
    taken.insert(step);
    pitches_[drum] = PitchAt(step);
  }
}

SpelledPitch DrumMap::PitchOf(std::uint8_t drum) const {
  const auto found = pitches_.find(drum);
  return found == pitches_.end() ? PitchAt(kOther) : found->second;
}

NoteMap DrumMap::Map() const {
  NoteMap map{};
  std::iota(map.begin(), map.end(), std::uint8_t{0});
  for (const auto& [drum, pitch] : pitches_)
    map[static_cast<std::size_t>(std::clamp(pitch.Key(), 0, 127))] = drum;
  return map;
}

}  // namespace ts5::transcribe
