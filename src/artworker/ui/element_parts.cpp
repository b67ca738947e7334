#include "artworker/ui/element_parts.h"

#include <algorithm>
#include <cmath>

#include "artworker/texts.h"
#include "artworker/ui/background_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTBORDER.h"
#include "ui_ARTFILL.h"

namespace ts5::artworker {
namespace {

constexpr double kTenths = 10;  // in a millimetre

std::int32_t TenthsOf(const QDoubleSpinBox* box) {
  return static_cast<std::int32_t>(std::lround(box->value() * kTenths));
}

}  // namespace

BorderBox::BorderBox(const ArtworkElement& element, bool corners, QWidget* parent)
    : QGroupBox(parent), ui_(std::make_unique<Ui::ARTBORDER>()) {
  ui_->setupUi(this);
  setTitle(QtText(texts::BorderTitle));
  ui_->widthBox->setValue(element.borderWidth / kTenths);
  ui_->gapBox->setValue(element.borderGap / kTenths);
  ui_->colourButton->SetColour(static_cast<std::uint32_t>(element.borderColour));
  ui_->roundCheck->setChecked(element.roundCorners);
  ui_->roundCheck->setVisible(corners);
}

BorderBox::~BorderBox() = default;

void BorderBox::Take(ArtworkElement& element) const {
  element.borderWidth = TenthsOf(ui_->widthBox);
  element.borderGap = TenthsOf(ui_->gapBox);
  element.borderColour = static_cast<std::int32_t>(ui_->colourButton->Colour());
  element.roundCorners = ui_->roundCheck->isChecked();
}

FillBox::FillBox(const Fill& fill, First first, BackgroundList& backgrounds, DialogHost& host,
                 QWidget* parent)
    : QGroupBox(parent),
      first_(first),
      backgrounds_(backgrounds),
      host_(host),
      ui_(std::make_unique<Ui::ARTFILL>()) {
  ui_->setupUi(this);
  setTitle(QtText(texts::FillTitle));
  setFocusProxy(ui_->transparencyBox);
  ui_->transparencyBox->setValue(fill.transparency);
  ui_->backgroundBox->setIconSize(kBackgroundSwatch);
  connect(ui_->backgroundBox, &QComboBox::currentIndexChanged, this, [this] { OfferDelete(); });
  Refill(fill.background);
  connect(ui_->newButton, &QAbstractButton::clicked, this, [this] { AddNew(); });
  connect(ui_->deleteButton, &QAbstractButton::clicked, this, [this] { DeleteChosen(); });
}

FillBox::~FillBox() = default;

Fill FillBox::Chosen() const {
  return {.transparency = ui_->transparencyBox->value(),
          .background = std::max(0, ui_->backgroundBox->currentIndex())};
}

void FillBox::Refill(int chosen) {
  ui_->backgroundBox->clear();
  for (const ArtworkBackground& background : backgrounds_.All())
    ui_->backgroundBox->addItem(BackgroundIcon(background), ToQt(background.name));
  if (first_ == First::None) {
    ui_->backgroundBox->setItemIcon(kNoGround, {});
    ui_->backgroundBox->setItemText(kNoGround, QtText(texts::NoGround));
  }
  ui_->backgroundBox->setCurrentIndex(chosen < ui_->backgroundBox->count() ? chosen : 0);
  OfferDelete();
}

void FillBox::OfferDelete() {
  const bool none = first_ == First::None && ui_->backgroundBox->currentIndex() == kNoGround;
  ui_->deleteButton->setEnabled(ui_->backgroundBox->count() > 1 && !none);
}

void FillBox::AddNew() {
  BackgroundDialog dialog(backgrounds_, host_, this);
  if (dialog.exec() != QDialog::Accepted) return;
  if (const auto index = backgrounds_.Add(dialog.Chosen())) {
    Refill(static_cast<int>(*index));
    // Who makes a background wants to see it.
    if (ui_->transparencyBox->value() == ui_->transparencyBox->maximum()) ui_->transparencyBox->setValue(0);
  } else {
    ShowWarning(this, texts::BackgroundsNotSaved);
  }
}

void FillBox::DeleteChosen() {
  const int index = ui_->backgroundBox->currentIndex();
  if (!backgrounds_.Remove(static_cast<std::size_t>(index)))
    return ShowWarning(this, texts::BackgroundsNotSaved);
  Refill(std::max(0, index - 1));
}

}  // namespace ts5::artworker
