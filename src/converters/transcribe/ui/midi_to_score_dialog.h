// MIDSTV: how the score of a MIDI file looks.
#pragma once

#include <memory>

#include "converters/transcribe/midi_to_score.h"
#include "frame/ui/hosted_dialog.h"

class QSpinBox;
namespace Ui {
class MIDSTV;
}

namespace ts5::transcribe {

class MidiToScoreDialog : public HostedDialog {
  Q_OBJECT

 public:
  MidiToScoreDialog(MidiToScoreParameters parameters, DialogHost& host, QWidget* parent);
  ~MidiToScoreDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const MidiToScoreParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  // A number outside its range is told of, and nothing is taken.
  void Commit() override;

 private:
  [[nodiscard]] QSpinBox* BoxOf(const NumberRange& number) const;

  MidiToScoreParameters parameters_;
  std::unique_ptr<Ui::MIDSTV> ui_;
};

}  // namespace ts5::transcribe
