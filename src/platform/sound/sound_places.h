// Where music sounds that is to be heard at once, without a device having been chosen for it.
#pragma once

#include <optional>
#include <string>

namespace ts5 {

struct SoundPlaces {
  std::optional<std::string> audio;  // as OpenAudioOutput takes it; nothing: there is no sound device
  std::optional<std::string> midi;   // as OpenMidiOutput takes it; nothing: no device, or no sound font

  bool operator==(const SoundPlaces&) const = default;
};

// Of this machine, as it is now: samples go where the system sends them, MIDI to the built-in synthesiser, or
// to the first instrument where that cannot sound. May take some time.
[[nodiscard]] SoundPlaces FindSoundPlaces();

}  // namespace ts5
