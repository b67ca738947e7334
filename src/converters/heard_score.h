// Scores of all formats for what makes them sound.
#pragma once

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_image.h"

namespace ts5::converters {

// A score file as it is; of any other score its document, the score file that it gives, and what of it is not
// heard as it is written. The codes of ReadAnyScore.
[[nodiscard]] Result<ScoreImage> HeardScore(Bytes file, const CancelCheck& cancelled = {});

}  // namespace ts5::converters
