// The message boxes of the system: all bear the application's title, and each kind has its icon.
#pragma once

#include <QMessageBox>
#include <QString>

#include "platform/base/strings.h"

namespace ts5 {

enum class DefaultButton { Yes, No };

// The box itself, for those with buttons of their own: the text stands as it is, its lines whole.
class MessageBox : public QMessageBox {
 public:
  MessageBox(QWidget* owner, Icon icon, const QString& text, StandardButtons buttons = NoButton);

 protected:
  void showEvent(QShowEvent* event) override;
};

// Something that failed (exclamation icon).
void ShowWarning(QWidget* owner, const QString& text);
void ShowWarning(QWidget* owner, TextId text);
// Something to know (information icon).
void ShowNotice(QWidget* owner, const QString& text);
void ShowNotice(QWidget* owner, TextId text);
// A question; Esc and closing the box answer No.
[[nodiscard]] bool AskYesNo(QWidget* owner, const QString& text, DefaultButton preset = DefaultButton::Yes);
[[nodiscard]] bool AskYesNo(QWidget* owner, TextId text, DefaultButton preset = DefaultButton::Yes);

}  // namespace ts5
