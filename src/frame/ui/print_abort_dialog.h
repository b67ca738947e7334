// PRINTABORT: the progress of a printing, and the way to end it.
#pragma once

#include <QDialog>
#include <memory>

namespace Ui {
class PRINTABORT;
}

namespace ts5 {

class PrintAbortDialog : public QDialog {
  Q_OBJECT

 public:
  // title: of the window; text: what is being printed.
  PrintAbortDialog(const QString& title, const QString& text, QWidget* parent);
  ~PrintAbortDialog() override;

  // Shows the page at work and lets the user press the button; false once it has been pressed. The dialog
  // appears only when there is more than a glance to wait.
  [[nodiscard]] bool Proceed(int page, int pages);

  void reject() override;

 private:
  bool aborted_ = false;
  std::unique_ptr<Ui::PRINTABORT> ui_;
};

}  // namespace ts5
