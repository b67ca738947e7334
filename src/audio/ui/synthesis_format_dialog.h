// TIMIDITYFORMAT: the format that the synthesis method makes.
#pragma once

#include <memory>

#include "audio/midi_to_wave_parameters.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class TIMIDITYFORMAT;
}

namespace ts5 {

class SynthesisFormatDialog : public HostedDialog {
  Q_OBJECT

 public:
  // A rate that is not offered selects none.
  SynthesisFormatDialog(const WaveNumbers& current, DialogHost& host, QWidget* parent);
  ~SynthesisFormatDialog() override;

  // After OK.
  [[nodiscard]] WaveNumbers Chosen() const;
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  std::unique_ptr<Ui::TIMIDITYFORMAT> ui_;
};

}  // namespace ts5
