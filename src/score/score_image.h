// Scores of other formats as score files, so that engine and pages take them as they take those.
//
// Their readers stand above this room; the table of filters hands in the one way to them, once, before
// anything runs. Without it every file is taken as it is.
#pragma once

#include <memory>
#include <vector>

#include "frame/run_result.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5 {

struct ScoreImage {
  Bytes file;  // a score file
  // Of another format: all of it, what is not heard as it was written there, and what the engine, which has
  // the score file alone, does not play so besides.
  std::shared_ptr<const ScoreDocument> document = {};
  std::vector<ItemLoss> losses = {};
  std::vector<ItemLoss> engineLosses = {};
};

using ScoreImageReader = Result<ScoreImage> (*)(Bytes file, const CancelCheck& cancelled);
void SetScoreImageReader(ScoreImageReader reader);

// The file itself, or what its document gives. The codes of its reader.
[[nodiscard]] Result<ScoreImage> ReadScoreImage(Bytes file, const CancelCheck& cancelled = {});

}  // namespace ts5
