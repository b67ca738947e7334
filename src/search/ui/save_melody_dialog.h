// SAVEMELODY: gives a melody its name in the store.
#pragma once

#include <memory>

#include "frame/ui/hosted_dialog.h"
#include "search/melody_store.h"

namespace Ui {
class SAVEMELODY;
}

namespace ts5 {

class SaveMelodyDialog : public HostedDialog {
  Q_OBJECT

 public:
  SaveMelodyDialog(MelodyStore& store, SearchMelody melody, DialogHost& host, QWidget* parent);
  ~SaveMelodyDialog() override;

  [[nodiscard]] QString HelpTopic() const override;

 protected:
  void Commit() override;

 private:
  MelodyStore& store_;
  SearchMelody melody_;
  std::unique_ptr<Ui::SAVEMELODY> ui_;
};

}  // namespace ts5
