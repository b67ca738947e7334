// Reads MusicXML 1 to 4, partwise and timewise, as text in any encoding or compressed (.mxl).
//
// Nothing outside the file is opened: document types, entities and addresses are passed over. What real
// exporters get wrong is mended where it can be (rounded durations, missing voices, ties without an end,
// measures of unequal length), and what is given up is in the losses.
#pragma once

#include <tl/expected.hpp>

#include "converters/score_losses.h"
#include "platform/base/bytes.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5 {

struct ScoreWithLosses {
  ScoreDocument document;
  LossReport losses;
};
template <typename T>
using ScoreResult = tl::expected<T, ScoreFault>;

// How much of a score is read.
enum class ScoreDetail : std::uint8_t {
  Whole,  // all of it, and what it loses
  Music,  // without a look for what it loses, for those that do not tell
  Notes,  // notes and rests in their bars, voices and systems, without what hangs on them
};

// WrongFormat: no MusicXML; SourceFailed: a damaged file, with the place where that is known; Cancelled.
[[nodiscard]] ScoreResult<ScoreWithLosses> ReadMusicXml(ByteView file, const CancelCheck& cancelled = {},
                                                        ScoreDetail detail = ScoreDetail::Whole);

}  // namespace ts5
