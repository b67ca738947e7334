// The music of a score in figures, whatever its format: what a properties page and a list of files say of it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5 {

struct MusicSummary {
  std::vector<std::string> keys;    // "C-Dur/a-Moll"; the different ones as they come, drum staves left out
  std::vector<std::string> metres;  // "3/4", likewise
  std::vector<double> tempos;       // quarters a minute, likewise; empty when the score says none
  double seconds = 0;               // without repeats, at the written tempos
  double played = 0;                // with them
  std::size_t bars = 0;
};

// A cancelled summary is of what was read by then.
[[nodiscard]] MusicSummary SummariseMusic(const ScoreDocument& document, const CancelCheck& cancelled = {});

}  // namespace ts5
