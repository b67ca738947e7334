// Streams of samples: what decoders give and what encoders, wave files and devices take.
//
// Samples are 64-bit floats, interleaved, full scale at -1 and +1: exact for whole numbers of up to 32 bits
// and wide enough for the best resampling. A source or sink belongs to one thread at a time.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/base/outcome.h"

namespace ts5 {

struct PcmShape {
  std::uint32_t sampleRate = 0;   // frames per second
  std::uint32_t channels = 0;     // 1..64
  std::uint32_t channelMask = 0;  // loudspeakers of the channels, see ChannelMaskOf; 0: not known
  // Significant bits of samples that were whole numbers; 0: floats, or decoded from lossy data.
  std::uint32_t bits = 0;

  bool operator==(const PcmShape&) const = default;
};

// A sample as 16 bits: rounded, limited, never wrapped; what was 16 bits before comes out as it was.
[[nodiscard]] inline std::int16_t Sample16(double sample) {
  return static_cast<std::int16_t>(std::lrint(std::clamp(sample * 32768.0, -32768.0, 32767.0)));
}

class PcmSource {
 public:
  virtual ~PcmSource() = default;

  [[nodiscard]] virtual const PcmShape& Shape() const = 0;
  // How many frames there are in all; nothing when only reading to the end will tell. An estimate for files
  // that do not say it exactly.
  [[nodiscard]] virtual std::optional<std::uint64_t> Frames() const = 0;
  // Fills out with whole frames and returns how many; 0 at the end only, but fewer than fit at any time.
  // ReadFailed: an I/O error, or the file has become shorter; SourceFailed: nothing of it can be decoded.
  [[nodiscard]] virtual Result<std::size_t> Read(std::span<double> out) = 0;
  // The frame that is read next, at most Frames(). SourceFailed: the stream cannot be searched.
  [[nodiscard]] virtual Outcome Seek(std::uint64_t frame) = 0;
};

class PcmSink {
 public:
  virtual ~PcmSink() = default;
  // Whole frames. WriteFailed.
  [[nodiscard]] virtual Outcome Write(std::span<const double> interleaved) = 0;
  // After the last frame: completes what was written. WriteFailed.
  [[nodiscard]] virtual Outcome Finish() = 0;
};

}  // namespace ts5
