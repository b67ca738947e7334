// Audio output: a device pulls sample frames from a render function on a thread of its own.
//
// Samples are 32-bit floats, interleaved, full scale at -1 and +1. Besides the sound cards there is always
// the null device, which pulls in real time and swallows what it gets, so that nothing else changes on a
// machine without sound; and "wave:FILE.wav" writes a 16-bit file (RIFF WAVE, PCM) instead of sounding.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/sound/audio_format.h"

namespace ts5 {

// Fills the whole block; called on the device's thread, must not block.
using AudioRender = std::function<void(std::span<float> interleaved)>;

inline constexpr std::string_view kNullDevice = "null";
inline constexpr std::string_view kWavePrefix = "wave:";

// The names of the sound cards with an output, in the order of the system; empty where there are none. What
// the audio libraries print on their own is silenced.
[[nodiscard]] std::vector<std::string> AudioOutputDevices();

class AudioOutput {
 public:
  virtual ~AudioOutput() = default;
  // Starts pulling. TargetFailed: the device does not start.
  [[nodiscard]] virtual Outcome Start() = 0;
  // Stops pulling; when it returns, the render function is not called any more. For a wave file: completes it
  // (WriteFailed, TargetFailed). May be called twice.
  [[nodiscard]] virtual Outcome Stop() = 0;
  // False once the device has gone, while it plays.
  [[nodiscard]] virtual bool Alive() const = 0;
};

// The rates to try a device with, one after the other: not every device takes every rate, and where programs
// share one, it may have only its own.
[[nodiscard]] std::array<std::uint32_t, 4> RatesToTry(std::uint32_t wanted);

// device: "" for the system's first output (the null device where there is none), a name of
// AudioOutputDevices(), "null" or "wave:FILE". TargetFailed: no such device, it cannot be opened, or the file
// cannot be made.
[[nodiscard]] Result<std::unique_ptr<AudioOutput>> OpenAudioOutput(std::string_view device,
                                                                   AudioFormat format, AudioRender render);

}  // namespace ts5
