// Notes in words, for screen readers and lists: "c1 Viertel, Fis1 punktierte Achtel, Achtelpause".
#pragma once

#include <span>
#include <string>

#include "search/search_melody.h"

namespace ts5 {

// German names of pitch and octave: "C" for key 36, "c" for 48, "c1" for 60, with "is" or "es" as written.
[[nodiscard]] std::string PitchName(std::int16_t pitch);
// "Viertel", "punktierte Achtel"; other durations as "n/240".
[[nodiscard]] std::string DurationName(int duration);
// The elements, separated by commas; "" for none.
[[nodiscard]] std::string SpokenMelody(std::span<const MelodyElement> elements);

}  // namespace ts5
