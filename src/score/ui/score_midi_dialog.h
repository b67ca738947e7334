// SCOREMIDI: the parameters of the score-to-MIDI converter.
#pragma once

#include <memory>
#include <string>

#include "frame/ui/hosted_dialog.h"
#include "score/score_filter.h"

namespace Ui {
class SCOREMIDI;
}

namespace ts5 {

class ScorePages;

class ScoreMidiDialog : public HostedDialog {
  Q_OBJECT

 public:
  // source: the score whose staves and marks are shown, "" for none. setDirectory: of the parameter sets.
  ScoreMidiDialog(ScoreToMidiParameters parameters, const std::string& source, std::string setDirectory,
                  DialogHost& host, QWidget* parent);
  ~ScoreMidiDialog() override;

  // After OK: what was chosen.
  [[nodiscard]] const ScoreToMidiParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;
  void showEvent(QShowEvent* event) override;

 private:
  void UpdateControls();

  ScoreToMidiParameters parameters_;
  std::unique_ptr<Ui::SCOREMIDI> ui_;
  ScorePages* pages_;
  std::string setFailed_;  // what is said of a set that could not be loaded
};

}  // namespace ts5
