// Melodies as the console program takes them: as numbers, or as the keys of the note editor.
#pragma once

#include <string_view>

#include "platform/base/outcome.h"
#include "search/search_melody.h"

namespace ts5 {

// "60:240,62:240,r:240": per element the key 0..127 or r for a rest, and the duration in 1/240 of a quarter
// note, 1..32767. Blanks beside the separators are passed over; rests at both ends are left out.
// WrongFormat: anything else, too many elements, or no note at all.
[[nodiscard]] Result<SearchMelody> MelodyFromNumbers(std::string_view text);

// The characters of the note editor, and its other keys by name in angle brackets: "<F4>8cdeC <F3>4.+f".
// Names: F2 F3 F4 F7 F8 Pos1 Ende Links Rechts Entf Rück, without regard to case.
// WrongFormat: a character or name without meaning, a rest at the start, or no note at all.
[[nodiscard]] Result<SearchMelody> MelodyFromKeys(std::string_view text);

}  // namespace ts5
