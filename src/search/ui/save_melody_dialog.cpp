#include "search/ui/save_melody_dialog.h"

#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_SAVEMELODY.h"

namespace ts5 {

SaveMelodyDialog::SaveMelodyDialog(MelodyStore& store, SearchMelody melody, DialogHost& host, QWidget* parent)
    : HostedDialog(host, {}, parent),
      store_(store),
      melody_(std::move(melody)),
      ui_(std::make_unique<Ui::SAVEMELODY>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->nameEdit->setText(ToQt(melody_.name));
  FocusText(ui_->nameEdit);
}

SaveMelodyDialog::~SaveMelodyDialog() = default;

void SaveMelodyDialog::Commit() {
  const MelodyAction action =
      SaveMelodyAs(store_, FromQt(ui_->nameEdit->text()), melody_,
                   [this](TextId question) { return AskYesNo(this, question, DefaultButton::No); });
  if (action.message) ShowWarning(this, *action.message);
  if (action.done) {
    accept();
  } else {
    FocusText(ui_->nameEdit);
  }
}

QString SaveMelodyDialog::HelpTopic() const {
  return QStringLiteral("parm_melodiesuche-speichern.htm");
}

}  // namespace ts5
