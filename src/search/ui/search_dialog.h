// MIDIFINDPARAMS: what the melody searches look for. The first tab is the note editor, the second one says
// how strictly rhythm and pitch must agree, and with what the melody is played.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "search/melody_store.h"
#include "search/note_preview.h"
#include "search/search_parameters.h"
#include "search/ui/keyboard_box.h"
#include "search/ui/melody_sound.h"

class QAbstractButton;
class QLabel;

namespace Ui {
class MIDIFINDPARAMS;
}

namespace ts5 {

class SearchDialog : public HostedDialog {
  Q_OBJECT

 public:
  // filter: ScoreSearch or MidiSearch. The store and the host outlive the dialog. The opener may be called on
  // another thread.
  SearchDialog(SearchKind kind, SearchParameters parameters, MelodyStore& store,
               std::vector<std::string> devices, MidiOpener opener, DialogHost& host, QWidget* parent,
               KeyboardPorts keyboards = SystemKeyboards());
  ~SearchDialog() override;

  // After OK: the melody without rests at its ends, and the options.
  [[nodiscard]] const SearchParameters& Parameters() const { return parameters_; }
  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;
  void done(int result) override;
  // Escape and the window's own close button: asks first when something was changed.
  void reject() override;

 private:
  void AddMelodyRow(KeyboardPorts keyboards);
  void FillOptions();
  void SearchWidely();
  // What the dialog's fields say now, the melody as it stands in the editor.
  [[nodiscard]] SearchParameters Shown() const;
  void ShowOptions();
  void TogglePlaying();
  void SaveMelody();
  void ManageMelodies();
  [[nodiscard]] MelodyVoice Voice() const;
  [[nodiscard]] std::string DeviceName() const;  // of the chosen output; "" for the mapper

  SearchKind kind_;
  SearchParameters parameters_;
  MelodyStore& store_;
  MelodySound sound_;
  NotePreview preview_;
  std::unique_ptr<Ui::MIDIFINDPARAMS> ui_;
  QLabel* searchedFor_ = nullptr;
  SearchParameters opened_;  // as the fields stood when the dialog opened
};

}  // namespace ts5
