// The MIDI ports of the system, of either direction: Port is RtMidiIn or RtMidiOut. For this folder only.
#pragma once

#include <rtmidi/RtMidi.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/base/quiet.h"

namespace ts5 {

// Nothing where the system has no MIDI service at all.
template <typename Port>
[[nodiscard]] std::unique_ptr<Port> MidiService() {
  const QuietLibraries quiet;
  try {
    return std::make_unique<Port>(RtMidi::UNSPECIFIED, "Stavora Tonstudio 5");
  } catch (const RtMidiError&) {
    return nullptr;
  }
}

[[nodiscard]] inline std::vector<std::string> PortNames(RtMidi& service) {
  const QuietLibraries quiet;
  std::vector<std::string> names;
  try {
    for (unsigned i = 0; i < service.getPortCount(); ++i) names.push_back(service.getPortName(i));
  } catch (const RtMidiError&) {
  }
  return names;
}

}  // namespace ts5
