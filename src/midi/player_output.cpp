#include "midi/player_output.h"

#include <utility>

#include "frame/run.h"
#include "midi/midi_capture.h"
#include "platform/sound/audio_out.h"

namespace ts5 {

std::int32_t PlayerDeviceIndex(const Job& job) {
  return job.destinationDevice >= kMidiDeviceBase ? job.destinationDevice - kMidiDeviceBase
                                                  : job.destinationDevice;
}

Result<std::unique_ptr<MidiLevel>> OpenPlayerOutput(const Run& run) {
  std::string name = run.Devices().output;
  std::string audio;
  if (name.starts_with(kWavePrefix)) audio = std::exchange(name, std::string(kSynthesizerName));
  if (name.empty()) {
    const auto devices = MidiOutputDevices();
    const std::int32_t index = PlayerDeviceIndex(run.GetJob());
    if (index >= 0 && std::cmp_less(index, devices.size())) name = devices[static_cast<std::size_t>(index)];
  }
  auto output = OpenMidiDevice(name, audio);
  if (!output) return Failure(output.error());
  return std::make_unique<MidiLevel>(*std::move(output));
}

}  // namespace ts5
