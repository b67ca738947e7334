// The conductor scan: time signatures and the first tempo of a file, from its first track.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr std::uint32_t kDefaultTempo = 120;  // quarter notes a minute, where nothing says another

struct TimeSignatureEntry {
  std::uint64_t tick = 0;  // where the bar of the change begins
  std::uint64_t bars = 0;  // whole bars before that tick
  std::uint32_t numerator = 4;
  std::uint32_t denominator = 4;

  friend bool operator==(const TimeSignatureEntry&, const TimeSignatureEntry&) = default;
};

// In order of tick; never empty after a scan.
using TimeSignatureMap = std::vector<TimeSignatureEntry>;

struct Conductor {
  TimeSignatureMap signatures;
  std::optional<std::uint32_t> tempo;  // beats per minute of the first Set Tempo, rounded down
};

// Ticks of a bar; 0 when a bar is shorter than a tick, which a scan never puts into a map (but a file of
// division 0 has no other bars).
[[nodiscard]] constexpr std::uint64_t BarTicks(std::uint16_t division, std::uint32_t numerator,
                                               std::uint32_t denominator) {
  return std::uint64_t{division} * 4 / denominator * numerator;
}

// Walks the track. Signatures without a bar (numerator 0, a denominator out of all measure) and tempos of 0
// are passed over. DamagedMidi: the track breaks off. Cancelled: stopped, which may be empty, said so.
[[nodiscard]] Result<Conductor> ScanConductorTrack(ByteView track, std::uint16_t division,
                                                   const std::function<bool()>& stopped = {});

// The bar that a tick lies in, counted from 0, by the map of a scan.
[[nodiscard]] std::uint64_t BarOf(const TimeSignatureMap& map, std::uint16_t division, std::uint64_t tick);

}  // namespace ts5
