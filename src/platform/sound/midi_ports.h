// The MIDI ports of the system, of either direction: Port is RtMidiIn or RtMidiOut. For this folder only.
#pragma once

#include <rtmidi/RtMidi.h>

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/base/quiet.h"

namespace ts5 {

inline constexpr std::string_view kMidiClient = "Stavora Tonstudio 5";

// The service of the system that has ports, else one that could have some: a machine may lack one kind and
// have another. Nothing where there is none at all.
template <typename Port>
[[nodiscard]] std::unique_ptr<Port> MidiService() {
  const QuietLibraries quiet;
  std::vector<RtMidi::Api> kinds;
  RtMidi::getCompiledApi(kinds);
  std::unique_ptr<Port> found;
  for (const RtMidi::Api kind : kinds) {
    try {
      auto service = std::make_unique<Port>(kind, std::string(kMidiClient));
      const bool hasPorts = service->getPortCount() > 0;
      if (hasPorts || !found) found = std::move(service);
      if (hasPorts) break;
    } catch (const RtMidiError&) {
    }
  }
  return found;
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

// What this program has opened itself would only hear its own notes.
[[nodiscard]] inline bool IsOwnPort(std::string_view name) {
  return name.starts_with(kMidiClient);
}

}  // namespace ts5
