// MIDI input: the ports that music comes from, a keyboard for example.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"

namespace ts5 {

// An open port; destroying it closes it, and no message arrives after that.
class MidiInput {
 public:
  virtual ~MidiInput() = default;
};

// Gets each channel message (status in the low byte, then the data bytes) on a thread of the system.
using MidiTaker = std::function<void(std::uint32_t message)>;

// The names of the system's MIDI inputs, in its order; empty where there is no MIDI service.
[[nodiscard]] std::vector<std::string> MidiInputDevices();

// SourceFailed: no such port, or it is in use.
[[nodiscard]] Result<std::unique_ptr<MidiInput>> OpenMidiInput(std::string_view device, MidiTaker taker);

// A port that loops back what other programs send, and is no keyboard.
[[nodiscard]] bool IsThroughPort(std::string_view device);

}  // namespace ts5
