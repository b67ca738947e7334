// MIDICONVERT: the parameters of the MIDI converter.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "frame/job.h"
#include "frame/ui/hosted_dialog.h"
#include "midi/converter_fields.h"
#include "midi/midi_file.h"

namespace Ui {
class MIDICONVERT;
}

namespace ts5 {

class MidiConvertDialog : public HostedDialog {
  Q_OBJECT

 public:
  // source: the selected or first file of the list, whose time base is shown and whose container names the
  // choices; "" when there is none.
  MidiConvertDialog(ConverterParameters parameters, std::string source, DialogHost& host, QWidget* parent);
  ~MidiConvertDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const ConverterParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;
  void showEvent(QShowEvent* event) override;

 private:
  void ReadSource();
  void TakeControls();
  void UpdateControls();
  void EditAttributes();

  ConverterParameters parameters_;
  std::string source_;
  std::optional<MidiContainer> container_;
  bool sourceFailed_ = false;
  std::unique_ptr<Ui::MIDICONVERT> ui_;
};

}  // namespace ts5
