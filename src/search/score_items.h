// A score as the melody search sees it: every voice of every staff line as a row of notes, chords and rests
// with bar and beat.
//
// Durations are the notated ones, in the unit of melodies (1/240 of a quarter note). Rests in a row are one
// item, and so are notes that are tied. Bars are counted by the durations alone, for each voice by itself;
// only an upbeat ends at its bar line. The time signature is that of the first staff. It takes effect where
// it stands, as clefs do, in all voices alike: the voices of a system are walked side by side.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "platform/base/outcome.h"
#include "score/playback_parameters.h"
#include "score/score_document.h"
#include "score/score_info.h"
#include "search/melody_query.h"

namespace ts5 {

inline constexpr std::uint32_t kMelodyQuarter = 240;  // units of a melody

struct ScoreSearchItem {
  std::int32_t system = 0;            // from 0
  std::int32_t object = 0;            // within its voice in its system, from 0
  std::int32_t verticalPosition = 0;  // of its staff; what spacing the score gives, added up
  std::int32_t bar = 0;               // from 1; 0 for an upbeat
  std::int32_t beat = 0;              // from 1
  std::uint8_t firstKey = 0;          // transposed; 0 of a rest, and in 8 bits like all that is done with it
  std::uint8_t lastKey = 0;
  bool isRest = false;
  bool tieOnward = false;
  std::int64_t duration = 0;
  std::int64_t onset = 0;  // from the start of the score without repeats: a system begins where the longest
                           // voice of the one before it has ended

  bool operator==(const ScoreSearchItem&) const = default;
};

using ScoreLine = std::array<std::vector<ScoreSearchItem>, kMaxVoices>;

// The lines by staff layout. DamagedScore, Cancelled.
[[nodiscard]] Result<std::vector<ScoreLine>> ReadScoreItems(ByteView file, const ScoreFileInfo& info,
                                                            const CancelCheck& cancelled = {});
// Of a document, as of the file that it is written to. Cancelled.
[[nodiscard]] Result<std::vector<ScoreLine>> ReadScoreItems(const ScoreDocument& document,
                                                            const CancelCheck& cancelled = {});

}  // namespace ts5
