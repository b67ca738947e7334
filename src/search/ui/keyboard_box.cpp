#include "search/ui/keyboard_box.h"

#include <QSignalBlocker>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kNoteOn = 0x90;

}  // namespace

KeyboardPorts SystemKeyboards() {
  return {MidiInputDevices,
          [](const std::string& device, MidiTaker taker) { return OpenMidiInput(device, std::move(taker)); }};
}

KeyboardBox::KeyboardBox(KeyboardPorts ports, QWidget* parent) : QComboBox(parent), ports_(std::move(ports)) {
  setSizeAdjustPolicy(QComboBox::AdjustToContents);
  for (const std::string& device : ports_.list()) {
    if (IsThroughPort(device)) continue;
    chosen_ = ToQt(device);
    break;
  }
  Fill();
  if (!chosen_.isEmpty()) Choose(chosen_);
  connect(this, &QComboBox::activated, this, [this](int index) {
    const QString device = itemData(index).toString();
    if (device != chosen_ || (!device.isEmpty() && !input_)) Choose(device);
    if (!device.isEmpty() && !input_) ShowWarning(window(), texts::NoteKeyboardFailed);
  });
}

void KeyboardBox::Fill() {
  const QSignalBlocker quiet(this);
  clear();
  addItem(QtText(texts::NoteKeyboardNone), QString());
  for (const std::string& device : ports_.list()) addItem(ToQt(device), ToQt(device));
  setCurrentIndex(std::max(findData(chosen_), 0));
}

void KeyboardBox::Choose(const QString& device) {
  input_.reset();
  chosen_ = device;
  if (device.isEmpty()) return;
  auto input = ports_.open(FromQt(device), [this](std::uint32_t message) {
    if ((message & 0xF0) != kNoteOn || (message >> 16 & 0x7F) == 0) return;
    const auto key = static_cast<int>(message >> 8 & 0x7F);
    QMetaObject::invokeMethod(
        this, [this, key] { emit KeyPressed(key); }, Qt::QueuedConnection);
  });
  if (input) input_ = *std::move(input);
}

void KeyboardBox::showPopup() {
  Fill();
  QComboBox::showPopup();
}

}  // namespace ts5
