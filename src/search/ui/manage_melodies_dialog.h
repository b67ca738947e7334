// MANAGEMELODIES: the stored melodies, to be renamed, deleted, played and taken into the editor.
#pragma once

#include <memory>
#include <vector>

#include "frame/ui/hosted_dialog.h"
#include "search/melody_store.h"
#include "search/ui/melody_sound.h"

namespace Ui {
class MANAGEMELODIES;
}

namespace ts5 {

class MelodyListModel;

class ManageMelodiesDialog : public HostedDialog {
  Q_OBJECT

 public:
  // current: the editor's melody, which "Laden" replaces. Everything outlives the dialog.
  ManageMelodiesDialog(MelodyStore& store, SearchMelody current, MelodySound& sound, const MelodyVoice& voice,
                       DialogHost& host, QWidget* parent);
  ~ManageMelodiesDialog() override;

  [[nodiscard]] bool Loaded() const { return loaded_; }
  [[nodiscard]] const SearchMelody& Melody() const { return melody_; }
  [[nodiscard]] QString HelpTopic() const override;

 private:
  void Refill(const std::string& select);
  void Rename(const std::string& from, const std::string& to);
  void Delete();
  void Load();
  void TogglePlaying();
  void ShowState();
  [[nodiscard]] std::string Selected() const;  // "" when nothing is

  MelodyStore& store_;
  SearchMelody melody_;
  bool loaded_ = false;
  MelodySound& sound_;
  MelodyVoice voice_;
  std::unique_ptr<MelodyListModel> model_;
  std::unique_ptr<Ui::MANAGEMELODIES> ui_;
};

}  // namespace ts5
