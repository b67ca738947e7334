// Puts the rests, chords, marks and signs of a part into the bars of the score. Used inside the reader only.
#pragma once

#include "converters/assembly_voices.h"

namespace ts5::converters::musicxml {

// The measure of a part, into the columns of its staves. hasBeams: a note without one has flags. Takes the
// items away from the part.
void FillBar(const PartToPlace& place, const PartVoices& voices, std::size_t measure, bool hasBeams,
             BarColumn& bar);

}  // namespace ts5::converters::musicxml
