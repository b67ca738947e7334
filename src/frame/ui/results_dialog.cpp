#include "frame/ui/results_dialog.h"

#include <array>

#include "frame/ui/qt_text.h"
#include "ui_RESULTS.h"

namespace ts5 {

ResultsDialog::ResultsDialog(const RunResult& result, DialogHost& host, QWidget* parent)
    : HostedDialog(host, {}, parent), ui_(std::make_unique<Ui::RESULTS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(result.title));

  const std::array<QLabel*, 4> labels{ui_->line1Label, ui_->line2Label, ui_->line3Label, ui_->line4Label};
  const std::array<QLineEdit*, 4> counts{ui_->line1Count, ui_->line2Count, ui_->line3Count, ui_->line4Count};
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const RunLine& line = result.lines.at(i);
    labels.at(i)->setText(ToQt(line.label));
    labels.at(i)->setVisible(!line.label.empty());
    counts.at(i)->setText(QString::number(line.count));
    counts.at(i)->setAccessibleName(ToQt(line.label));
    counts.at(i)->setVisible(!line.label.empty());
  }
  ui_->remarks->setPlainText(ToQt(RemarksText(result)));
  ui_->cancelButton->setVisible(result.cancelButton);
  ui_->okButton->setFocus();
}

ResultsDialog::~ResultsDialog() = default;

QString ResultsDialog::HelpTopic() const {
  return QStringLiteral("Befehle-aktion-ausführen-ergebnisse.htm");
}

}  // namespace ts5
