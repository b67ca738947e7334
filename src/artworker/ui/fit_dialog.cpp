#include "artworker/ui/fit_dialog.h"

#include <cmath>

#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTFIT.h"

namespace ts5::artworker {
namespace {

constexpr double kTenths = 10;
constexpr double kHundredths = 100;

std::int32_t Stored(const QDoubleSpinBox& box, double unit) {
  return static_cast<std::int32_t>(std::lround(box.value() * unit));
}

}  // namespace

FitDialog::FitDialog(const std::string& printer, const PrinterFit& fit, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::FitPrompt), parent),
      printedWith_(fit),
      ui_(std::make_unique<Ui::ARTFIT>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->printerLabel->setText(ToQt(printer));
  const CalibrationReading exact;
  ui_->leftBox->setValue(exact.left);
  ui_->topBox->setValue(exact.top);
  ui_->acrossLineBox->setValue(exact.across);
  ui_->alongLineBox->setValue(exact.along);
  connect(ui_->computeButton, &QAbstractButton::clicked, this, [this] { Compute(); });
  Show(fit);
}

FitDialog::~FitDialog() = default;

QString FitDialog::HelpTopic() const {
  return kHelpPrinting;
}

PrinterFit FitDialog::Chosen() const {
  return {.right = Stored(*ui_->rightBox, kTenths),
          .down = Stored(*ui_->downBox, kTenths),
          .across = Stored(*ui_->acrossBox, kHundredths),
          .along = Stored(*ui_->alongBox, kHundredths)};
}

void FitDialog::Show(const PrinterFit& fit) {
  ui_->rightBox->setValue(fit.right / kTenths);
  ui_->downBox->setValue(fit.down / kTenths);
  ui_->acrossBox->setValue(fit.across / kHundredths);
  ui_->alongBox->setValue(fit.along / kHundredths);
}

void FitDialog::Compute() {
  const auto fit = FitFrom({.left = ui_->leftBox->value(),
                            .top = ui_->topBox->value(),
                            .across = ui_->acrossLineBox->value(),
                            .along = ui_->alongLineBox->value()},
                           printedWith_);
  if (!fit) return ShowWarning(this, texts::FitNotPossible);
  Show(*fit);
}

}  // namespace ts5::artworker
