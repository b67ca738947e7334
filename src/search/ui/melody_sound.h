// Lets a melody sound from a dialog: opens the chosen device, plays, and says when it is over.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/sound/midi_out.h"
#include "search/melody_player.h"
#include "search/search_melody.h"

namespace ts5 {

// How the dialogs open a device: OpenMidiDevice in the program, something silent in tests.
using MidiOpener = std::function<Result<std::unique_ptr<MidiOutput>>(const std::string& device)>;

// What a melody is played with.
struct MelodyVoice {
  std::int32_t device = kMidiMapper;  // index in the list of devices
  std::int32_t tempo = 120;
  std::int32_t instrument = 0;
};

class MelodySound : public QObject {
  Q_OBJECT

 public:
  MelodySound(std::vector<std::string> devices, MidiOpener opener, QObject* parent);

  [[nodiscard]] const std::vector<std::string>& Devices() const { return devices_; }
  [[nodiscard]] bool Available() const { return !devices_.empty(); }
  // False when the device cannot be opened.
  [[nodiscard]] bool Start(std::span<const MelodyElement> elements, const MelodyVoice& voice);
  void Stop();
  [[nodiscard]] bool Playing() const { return playing_; }

 signals:
  void PlayingChanged(bool playing);
  void DeviceGone();  // the playing ended for it

 private:
  void SetPlaying(bool playing);

  std::vector<std::string> devices_;
  MidiOpener opener_;
  bool playing_ = false;
  int round_ = 0;  // tells the end of the melody that plays from that of one stopped before
  MelodyPlayer player_;
};

}  // namespace ts5
