// The built-in General MIDI synthesiser: FluidSynth with the sound font of the package timgm6mb-soundfont, so
// that music sounds without hardware. Messages may come from one thread while another renders.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

class Synthesizer {
 public:
  // soundFont "": $STAVORA_SOUNDFONT, else the installed General MIDI font. SourceFailed: there is none or it
  // cannot be read; LibraryFailed: no synthesiser can be made. sampleRate 8000..96000 frames per second.
  [[nodiscard]] static Result<std::unique_ptr<Synthesizer>> Create(std::uint32_t sampleRate,
                                                                   const std::string& soundFont = {});
  ~Synthesizer();

  // One channel message: status byte in the low byte, then the first and the second data byte. Anything else
  // is ignored.
  void ShortMessage(std::uint32_t message);
  // A whole system exclusive message, F0 to F7 (GM and GS resets, tunings).
  void SystemExclusive(ByteView message);
  // All notes end at once, all controllers go back to their defaults.
  void Reset();
  // The next stereo frames, interleaved.
  void Render(std::span<float> interleaved);

  // Where the sound font is looked for; "" when none is there.
  [[nodiscard]] static std::string InstalledSoundFont();

 private:
  struct State;
  explicit Synthesizer(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace ts5
