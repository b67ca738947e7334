// Writes a document as MusicXML 4.0, partwise, in UTF-8.
#pragma once

#include "converters/score_losses.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5::converters {

// Losses are added to the report. Cancelled.
[[nodiscard]] Result<Bytes> WriteMusicXml(const ScoreDocument& document, LossReport& losses,
                                          const WorkWatch& watch = {});

}  // namespace ts5::converters
