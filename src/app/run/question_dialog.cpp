#include "app/run/question_dialog.h"

#include <QCoreApplication>
#include <QPointer>
#include <QPushButton>
#include <vector>

#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/results_dialog.h"

namespace ts5 {
namespace {

struct AnswerButton {
  Answer answer;
  QMessageBox::StandardButton button;
  TextId text;
};
std::vector<AnswerButton> ButtonsOf(QuestionButtons buttons) {
  const AnswerButton yes{Answer::Yes, QMessageBox::Yes, texts::ButtonYes};
  const AnswerButton no{Answer::No, QMessageBox::No, texts::ButtonNo};
  const AnswerButton cancel{Answer::Cancelled, QMessageBox::Cancel, texts::ButtonCancel};
  switch (buttons) {
    case QuestionButtons::YesNo:
      return {yes, no};
    case QuestionButtons::YesNoCancel:
      return {yes, no, cancel};
    case QuestionButtons::OkCancel:
      return {{Answer::Yes, QMessageBox::Ok, texts::ButtonOk}, cancel};
  }
  return {yes, no};
}

QDialog* MakeResults(const std::shared_ptr<Question>& question, Desk& desk) {
  auto* dialog = new ResultsDialog(*question->Text().results, false, desk, desk.Window());
  dialog->ShowQuestion(ToQt(question->Text().text));
  QObject::connect(dialog, &QDialog::finished, dialog, [question](int result) {
    question->Reply(result == QDialog::Accepted ? Answer::Yes : Answer::Cancelled);
  });
  return dialog;
}

QDialog* MakeBox(const std::shared_ptr<Question>& question, const Desk& desk) {
  const QuestionText& text = question->Text();
  auto* box = new MessageBox(desk.Window(), BoxIcon(text.icon), ToQt(text.text));
  const auto buttons = ButtonsOf(text.buttons);
  for (const AnswerButton& row : buttons) {
    QPushButton* button = box->addButton(row.button);
    button->setText(QtText(row.text));
    if (row.answer == text.preset) box->setDefaultButton(button);
  }
  box->setEscapeButton(buttons.back().button);
  QObject::connect(box, &QDialog::finished, box, [question, box, buttons] {
    Answer answer = buttons.back().answer;
    for (const AnswerButton& row : buttons) {
      if (box->clickedButton() == box->button(row.button)) answer = row.answer;
    }
    question->Reply(answer);
  });
  return box;
}

}  // namespace

QDialog* MakeQuestionDialog(const std::shared_ptr<Question>& question, Desk& desk) {
  if (question->Withdrawn()) return nullptr;
  QDialog* const dialog = question->Text().results ? MakeResults(question, desk) : MakeBox(question, desk);
  // On the thread of the run: the dialog is closed by a message.
  question->OnWithdrawn([open = QPointer<QDialog>(dialog)] {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [open] {
          if (open != nullptr) open->reject();
        },
        Qt::QueuedConnection);
  });
  return dialog;
}

}  // namespace ts5
