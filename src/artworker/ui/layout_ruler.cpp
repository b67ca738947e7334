#include "artworker/ui/layout_ruler.h"

#include <QPainter>
#include <cmath>

namespace ts5::artworker {
namespace {

constexpr int kFontPixels = 9;
constexpr double kLeastMark = 3;  // pixels between marks that can still be told apart

}  // namespace

LayoutRuler::LayoutRuler(Qt::Orientation direction, QWidget* parent)
    : QWidget(parent), direction_(direction) {
  if (direction == Qt::Horizontal) {
    setFixedHeight(kBreadth);
  } else {
    setFixedWidth(kBreadth);
  }
}

void LayoutRuler::Show(const Measures& measures) {
  measures_ = measures;
  update();
}

void LayoutRuler::ShowMouse(std::optional<double> millimetres) {
  mouse_ = millimetres;
  update();
}

void LayoutRuler::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Base));
  const bool across = direction_ == Qt::Horizontal;
  const double end = measures_.start + measures_.length * measures_.scale;
  const QColor used = palette().color(QPalette::AlternateBase);
  painter.fillRect(across ? QRectF(measures_.start, 0, end - measures_.start, kBreadth)
                          : QRectF(0, measures_.start, kBreadth, end - measures_.start),
                   used);
  painter.setPen(palette().color(QPalette::Text));
  QFont font = painter.font();
  font.setPixelSize(kFontPixels);
  painter.setFont(font);
  const double origin =
      measures_.start + (measures_.originInMiddle ? measures_.length / 2 : 0) * measures_.scale;
  const double space = across ? width() : height();
  const int first = static_cast<int>(std::floor((0 - origin) / measures_.scale));
  const int last = static_cast<int>(std::ceil((space - origin) / measures_.scale));
  for (int millimetre = first; millimetre <= last; ++millimetre) {
    const bool whole = millimetre % 10 == 0;
    if (!whole && (!measures_.divide || measures_.scale < kLeastMark)) continue;
    const double at = std::round(origin + millimetre * measures_.scale) + 0.5;
    const double length = whole ? kBreadth / 2.0 : millimetre % 5 == 0 ? 6 : 3;
    painter.drawLine(across ? QLineF(at, kBreadth - length, at, kBreadth)
                            : QLineF(kBreadth - length, at, kBreadth, at));
    if (!whole) continue;
    const QString number = QString::number(std::abs(millimetre / 10));
    if (across) {
      painter.drawText(QPointF(at + 2, kFontPixels + 1), number);
    } else {
      painter.drawText(QPointF(2, at + kFontPixels + 1), number);
    }
  }
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawLine(across ? QLineF(0, kBreadth - 0.5, width(), kBreadth - 0.5)
                          : QLineF(kBreadth - 0.5, 0, kBreadth - 0.5, height()));
  if (!mouse_) return;
  painter.setPen(QPen(palette().color(QPalette::Highlight), 1));
  const double at = measures_.start + *mouse_ * measures_.scale;
  painter.drawLine(across ? QLineF(at, 0, at, kBreadth) : QLineF(0, at, kBreadth, at));
}

}  // namespace ts5::artworker
