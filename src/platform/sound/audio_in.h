// Audio input: a device hands sample frames to a function on a thread of its own.
//
// Samples are 32-bit floats, interleaved, full scale at -1 and +1. Besides the sound cards (and the monitors
// of their outputs, where the system has such) there is the null device, which gives silence in real time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/sound/audio_out.h"

namespace ts5 {

// Takes a block; called on the device's thread, must not block.
using AudioTake = std::function<void(std::span<const float> interleaved)>;

// The names of the sound cards with an input, in the order of the system; empty where there are none.
[[nodiscard]] std::vector<std::string> AudioInputDevices();

struct AudioInputAbility {
  std::vector<std::uint32_t> rates;  // rising
  std::int32_t channels = 0;         // at most
};
// Nothing for a device that is not there.
[[nodiscard]] AudioInputAbility AbilityOfAudioInput(std::string_view device);

class AudioInput {
 public:
  virtual ~AudioInput() = default;
  // SourceFailed: the device does not start.
  [[nodiscard]] virtual Outcome Start() = 0;
  // When it returns, the function is not called any more. May be called twice.
  virtual void Stop() = 0;
  // False once the device has gone, while it records.
  [[nodiscard]] virtual bool Alive() const = 0;
};

// device: "" for the system's first input, a name of AudioInputDevices(), or "null". SourceFailed: no such
// device, or it cannot be opened in this format.
[[nodiscard]] Result<std::unique_ptr<AudioInput>> OpenAudioInput(std::string_view device, AudioFormat format,
                                                                 AudioTake take);

}  // namespace ts5
