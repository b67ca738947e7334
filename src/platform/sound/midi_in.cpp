#include "platform/sound/midi_in.h"

#include <rtmidi/RtMidi.h>

#include <algorithm>
#include <utility>

#include "platform/base/quiet.h"
#include "platform/sound/midi_ports.h"

namespace ts5 {
namespace {

void IgnoreMidiMessage(RtMidiError::Type /*type*/, const std::string& /*text*/, void* /*data*/) {}

// Nothing where the system has no MIDI service at all.
std::unique_ptr<RtMidiIn> QuietService() {
  auto service = MidiService<RtMidiIn>();
  if (service) service->setErrorCallback(&IgnoreMidiMessage, nullptr);
  return service;
}

class PortInput final : public MidiInput {
 public:
  PortInput(std::unique_ptr<RtMidiIn> port, MidiTaker taker)
      : taker_(std::move(taker)), port_(std::move(port)) {
    port_->setCallback(&Take, this);
  }
  ~PortInput() override { port_->cancelCallback(); }

 private:
  static void Take(double /*delta*/, std::vector<unsigned char>* bytes, void* self) {
    if (bytes == nullptr || bytes->empty() || bytes->front() < 0x80 || bytes->front() >= 0xF0) return;
    std::uint32_t message = 0;
    for (std::size_t i = 0; i < std::min<std::size_t>(bytes->size(), 3); ++i)
      message |= std::uint32_t{(*bytes)[i]} << (8 * i);
    static_cast<PortInput*>(self)->taker_(message);
  }

  MidiTaker taker_;
  std::unique_ptr<RtMidiIn> port_;  // dies first: it calls the taker
};

}  // namespace

std::vector<std::string> MidiInputDevices() {
  const auto service = QuietService();
  auto names = service ? PortNames(*service) : std::vector<std::string>{};
  std::erase_if(names, IsOwnPort);
  return names;
}

Result<std::unique_ptr<MidiInput>> OpenMidiInput(std::string_view device, MidiTaker taker) {
  auto service = QuietService();
  if (!service) return Failure(Outcome::SourceFailed);
  const auto names = PortNames(*service);
  const auto found = std::ranges::find(names, device);
  if (found == names.end()) return Failure(Outcome::SourceFailed);
  try {
    const QuietLibraries quiet;
    service->openPort(static_cast<unsigned>(found - names.begin()), std::string(device));
  } catch (const RtMidiError&) {
    return Failure(Outcome::SourceFailed);
  }
  if (!service->isPortOpen()) return Failure(Outcome::SourceFailed);
  return std::make_unique<PortInput>(std::move(service), std::move(taker));
}

bool IsThroughPort(std::string_view device) {
  return device.find("Midi Through") != std::string_view::npos;
}

}  // namespace ts5
