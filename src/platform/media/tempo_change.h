// Music slower or faster at the same pitch: samples go in, and as they come out they last longer or shorter.
// By the SoundTouch library, which lays short pieces of the sound over each other.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

namespace ts5 {

class TempoChange {
 public:
  // channels 1..16; samples are interleaved.
  TempoChange(std::uint32_t sampleRate, std::uint32_t channels);
  ~TempoChange();

  // 0.5: half as fast. For what comes in from now on.
  void SetSpeed(double speed);
  // Forgets what is inside.
  void Clear();
  // Whole frames.
  void Put(std::span<const float> samples);
  // Nothing comes behind: what is still inside can be taken.
  void Finish();
  // What is ready, in whole frames; how many samples.
  [[nodiscard]] std::size_t Take(std::span<float> samples);

 private:
  struct Library;
  std::unique_ptr<Library> library_;
  std::uint32_t channels_;
};

}  // namespace ts5
