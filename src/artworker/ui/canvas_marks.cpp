#include "artworker/ui/canvas_marks.h"

#include <QPainterPath>
#include <utility>

namespace ts5::artworker {
namespace {

constexpr double kHandle = 7;  // the side of a handle

}  // namespace

void PaintDiscEdges(QPainter& painter, const QRectF& disc, double hole, const QPalette& palette) {
  QPainterPath beside;
  beside.setFillRule(Qt::OddEvenFill);
  beside.addRect(disc.adjusted(-1, -1, 1, 1));
  beside.addEllipse(disc);
  painter.fillPath(beside, palette.color(QPalette::Mid));
  QPainterPath inside;
  inside.addEllipse(disc.center(), hole, hole);
  painter.fillPath(inside, palette.color(QPalette::Mid));
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(palette.color(QPalette::Dark), 1));
  painter.drawEllipse(disc);
  painter.drawEllipse(disc.center(), hole, hole);
}

void PaintPaperEdges(QPainter& painter, const QRectF& paper, const std::vector<double>& folds,
                     const QPalette& palette) {
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(palette.color(QPalette::Dark), 1));
  painter.drawRect(paper);
  painter.setPen(QPen(QColor(128, 128, 128, 140), 1, Qt::DashLine));
  for (const double fold : folds) {
    const double x = paper.left() + fold;
    painter.drawLine(QPointF(x, paper.top()), QPointF(x, paper.bottom()));
  }
}

void PaintSelected(QPainter& painter, const QRectF& element, bool fixed, const QPalette& palette) {
  const QColor accent = palette.color(QPalette::Highlight);
  // Seen on every ground.
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(Qt::white, 3));
  painter.drawRect(element);
  painter.setPen(QPen(accent, 1.5, fixed ? Qt::DashLine : Qt::SolidLine));
  painter.drawRect(element);
  painter.setPen(QPen(accent, 1));
  painter.setBrush(Qt::white);
  const QPointF c = element.center();
  for (const QPointF& at :
       {element.topLeft(), element.topRight(), element.bottomLeft(), element.bottomRight(),
        QPointF(c.x(), element.top()), QPointF(c.x(), element.bottom()), QPointF(element.left(), c.y()),
        QPointF(element.right(), c.y())})
    painter.drawRect(QRectF(at.x() - kHandle / 2, at.y() - kHandle / 2, kHandle, kHandle));
}

void PaintGuides(QPainter& painter, const std::vector<Guide>& guides, QPointF corner) {
  painter.setPen(QPen(QColor(0xC6, 0x41, 0x3A), 1));
  for (const Guide& guide : guides) painter.drawLine(guide.from + corner, guide.to + corner);
}

void PaintOutline(QPainter& painter, const QRectF& outline, bool ellipse) {
  painter.setBrush(Qt::NoBrush);
  for (const auto& [colour, style] :
       {std::pair(Qt::white, Qt::SolidLine), std::pair(Qt::black, Qt::DotLine)}) {
    painter.setPen(QPen(colour, 1, style));
    if (ellipse) {
      painter.drawEllipse(outline);
    } else {
      painter.drawRect(outline);
    }
  }
}

}  // namespace ts5::artworker
