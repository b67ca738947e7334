// What an audio file is: its kind, its format, and how long its data are.
#pragma once

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

}  // namespace ts5
