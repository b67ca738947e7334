#include "artworker/ui/colour_button.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

#include "artworker/ink.h"

namespace ts5::artworker {
namespace {

constexpr QSize kSwatch{40, 14};

std::uint32_t ColourFrom(const QColor& colour) {
  return static_cast<std::uint32_t>(colour.red() | colour.green() << 8 | colour.blue() << 16);
}

}  // namespace

ColourButton::ColourButton(QWidget* parent) : QPushButton(parent) {
  setIconSize(kSwatch);
  SetColour(0);
  connect(this, &QPushButton::clicked, this, [this] { Choose(); });
}

void ColourButton::SetColour(std::uint32_t colour) {
  colour_ = colour;
  QPixmap swatch(kSwatch);
  swatch.fill(ColourOf(colour));
  QPainter painter(&swatch);
  painter.setPen(Qt::gray);
  painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
  painter.end();
  setIcon(swatch);
  setText(' ' + ColourOf(colour).name());
}

void ColourButton::Choose() {
  const QColor chosen =
      QColorDialog::getColor(ColourOf(colour_), this, {}, QColorDialog::DontUseNativeDialog);
  if (!chosen.isValid() || ColourFrom(chosen) == colour_) return;
  SetColour(ColourFrom(chosen));
  emit ColourChosen(colour_);
}

}  // namespace ts5::artworker
