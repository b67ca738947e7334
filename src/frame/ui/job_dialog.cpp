#include "frame/ui/job_dialog.h"

#include <utility>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_CREATEJOB.h"

namespace ts5 {

JobDialog::JobDialog(Purpose purpose, JobNames preset, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::CreateJobStatus), parent),
      purpose_(purpose),
      preset_(std::move(preset)),
      ui_(std::make_unique<Ui::CREATEJOB>()) {
  ui_->setupUi(this);
  ConnectButtons();
  if (purpose_ == Purpose::Rename) {
    setWindowTitle(QtText(texts::RenameJobCaption));
    ui_->titlePrompt->setText(QtText(texts::RenameJobPrompt));
  }
  ui_->titleEdit->setText(ToQt(preset_.title));
  ui_->descriptionEdit->setText(ToQt(preset_.description));
  FocusText(ui_->titleEdit);
}

JobDialog::~JobDialog() = default;

JobNames JobDialog::Names() const {
  const auto typed = [](const QLineEdit* field, const std::string& preset) {
    const QString text = field->text().trimmed();
    return text.isEmpty() ? preset : FromQt(text);
  };
  return {typed(ui_->titleEdit, preset_.title), typed(ui_->descriptionEdit, preset_.description)};
}

QString JobDialog::HelpTopic() const {
  return purpose_ == Purpose::Create ? QStringLiteral("Befehle-Job-Neu.htm")
                                     : QStringLiteral("Befehle-Job-Umbenennen.htm");
}

}  // namespace ts5
