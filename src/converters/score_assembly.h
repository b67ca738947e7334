// Puts the parts of a MusicXML score together into one document. Used inside the reader only.
#pragma once

#include "converters/musicxml_raw.h"
#include "converters/score_with_losses.h"

namespace ts5::converters::musicxml {

// notesAlone: what hangs on notes has not been read. Cancelled.
[[nodiscard]] ScoreResult<ScoreWithLosses> AssembleScore(Score score, bool notesAlone,
                                                         const CancelCheck& cancelled);

}  // namespace ts5::converters::musicxml
