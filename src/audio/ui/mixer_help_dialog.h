// ASKDIALOG: helps the user to find the recording sum when the mixer could not be set by itself.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "frame/settings.h"
#include "frame/ui/hosted_dialog.h"
#include "platform/base/strings.h"

namespace Ui {
class ASKDIALOG;
}

namespace ts5 {

class MixerHelpDialog : public HostedDialog {
  Q_OBJECT

 public:
  // sum: the name that was not found.
  MixerHelpDialog(TextId problem, const std::string& sum, DialogHost& host, QWidget* parent);
  ~MixerHelpDialog() override;

  [[nodiscard]] std::string Sum() const;
  [[nodiscard]] bool NotAgain() const;
  [[nodiscard]] QString HelpTopic() const override;

 private:
  std::unique_ptr<Ui::ASKDIALOG> ui_;
};

// Starts the desktop's mixer, or says that there is none.
void OpenMixerProgram(QWidget* owner);

// Before a recording with the automatic mixer setting: where its sum is not among the inputs, the user is
// helped, and what he enters goes into the settings. False when he cancels.
[[nodiscard]] bool PrepareMixer(const MidiToWaveParameters& parameters,
                                const std::vector<std::string>& inputs, Settings& settings, DialogHost& host,
                                QWidget* owner);

}  // namespace ts5
