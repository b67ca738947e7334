// MIDWAVPARAMS: the parameters of the MIDI-to-wave conversion, on the pages MIDWAVPARAMS_1 and
// MIDWAVPARAMS_2.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class MIDWAVPARAMS;
}

namespace ts5 {

class NormaliseBox;

// What the window offers.
struct MidiToWaveDevices {
  std::vector<std::string> midiOutputs;
  std::vector<std::string> audioInputs;
  // In which formats an input can record.
  std::function<std::vector<WaveNumbers>(const std::string& input)> formatsOf;
};

class MidiToWaveDialog : public HostedDialog {
  Q_OBJECT

 public:
  MidiToWaveDialog(MidiToWaveParameters parameters, MidiToWaveDevices devices, DialogHost& host,
                   QWidget* parent);
  ~MidiToWaveDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const MidiToWaveParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void ShowParameters();
  void UpdateControls();
  void ChooseRecordingFormat();
  void ChooseSynthesisFormat();
  [[nodiscard]] std::int32_t WaveDevice() const;

  MidiToWaveParameters parameters_;
  MidiToWaveDevices devices_;
  NormaliseBox* normalise_;
  std::unique_ptr<Ui::MIDWAVPARAMS> ui_;
};

}  // namespace ts5
