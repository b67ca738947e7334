// The filters by their fixed numbers, as jobs store them.
#pragma once

#include <cstddef>
#include <cstdint>

namespace ts5 {

enum class FilterId : std::int32_t {
  None = -1,
  ScoreToMidi = 0,
  MidiToScore = 1,
  ScoreSearch = 2,
  MidiSearch = 3,
  MidiPlayer = 4,
  MidiConverter = 5,
  MidiToWave = 6,
  AudioPlayer = 7,
  WaveConverter = 8,
  AudioCompressor = 9,
  AudioDecompressor = 10,
  CdBurner = 11,
  CdGrabber = 12,
  CdCopier = 13,
  ScorePlayer = 14,
  Artworker = 15,
  XmlConverter = 16,
};

inline constexpr std::size_t kFilterCount = 17;

[[nodiscard]] constexpr bool IsFilter(FilterId id) {
  return static_cast<std::int32_t>(id) >= 0 && static_cast<std::size_t>(id) < kFilterCount;
}

}  // namespace ts5
