#include "artworker/ui/place_bar.h"

#include <QSignalBlocker>
#include <array>

#include "artworker/element_notes.h"
#include "artworker/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_ARTPLACE.h"

namespace ts5::artworker {

PlaceBar::PlaceBar(Scene& scene, QWidget* parent)
    : QWidget(parent), scene_(scene), ui_(std::make_unique<Ui::ARTPLACE>()) {
  ui_->setupUi(this);
  ui_->placeRow->setContentsMargins(0, 2, 0, 2);
  for (QDoubleSpinBox* box : {ui_->xBox, ui_->yBox, ui_->widthBox, ui_->heightBox}) {
    box->setKeyboardTracking(false);
    connect(box, &QDoubleSpinBox::valueChanged, this, [this] { Take(); });
  }
  connect(ui_->fixedCheck, &QAbstractButton::clicked, this, [this](bool fixed) { TakeFixed(fixed); });
  Refresh();
}

PlaceBar::~PlaceBar() = default;

void PlaceBar::Refresh() {
  const ArtworkLayout& layout = scene_.editor.Layout();
  const Selection& selection = scene_.editor.Selected();
  const QRectF place = PlaceOfAll(layout, selection);
  const std::array values = {std::pair(ui_->xBox, place.left()), std::pair(ui_->yBox, place.top()),
                             std::pair(ui_->widthBox, place.width()),
                             std::pair(ui_->heightBox, place.height())};
  for (const auto& [box, value] : values) {
    const QSignalBlocker quiet(box);
    box->setValue(value);
    box->setEnabled(!selection.empty());
    if (selection.empty()) box->clear();
  }
  const bool one = selection.size() == 1;
  ui_->widthBox->setEnabled(one);
  ui_->heightBox->setEnabled(one);
  ui_->fixedCheck->setEnabled(!selection.empty());
  ui_->fixedCheck->setChecked(!selection.empty() && layout.elements[selection.back()].fixed);
  QString note;
  if (one) {
    const ArtworkElement& element = layout.elements[selection.front()];
    QStringList warnings;
    for (const std::string& warning : WarningsOf(element, layout.Object(element.object)))
      warnings << ToQt(warning);
    note = warnings.isEmpty() ? ToQt(NameOf(element)) : warnings.join(' ');
  } else if (!selection.empty()) {
    note = ToQt(Format(Text(texts::HintSelected), selection.size()));
  }
  ui_->warningLabel->setText(note);
}

void PlaceBar::Take() {
  const Selection selection = scene_.editor.Selected();
  if (selection.empty()) return;
  const QRectF before = PlaceOfAll(scene_.editor.Layout(), selection);
  const QPointF corner(ui_->xBox->value(), ui_->yBox->value());
  const bool changed = scene_.editor.Apply([&](ArtworkLayout& layout, Selection&) {
    if (selection.size() > 1) return MoveBy(layout, selection, corner - before.topLeft());
    SetPlace(layout, selection.front(),
             QRectF(corner, QSizeF(ui_->widthBox->value(), ui_->heightBox->value())));
  });
  if (changed) emit Edited();
}

void PlaceBar::TakeFixed(bool fixed) {
  const bool changed = scene_.editor.Apply([fixed](ArtworkLayout& layout, Selection& selection) {
    for (const std::size_t index : selection) layout.elements[index].fixed = fixed;
  });
  if (changed) emit Edited();
}

}  // namespace ts5::artworker
