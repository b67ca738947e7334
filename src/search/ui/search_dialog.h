// MIDIFINDPARAMS: what the melody searches look for. The first tab is the note editor, the second one says
// how strictly rhythm and pitch must agree, and with what the melody is played.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "search/melody_store.h"
#include "search/search_parameters.h"
#include "search/ui/melody_sound.h"

class QAbstractButton;

namespace Ui {
class MIDIFINDPARAMS;
}

namespace ts5 {

class SearchDialog : public HostedDialog {
  Q_OBJECT

 public:
  // filter: ScoreSearch or MidiSearch. The store and the host outlive the dialog.
  SearchDialog(FilterId filter, SearchParameters parameters, MelodyStore& store,
               std::vector<std::string> devices, MidiOpener opener, DialogHost& host, QWidget* parent);
  ~SearchDialog() override;

  // After OK: the melody without rests at its ends, and the options.
  [[nodiscard]] const SearchParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;
  void done(int result) override;

 private:
  void FillOptions();
  void ShowOptions();
  void TogglePlaying();
  void SaveMelody();
  void ManageMelodies();
  [[nodiscard]] MelodyVoice Voice() const;

  FilterId filter_;
  SearchParameters parameters_;
  MelodyStore& store_;
  MelodySound sound_;
  std::unique_ptr<Ui::MIDIFINDPARAMS> ui_;
};

}  // namespace ts5
