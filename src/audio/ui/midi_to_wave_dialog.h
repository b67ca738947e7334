// MIDWAVPARAMS: the parameters of the MIDI-to-wave conversion, on the pages MIDWAVPARAMS_1 and
// MIDWAVPARAMS_2.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class MIDWAVPARAMS;
}

namespace ts5 {

class MidiToWaveDialog : public HostedDialog {
  Q_OBJECT

 public:
  MidiToWaveDialog(MidiToWaveParameters parameters, const std::vector<std::string>& midiOutputs,
                   const std::vector<std::string>& audioInputs, DialogHost& host, QWidget* parent);
  ~MidiToWaveDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const MidiToWaveParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void ShowParameters();
  void UpdateControls();
  void OpenMixer();

  MidiToWaveParameters parameters_;
  std::unique_ptr<Ui::MIDWAVPARAMS> ui_;
};

}  // namespace ts5
