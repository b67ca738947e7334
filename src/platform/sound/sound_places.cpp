#include "platform/sound/sound_places.h"

#include <algorithm>

#include "platform/sound/audio_out.h"
#include "platform/sound/midi_in.h"
#include "platform/sound/midi_out.h"

namespace ts5 {

SoundPlaces FindSoundPlaces() {
  SoundPlaces places;
  if (!AudioOutputDevices().empty()) places.audio.emplace();
  const auto devices = MidiOutputDevices();
  const auto synthesizer = std::ranges::find(devices, kSynthesizerName);
  if (places.audio && synthesizer != devices.end()) {
    places.midi = *synthesizer;
  } else {
    const auto instrument = std::find_if(devices.begin(), synthesizer,
                                         [](const std::string& name) { return !IsThroughPort(name); });
    if (instrument != synthesizer) places.midi = *instrument;
  }
  return places;
}

}  // namespace ts5
