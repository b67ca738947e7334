#include "audio/silence_trimmer.h"

#include <algorithm>

namespace ts5 {

bool SilenceTrimmer::IsSilent(ByteView frames, std::size_t frame) const {
  return std::ranges::all_of(frames.subspan(frame * frameSize_, frameSize_),
                             [](std::uint8_t byte) { return byte == 0; });
}

Outcome SilenceTrimmer::Push(ByteView frames) {
  const std::size_t count = frames.size() / frameSize_;
  std::size_t first = 0;
  while (!sounded_ && first < count && IsSilent(frames, first)) ++first;
  if (first == count) return Outcome::Success;
  sounded_ = true;
  std::size_t end = count;
  while (end > first && IsSilent(frames, end - 1)) --end;
  if (end > first) {
    if (const Outcome written = WriteSilence(held_); Failed(written)) return written;
    held_ = 0;
    const ByteView sound = frames.subspan(first * frameSize_, (end - first) * frameSize_);
    if (const Outcome written = write_(sound); Failed(written)) return written;
  }
  held_ += count - end;
  return Outcome::Success;
}

Outcome SilenceTrimmer::Finish() {
  return WriteSilence(std::min<std::uint64_t>(held_, 1));
}

Outcome SilenceTrimmer::WriteSilence(std::uint64_t frames) {
  constexpr std::uint64_t kMostAtOnce = 4096;
  while (frames > 0) {
    const std::uint64_t count = std::min(frames, kMostAtOnce);
    const Bytes silence(static_cast<std::size_t>(count) * frameSize_);
    if (const Outcome written = write_(silence); Failed(written)) return written;
    frames -= count;
  }
  return Outcome::Success;
}

}  // namespace ts5
