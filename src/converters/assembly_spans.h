// What lasts over several chords of a part: slurs, endings, and marks with an end. A score file counts in
// chords, MusicXML names two places. Used inside the reader only.
#pragma once

#include "converters/assembly_voices.h"

namespace ts5::converters::musicxml {

void ResolveSlurs(const PartToPlace& place, const PartVoices& voices);
// On the first chord of their measure in the first voice.
void PlaceEndings(const PartToPlace& place, const PartVoices& voices);

// Where a mark hangs: an item that begins there in the score.
struct MarkHome {
  Fraction start;
  std::size_t slot = 0;  // voice of its staff
  bool isRest = false;
};
// How long a mark lasts that has an end.
void ExtendMark(const PartToPlace& place, const PartVoices& voices, std::size_t measure, const MarkHome& home,
                Mark& mark);

}  // namespace ts5::converters::musicxml
