// A MIDI device that turns what it gets into a file: a Standard MIDI File of format 0 whose ticks are tenths
// of a millisecond (division 10000 at one quarter note a second). The file appears when the device is closed.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/sound/midi_out.h"

namespace ts5 {

inline constexpr std::string_view kCapturePrefix = "capture:";
inline constexpr std::uint16_t kCaptureDivision = 10'000;

using CaptureClock = std::function<std::chrono::nanoseconds()>;

// TargetFailed: the file cannot be made. Time counts from the opening, by the steady clock unless another is
// given.
[[nodiscard]] Result<std::unique_ptr<MidiOutput>> OpenMidiCapture(const std::string& path,
                                                                  CaptureClock clock = {});

// A device as users of the program name it: "capture:FILE.mid", or whatever OpenMidiOutput takes.
[[nodiscard]] Result<std::unique_ptr<MidiOutput>> OpenMidiDevice(std::string_view device,
                                                                 std::string_view audioDevice = {});

}  // namespace ts5
