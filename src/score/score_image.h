// Scores of other formats as score files, so that engine and pages take them as they take those.
//
// Their readers stand above this room; the table of filters hands in the one way to them, once, before
// anything runs. Without it every file is taken as it is.
#pragma once

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

using ScoreImageReader = Result<Bytes> (*)(Bytes file, const CancelCheck& cancelled);
void SetScoreImageReader(ScoreImageReader reader);

// The bytes of a score file: the file itself, or what its document gives. The codes of its reader.
[[nodiscard]] Result<Bytes> ScoreImage(Bytes file, const CancelCheck& cancelled = {});

}  // namespace ts5
