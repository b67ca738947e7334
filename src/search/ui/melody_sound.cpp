#include "search/ui/melody_sound.h"

#include <algorithm>
#include <utility>

namespace ts5 {

MelodySound::MelodySound(std::vector<std::string> devices, MidiOpener opener, QObject* parent)
    : QObject(parent), devices_(std::move(devices)), opener_(std::move(opener)) {}

bool MelodySound::Start(std::span<const MelodyElement> elements, const MelodyVoice& voice) {
  Stop();
  const auto index = static_cast<std::size_t>(voice.device);
  const std::string name = voice.device >= 0 && index < devices_.size() ? devices_[index] : std::string{};
  auto device = opener_(name);
  if (!device) return false;
  const int round = ++round_;
  const auto program = static_cast<std::uint8_t>(std::clamp(voice.instrument, 0, 127));
  player_.Start(elements, *std::move(device), voice.tempo, program, [this, round](Outcome outcome) {
    QMetaObject::invokeMethod(
        this,
        [this, round, outcome] {
          if (round != round_) return;
          SetPlaying(false);
          if (Failed(outcome)) emit DeviceGone();
        },
        Qt::QueuedConnection);
  });
  SetPlaying(true);
  return true;
}

void MelodySound::Stop() {
  ++round_;
  player_.Stop();
  SetPlaying(false);
}

void MelodySound::SetPlaying(bool playing) {
  if (std::exchange(playing_, playing) != playing) emit PlayingChanged(playing);
}

}  // namespace ts5
