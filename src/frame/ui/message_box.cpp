#include "frame/ui/message_box.h"

#include <QAbstractButton>
#include <QLabel>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

// Yes and No in German, whatever translation of the toolkit is installed.
void LabelButtons(QMessageBox& box) {
  if (QAbstractButton* yes = box.button(QMessageBox::Yes)) yes->setText(QtText(texts::ButtonYes));
  if (QAbstractButton* no = box.button(QMessageBox::No)) no->setText(QtText(texts::ButtonNo));
}

// Lines that the text has itself are not broken again: the toolkit gives a text 500 dots at most.
void WidenForLines(QMessageBox& box) {
  constexpr int kWidest = 660;
  auto* const label = box.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
  if (label == nullptr) return;
  const int lines = label->fontMetrics().size(0, box.text()).width();
  if (lines <= kWidest) label->setMinimumWidth(lines);
}

void Show(QWidget* owner, QMessageBox::Icon icon, const QString& text) {
  MessageBox(owner, icon, text, QMessageBox::Ok).exec();
}

}  // namespace

MessageBox::MessageBox(QWidget* owner, Icon icon, const QString& text, StandardButtons buttons)
    : QMessageBox(icon, QtText(texts::ApplicationTitle), text, buttons, owner) {
  setTextFormat(Qt::PlainText);
  LabelButtons(*this);
  WidenForLines(*this);
}

// The toolkit squeezes many buttons into its usual width.
void MessageBox::showEvent(QShowEvent* event) {
  for (QAbstractButton* const button : buttons()) button->setMinimumWidth(button->minimumSizeHint().width());
  QMessageBox::showEvent(event);
}

void ShowWarning(QWidget* owner, const QString& text) {
  Show(owner, QMessageBox::Warning, text);
}
void ShowWarning(QWidget* owner, TextId text) {
  ShowWarning(owner, QtText(text));
}
void ShowNotice(QWidget* owner, const QString& text) {
  Show(owner, QMessageBox::Information, text);
}
void ShowNotice(QWidget* owner, TextId text) {
  ShowNotice(owner, QtText(text));
}

bool AskYesNo(QWidget* owner, const QString& text, DefaultButton preset) {
  MessageBox box(owner, QMessageBox::Question, text, QMessageBox::Yes | QMessageBox::No);
  box.setDefaultButton(preset == DefaultButton::Yes ? QMessageBox::Yes : QMessageBox::No);
  box.setEscapeButton(QMessageBox::No);
  return box.exec() == QMessageBox::Yes;
}
bool AskYesNo(QWidget* owner, TextId text, DefaultButton preset) {
  return AskYesNo(owner, QtText(text), preset);
}

}  // namespace ts5
