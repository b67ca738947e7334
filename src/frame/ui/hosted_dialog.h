// The manners that all dialogs share: a prompt in the status bar while they are open, help under F1 and the
// button "Hilfe", OK and "Abbrechen".
#pragma once

#include <QDialog>
#include <QString>

#include "frame/ui/dialog_host.h"

class QAbstractButton;
class QHideEvent;
class QLineEdit;
class QShowEvent;

namespace ts5 {

class HostedDialog : public QDialog {
  Q_OBJECT

 public:
  // The host outlives the dialog.
  HostedDialog(DialogHost& host, QString prompt, QWidget* parent);

  // The topic that the help button opens now.
  [[nodiscard]] virtual QString HelpTopic() const = 0;

 protected:
  // Connects the buttons of the template, known by their names: okButton, cancelButton, helpButton.
  void ConnectButtons();
  // OK: accepts; a dialog with something to check overrides it.
  virtual void Commit() { accept(); }

  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

  [[nodiscard]] DialogHost& Host() const { return host_; }

 private:
  DialogHost& host_;
  [[nodiscard]] QSize Room() const;  // on the screen
  [[nodiscard]] int LeastHeight() const;
  void StayWhole();

  QString prompt_;
  int width_ = 0;  // when it was shown
};

// Puts the focus into a field and selects its text, for the user to correct it.
void FocusText(QLineEdit* field);

}  // namespace ts5
