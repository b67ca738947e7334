// WAVEFORMAT: the format in which an audio input device records.
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class WAVEFORMAT;
}

namespace ts5 {

class WaveFormatDialog : public HostedDialog {
  Q_OBJECT

 public:
  // formats: what the device can do.
  WaveFormatDialog(std::vector<WaveNumbers> formats, std::optional<WaveNumbers> current, DialogHost& host,
                   QWidget* parent);
  ~WaveFormatDialog() override;

  // After OK.
  [[nodiscard]] WaveNumbers Chosen() const { return chosen_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  std::vector<WaveNumbers> formats_;
  WaveNumbers chosen_{};
  std::unique_ptr<Ui::WAVEFORMAT> ui_;
};

}  // namespace ts5
