#include "app/shell/dialog_queue.h"

#include <QDialog>

namespace ts5 {

void DialogQueue::Add(std::function<QDialog*()> make) {
  waiting_.push_back(std::move(make));
  ShowNext();
}

void DialogQueue::ShowNext() {
  while (current_ == nullptr && !waiting_.empty()) {
    const auto make = std::move(waiting_.front());
    waiting_.pop_front();
    current_ = make();
    if (current_ == nullptr) continue;
    QDialog* dialog = current_;
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    connect(dialog, &QDialog::finished, this, [this, dialog] {
      if (current_ == dialog) current_ = nullptr;
      dialog->deleteLater();
      // Not from inside the dialog's own signal: what listens to it comes first.
      QMetaObject::invokeMethod(
          this, [this] { ShowNext(); }, Qt::QueuedConnection);
    });
    dialog->open();
  }
}

void DialogQueue::Clear() {
  waiting_.clear();
  if (current_ != nullptr) current_->reject();
}

}  // namespace ts5
