// A 16-bit wave file (RIFF WAVE, PCM) that grows block by block. It appears when it is finished; one that is
// destroyed before leaves nothing.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"

namespace ts5 {

class WaveSink {
 public:
  // sampleRate in frames per second. TargetFailed: the file cannot be made; WriteFailed.
  [[nodiscard]] static Result<WaveSink> Create(const std::string& path, std::uint32_t sampleRate,
                                               std::uint32_t channels);

  // Samples interleaved, full scale at -1 and +1, so that 16-bit samples come back as they were. After a
  // failure nothing more is written, and so behind the end of what a file of this kind can hold (4 GB).
  void Write(std::span<const float> interleaved);
  [[nodiscard]] Outcome State() const { return state_; }
  // Completes the file. TargetFailed, WriteFailed.
  [[nodiscard]] Outcome Finish();

 private:
  WaveSink(StagedFile file, std::uint32_t sampleRate, std::uint32_t channels)
      : file_(std::move(file)), sampleRate_(sampleRate), channels_(channels) {}
  [[nodiscard]] Bytes Header() const;

  std::optional<StagedFile> file_;
  std::uint32_t sampleRate_;
  std::uint32_t channels_;
  std::uint64_t dataSize_ = 0;
  Outcome state_ = Outcome::Success;
};

}  // namespace ts5
