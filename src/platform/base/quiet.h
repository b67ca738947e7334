// Silences what device libraries (ALSA, PulseAudio, JACK, the sound font loader) print on their own while it
// lives: standard error goes nowhere. For short probing calls only; it counts for the whole process.
#pragma once

namespace ts5 {

class QuietLibraries {
 public:
  QuietLibraries();
  ~QuietLibraries();
  QuietLibraries(const QuietLibraries&) = delete;
  QuietLibraries& operator=(const QuietLibraries&) = delete;
};

}  // namespace ts5
