// Each note of a part that is tied onward finds the note of its pitch where it ends. Used inside the reader
// only.
#pragma once

#include "converters/assembly_voices.h"

namespace ts5::converters::musicxml {

// Settles the ties of all chords. False when it is to stop.
[[nodiscard]] bool ResolveTies(const PartToPlace& place, const PartVoices& voices,
                               const CancelCheck& cancelled);

}  // namespace ts5::converters::musicxml
