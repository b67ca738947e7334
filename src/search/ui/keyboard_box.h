// The list of MIDI keyboards: opens the chosen one and tells what is played on it. The list is read anew when
// it is opened, so that a keyboard may be plugged in at any time. The first one there is listened to without
// being chosen.
#pragma once

#include <QComboBox>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/sound/midi_in.h"

namespace ts5 {

// The system's ports, or something else in tests.
struct KeyboardPorts {
  std::function<std::vector<std::string>()> list;
  std::function<Result<std::unique_ptr<MidiInput>>(const std::string& device, MidiTaker taker)> open;
};
[[nodiscard]] KeyboardPorts SystemKeyboards();

class KeyboardBox : public QComboBox {
  Q_OBJECT

 public:
  KeyboardBox(KeyboardPorts ports, QWidget* parent);

  void showPopup() override;

 signals:
  void KeyPressed(int key);  // 0..127

 private:
  void Fill();
  void Choose(const QString& device);

  KeyboardPorts ports_;
  QString chosen_;  // "" for none
  std::unique_ptr<MidiInput> input_;
};

}  // namespace ts5
