// The format of the sample frames that a sound device moves.
#pragma once

#include <cstdint>

namespace ts5 {

struct AudioFormat {
  std::uint32_t sampleRate = 44100;  // frames per second, 8000..192000
  std::uint32_t channels = 2;        // 1..8
};

}  // namespace ts5
