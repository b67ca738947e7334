// What a reader of scores gives: the score with what is lost of it, or why there is none.
#pragma once

#include <cstdint>
#include <tl/expected.hpp>

#include "converters/score_losses.h"
#include "score/score_document.h"

namespace ts5::converters {

// How much of a score is read.
enum class ScoreDetail : std::uint8_t {
  Whole,  // all of it, and what it loses
  Music,  // without a look for what it loses, for those that do not tell
  Notes,  // notes and rests in their bars, voices and systems, without what hangs on them
};

struct ScoreWithLosses {
  ScoreDocument document;
  LossReport losses;
};

// Why a score could not be read: the code, and where, as indices from 0; -1 unknown.
struct ScoreFault {
  Outcome code = Outcome::SourceFailed;
  int bar = -1;
  int staff = -1;
};

template <typename T>
using ScoreResult = tl::expected<T, ScoreFault>;

}  // namespace ts5::converters
