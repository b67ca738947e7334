// Reads MusicXML 1 to 4, partwise and timewise, as text in any encoding or compressed (.mxl).
//
// Nothing outside the file is opened: document types, entities and addresses are passed over. What real
// exporters get wrong is mended where it can be (rounded durations, missing voices, ties without an end,
// measures of unequal length), and what is given up is in the losses.
#pragma once

#include "converters/score_with_losses.h"
#include "platform/base/bytes.h"
#include "platform/base/work_watch.h"

namespace ts5::converters {

// WrongFormat: no MusicXML; SourceFailed: a damaged file, with the place where that is known; Cancelled.
[[nodiscard]] ScoreResult<ScoreWithLosses> ReadMusicXml(ByteView file, const CancelCheck& cancelled = {},
                                                        ScoreDetail detail = ScoreDetail::Whole);

}  // namespace ts5::converters
