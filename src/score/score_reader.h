// Reads a score file of the current format into a document, and loses nothing: WriteScore gives the same
// bytes.
#pragma once

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5 {

// WrongFormat: no score; OldScore: one of the older formats; ReadFailed, DamagedScore: a damaged one;
// Cancelled.
[[nodiscard]] Result<ScoreDocument> ReadScore(ByteView file, const CancelCheck& cancelled = {});

}  // namespace ts5
