// Tells what kind of audio a file holds, in which format, and how long its data are.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/outcome.h"
#include "platform/strings.h"
#include "platform/wave_format.h"

namespace ts5 {

enum class MediaKind : std::int32_t {
  None = -1,  // no audio file that the system can use
  Wave = 0,   // PCM, ADPCM, floats, MPEG layer 3 inside a wave file and the like
  MpegLayer1 = 1,
  MpegLayer2 = 2,
  MpegLayer3 = 3,
  Aiff = 4,
  WindowsMedia = 5,
  OggVorbis = 6,
  MonkeysAudio = 7,
};

// Kinds that hold what a wave file can hold: the wave converter and the encoders take them.
[[nodiscard]] constexpr bool IsWaveKind(MediaKind kind) {
  return kind == MediaKind::Wave || kind == MediaKind::Aiff;
}

struct MediaProbe {
  MediaKind kind = MediaKind::None;
  WaveFormat format = {};
  std::uint64_t dataLength = 0;  // bytes: the duration times format.bytesPerSecond, to the nearest
  double seconds = 0;
  std::optional<std::uint64_t> frames = {};  // where the file says it exactly

  // Rounded down; 0 for a format without a byte rate.
  [[nodiscard]] std::uint64_t Milliseconds() const;
};

// What cannot be opened or read, and what is no audio, is of the kind None. Any thread.
[[nodiscard]] MediaProbe ProbeMedia(const std::string& path);

// The name of a file's kind, e.g. "AIFF".
[[nodiscard]] TextId KindName(MediaKind kind);

}  // namespace ts5
