#include "frame/ui/hosted_dialog.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <utility>

namespace ts5 {

HostedDialog::HostedDialog(DialogHost& host, QString prompt, QWidget* parent)
    : QDialog(parent), host_(host), prompt_(std::move(prompt)) {}

void HostedDialog::ConnectButtons() {
  const auto connect = [this](const char* name, auto action) {
    if (auto* button = findChild<QAbstractButton*>(QLatin1String(name))) {
      QObject::connect(button, &QAbstractButton::clicked, this, action);
    }
  };
  connect("okButton", [this] { Commit(); });
  connect("cancelButton", [this] { reject(); });
  connect("helpButton", [this] { host_.OpenHelp(HelpTopic()); });
}

void HostedDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) {
    host_.OpenHelp(HelpTopic());
    return;
  }
  QDialog::keyPressEvent(event);
}

void HostedDialog::showEvent(QShowEvent* event) {
  // The toolkit's first size is at most two thirds of the screen, which would clip wrapped texts of high
  // dialogs on small screens.
  const int needed = layout() != nullptr ? layout()->totalHeightForWidth(width()) : 0;
  if (needed > height()) resize(width(), needed);
  if (!prompt_.isEmpty()) host_.ShowPrompt(prompt_);
  QDialog::showEvent(event);
}

void HostedDialog::hideEvent(QHideEvent* event) {
  if (!prompt_.isEmpty() && !event->spontaneous()) host_.ShowPrompt({});
  QDialog::hideEvent(event);
}

void FocusText(QLineEdit* field) {
  field->setFocus();
  field->selectAll();
}

}  // namespace ts5
