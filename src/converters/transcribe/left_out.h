// What a MIDI file holds of how music is played, for which a score has no place: counted by kind.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace ts5::transcribe {

enum class LeftOut : std::uint8_t {
  Velocities,   // notes of parts that are not all struck alike
  Bends,        // of the pitch
  Controllers,  // pedal, volume while the music plays...
  Pressures,    // of a key or channel
  Programs,     // other sounds of a part while it plays
  Exclusive,    // messages for one make of instruments
  Texts,        // that are no words to sing, markers and the like
  Count
};

class LeftOutCounts {
 public:
  void Add(LeftOut kind, std::size_t count = 1) {
    counts_[static_cast<std::size_t>(kind)] += static_cast<std::uint32_t>(count);
  }
  [[nodiscard]] std::uint32_t Of(LeftOut kind) const { return counts_[static_cast<std::size_t>(kind)]; }

 private:
  std::array<std::uint32_t, static_cast<std::size_t>(LeftOut::Count)> counts_{};
};

}  // namespace ts5::transcribe
