// Brings the built-in synthesiser to the loudness of recordings where it is heard at once. Its own level
// leaves room for a whole band, which makes a single voice some 30 dB softer than the next audio file.
#pragma once

#include <span>

namespace ts5 {

class LiveLevel {
 public:
  // Louder, but only as far as there is room: softer at once, louder again slowly.
  void Apply(std::span<float> interleaved);

 private:
  static constexpr float kLouder = 4;  // 12 dB
  float gain_ = kLouder;
};

}  // namespace ts5
