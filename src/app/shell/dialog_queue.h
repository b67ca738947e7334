// Dialogs that come of themselves, such as the questions and results of runs: shown one after the other, over
// the window, without a loop of their own, so that the program goes on behind them.
#pragma once

#include <QDialog>
#include <QObject>
#include <QPointer>
#include <deque>
#include <functional>

namespace ts5 {

class DialogQueue : public QObject {
 public:
  explicit DialogQueue(QObject* parent) : QObject(parent) {}

  // make is called when the dialog's turn has come and may return null to be skipped; the dialog is deleted
  // after it is closed.
  void Add(std::function<QDialog*()> make);
  [[nodiscard]] QDialog* Current() const { return current_; }
  // Closes what is open and forgets the rest.
  void Clear();

 private:
  void ShowNext();

  std::deque<std::function<QDialog*()>> waiting_;
  QPointer<QDialog> current_;
};

}  // namespace ts5
