#include "frame/ui/print_abort_dialog.h"

#include <QCoreApplication>

#include "ui_PRINTABORT.h"

namespace ts5 {
namespace {

constexpr int kPagesAtAGlance = 20;

}  // namespace

PrintAbortDialog::PrintAbortDialog(const QString& title, const QString& text, QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::PRINTABORT>()) {
  ui_->setupUi(this);
  setWindowTitle(title);
  ui_->statusLabel->setText(text);
  setModal(true);
  connect(ui_->cancelButton, &QPushButton::clicked, this, &PrintAbortDialog::reject);
}

PrintAbortDialog::~PrintAbortDialog() = default;

bool PrintAbortDialog::Proceed(int page, int pages) {
  if (page > kPagesAtAGlance && !isVisible() && !aborted_) show();
  ui_->progressBar->setRange(0, pages);
  ui_->progressBar->setValue(page);
  // Until it is there to keep the user from other windows, only what is drawn goes on.
  QCoreApplication::processEvents(isVisible() ? QEventLoop::AllEvents : QEventLoop::ExcludeUserInputEvents);
  return !aborted_;
}

void PrintAbortDialog::reject() {
  aborted_ = true;
  QDialog::reject();
}

}  // namespace ts5
