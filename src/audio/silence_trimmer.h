// Takes silence off both ends of a track while it is written: the silent frames before the first sound, and
// those after the last one but for a single frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

class SilenceTrimmer {
 public:
  using Write = std::function<Outcome(ByteView)>;

  // frameSize: bytes of a frame (4 for 16-bit stereo); a frame is silent when all of them are 0. write gets
  // what stays.
  SilenceTrimmer(std::size_t frameSize, Write write) : frameSize_(frameSize), write_(std::move(write)) {}

  // Whole frames, in any portions. What write() returns.
  [[nodiscard]] Outcome Push(ByteView frames);
  // After the last frame.
  [[nodiscard]] Outcome Finish();

 private:
  [[nodiscard]] bool IsSilent(ByteView frames, std::size_t frame) const;
  [[nodiscard]] Outcome WriteSilence(std::uint64_t frames);

  std::size_t frameSize_;
  Write write_;
  bool sounded_ = false;
  std::uint64_t held_ = 0;  // silent frames that wait for a sound behind them
};

}  // namespace ts5
