#include "app/run/interrupted_runs.h"

#include <QPushButton>

#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

void InterruptedRuns::Offer(const std::vector<std::shared_ptr<RunJournal>>& runs) {
  for (const auto& run : runs) desk_.Queue().Add([this, run] { return MakeQuestion(run); });
}

QDialog* InterruptedRuns::MakeQuestion(const std::shared_ptr<RunJournal>& run) {
  const std::string text = std::string(Text(texts::RunWasInterrupted)) + "\n\n" + InterruptedText(*run) +
                           "\n\n" + std::string(Text(texts::AskGoOnWithRun));
  auto* box = new MessageBox(desk_.Window(), QMessageBox::Question, ToQt(text));
  box->setObjectName("interruptedRun");
  const QPushButton* const goOn = box->addButton(QtText(texts::ButtonGoOn), QMessageBox::AcceptRole);
  QPushButton* const later = box->addButton(QtText(texts::ButtonLater), QMessageBox::RejectRole);
  const QPushButton* const drop = box->addButton(QtText(texts::ButtonDropRun), QMessageBox::DestructiveRole);
  box->setEscapeButton(later);
  connect(box, &QDialog::finished, this, [this, box, run, goOn, drop] {
    if (box->clickedButton() == drop) run->Remove();
    if (box->clickedButton() == goOn) emit GoOn(run);
  });
  return box;
}

}  // namespace ts5
