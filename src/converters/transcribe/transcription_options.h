// What the user chooses for the score of a MIDI file.
#pragma once

#include "score/score_document.h"

namespace ts5::transcribe {

struct TranscriptionOptions {
  bool lyrics = true;
  bool landscape = false;
  // Bars of a system, their numbers above each but the first, beams (Beaming), and distances.
  ScorePageLayout page = {.given = true};
};

}  // namespace ts5::transcribe
