// WAVECONVERTPARAMS: the target format of the wave converter.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/media_probe.h"
#include "audio/wave_converter.h"
#include "frame/job.h"
#include "frame/ui/hosted_dialog.h"

namespace Ui {
class WAVECONVERTPARAMS;
}

namespace ts5 {

class WaveConvertDialog : public HostedDialog {
  Q_OBJECT

 public:
  // source: what the first file of the job is; of the kind None where there is none. single: it is the only
  // one, so that a target of its own format is refused.
  WaveConvertDialog(WaveConverterParameters parameters, MediaProbe source, bool single, DialogHost& host,
                    QWidget* parent);
  ~WaveConvertDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const WaveConverterParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  void ShowSource();
  void FillFormats();

  WaveConverterParameters parameters_;
  MediaProbe source_;
  bool single_;
  std::vector<WaveFormat> formats_;  // as they stand in the list
  std::unique_ptr<Ui::WAVECONVERTPARAMS> ui_;
};

// Edits the parameters of a job with these files. False: left with "Abbrechen", or the first file is none
// that can be converted, which is said.
bool EditWaveConverter(WaveConverterParameters& parameters, const Job& job, DialogHost& host, QWidget* owner);

}  // namespace ts5
