// Where drums stand on their staff: a line or space of its own for each that occurs, the usual one where it
// is free, and the note map that leads from there to the keys of General MIDI.
#pragma once

#include <cstdint>
#include <map>
#include <span>

#include "score/score_document.h"

namespace ts5::transcribe {

class DrumMap {
 public:
  explicit DrumMap(std::span<const std::uint8_t> keys);

  [[nodiscard]] SpelledPitch PitchOf(std::uint8_t drum) const;
  [[nodiscard]] NoteMap Map() const;

 private:
  std::map<std::uint8_t, SpelledPitch> pitches_;  // of each drum
};

}  // namespace ts5::transcribe
