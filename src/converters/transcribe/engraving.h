// Notes that have their staves, bars, voices and letters as a score: signs where they change, voices bar by
// bar, systems and their numbers.
#pragma once

#include <cstdint>
#include <vector>

#include "converters/transcribe/staff_notes.h"
#include "converters/transcribe/transcription_options.h"

namespace ts5::transcribe {

struct BarredMusic {
  const Performance& performance;
  const BeatMap& beats;
  const std::vector<Staff>& staves;
  const std::vector<BarSpan>& bars;  // at least one
  const std::vector<int>& keys;      // of each bar: sharps
};

// The bar in which a place lies.
[[nodiscard]] std::size_t BarAt(const std::vector<BarSpan>& bars, std::int64_t place);

// Fills a score that is empty; how many notes could not be placed as they were spelled. Work that is told to
// stop leaves a part of it.
[[nodiscard]] std::uint32_t Engrave(const BarredMusic& music, const TranscriptionOptions& options,
                                    ScoreDocument& score, const CancelCheck& cancelled = {});

}  // namespace ts5::transcribe
