#include "app/shell/desk.h"

#include <QStatusBar>

#include "app/shell/help_window.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

QMessageBox::Icon BoxIcon(MessageIcon icon) {
  switch (icon) {
    case MessageIcon::Information:
      return QMessageBox::Information;
    case MessageIcon::Question:
      return QMessageBox::Question;
    case MessageIcon::Exclamation:
      break;
  }
  return QMessageBox::Warning;
}

Desk::Desk(QMainWindow& window)
    : QObject(&window),
      window_(&window),
      actions_(new CommandActions(&window)),
      prompt_(new QLabel(QtText(texts::StatusReady), &window)),
      queue_(this) {
  prompt_->setObjectName("status");
  prompt_->setTextFormat(Qt::PlainText);
  window.statusBar()->addWidget(prompt_, 1);
  window.statusBar()->setSizeGripEnabled(true);
}

Desk::~Desk() = default;

bool Desk::Confirm(std::string_view question, MessageIcon /*icon*/, Answer preset) {
  return AskYesNo(window_, ToQt(question), preset == Answer::Yes ? DefaultButton::Yes : DefaultButton::No);
}

void Desk::Tell(std::string_view text, MessageIcon icon) {
  icon == MessageIcon::Information ? ShowNotice(window_, ToQt(text)) : ShowWarning(window_, ToQt(text));
}

void Desk::TellLater(std::string_view text, MessageIcon icon) {
  queue_.Add([this, text = ToQt(text), icon]() -> QDialog* {
    return new MessageBox(window_, BoxIcon(icon), text, QMessageBox::Ok);
  });
}

void Desk::OpenHelp(const QString& topic) {
  if (help_ == nullptr) help_ = std::make_unique<HelpWindow>();
  help_->OpenTopic(topic);
}

void Desk::ShowPrompt(const QString& prompt) {
  prompt_->setText(prompt.isEmpty() ? QtText(texts::StatusReady) : prompt);
}

void Desk::ShowHint(const QString& hint, int milliseconds) {
  hint.isEmpty() ? window_->statusBar()->clearMessage()
                 : window_->statusBar()->showMessage(hint, milliseconds);
}

void Desk::Close() {
  help_.reset();
  actions_->Close();
  queue_.Clear();
}

}  // namespace ts5
