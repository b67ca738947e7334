// Sound as it goes onto a disc: frames of 16 bit stereo at 44100 Hz, low byte first.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "platform/base/outcome.h"

namespace ts5::disc {

class SoundSource {
 public:
  virtual ~SoundSource() = default;
  // Fills out as far as there is sound left, and says how far; less than it holds at the end only.
  // ReadFailed.
  [[nodiscard]] virtual Result<std::size_t> Read(std::span<std::uint8_t> out) = 0;
  // From another thread: a Read that is under way, and any later one, fails as soon as it can.
  virtual void Interrupt() {}
};

using SoundOpener = std::function<Result<std::unique_ptr<SoundSource>>()>;

// A wave file in the audio-CD format. SourceFailed; WrongFormat: it has another one.
[[nodiscard]] Result<std::unique_ptr<SoundSource>> WaveSound(const std::string& path);
// The bytes of sound in such a file; the same failures.
[[nodiscard]] Result<std::uint64_t> WaveSoundBytes(const std::string& path);

}  // namespace ts5::disc
