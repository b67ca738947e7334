// Keys and the spelling of notes.
//
// Keys: the share of time of each pitch class is compared with what major and minor keys have (C. Krumhansl,
// "Cognitive Foundations of Musical Pitch", 1990, with the profiles of D. Temperley). Spelling: each note
// gets the letter that most of its neighbours, taken as tonics, would give it (D. Meredith, "The ps13 Pitch
// Spelling Algorithm", 2006, first stage), with the key signature as the point of reference; a note that is
// struck again and again counts once.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "score/score_document.h"

namespace ts5::transcribe {

struct WeightedKey {
  std::uint8_t key = 0;
  double weight = 1;  // how long it sounds
};

// Sharps, negative for flats, -6..6.
[[nodiscard]] int FindKey(std::span<const WeightedKey> notes);

// In order of onset, low to high. sharps: of the key signature at each note.
struct NoteToSpell {
  std::uint8_t key = 0;
  std::int8_t sharps = 0;
};
[[nodiscard]] std::vector<SpelledPitch> Spell(std::span<const NoteToSpell> notes);

}  // namespace ts5::transcribe
