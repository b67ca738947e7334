// Which notes need an accidental in print: those that differ from the key and from what stands before them on
// their line or space in the bar. A note that is tied from before has none.
#pragma once

#include <cstdint>
#include <vector>

#include "platform/base/work_watch.h"
#include "score/score_bars.h"

namespace ts5 {

// Of each voice of a staff, of each event: bit n for note n (kMaxChordKeys of them at most).
using AccidentalBits = std::vector<std::vector<std::uint32_t>>;
[[nodiscard]] AccidentalBits NeededAccidentals(const ScoreMusic& music, std::size_t staff);

// Readers mark every accidental that they see (ScoreItem::courtesy); this leaves the marks of those alone
// that are not needed.
void KeepCourtesyAccidentals(ScoreDocument& document, const CancelCheck& cancelled = {});

}  // namespace ts5
