// What kind of audio a file holds, in which format, and how long its data are.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <string>

#include "audio/media_kind.h"
#include "platform/media/wave_format.h"

namespace ts5 {

struct MediaProbe {
  MediaKind kind = MediaKind::None;
  MediaCodec codec = MediaCodec::Other;  // of what is no wave file
  WaveFormat format = {};
  std::uint64_t dataLength = 0;  // bytes: the duration times format.bytesPerSecond, to the nearest
  double seconds = 0;
  std::optional<std::uint64_t> frames = {};  // where the file says it exactly
  std::string encoder = {};                  // what made it; "" when the file does not say it
  std::optional<std::uint32_t> delay = {};   // samples of the encoder's own before the music

  // Rounded down; 0 for a format without a byte rate.
  [[nodiscard]] std::uint64_t Milliseconds() const;
};

inline std::uint64_t MediaProbe::Milliseconds() const {
  if (format.bytesPerSecond == 0) return 0;
  const std::uint64_t whole = dataLength / format.bytesPerSecond;
  return whole * 1000 + dataLength % format.bytesPerSecond * 1000 / format.bytesPerSecond;
}

// And the data length with it; the format is there already.
inline void SetSeconds(MediaProbe& probe, double seconds) {
  constexpr double kMostSeconds = 1e9;
  probe.seconds = std::clamp(seconds, 0.0, kMostSeconds);
  probe.dataLength = static_cast<std::uint64_t>(std::llround(probe.seconds * probe.format.bytesPerSecond));
}

}  // namespace ts5
