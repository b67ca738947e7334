#include "artworker/sheet_painter.h"

#include <QFont>
#include <QPainter>
#include <algorithm>
#include <string_view>

#include "artworker/ink.h"
#include "artworker/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5::artworker {
namespace {

constexpr double kMarkPen = 0.1;       // millimetres, as all that follows
constexpr double kMarkDistance = 1.5;  // from the object
constexpr double kMarkLength = 5;
constexpr double kCentreMark = 2;
constexpr double kHalfPen = 0.05;  // that a line on an edge reaches beyond it
constexpr double kRulerLength = 10;
constexpr double kCentimetre = 10;
constexpr double kTextHeight = 3.5;
constexpr double kTextIndent = 30;
constexpr double kTextTop = 45;

void Line(QPainter& painter, QPointF from, QPointF to) {
  painter.drawLine(QLineF(from, to));
}

// From the point away from the object, in one direction.
void Mark(QPainter& painter, QPointF at, QPointF direction) {
  Line(painter, at + direction * kMarkDistance, at + direction * (kMarkDistance + kMarkLength));
}

void CutMarks(QPainter& painter, const QRectF& rect) {
  for (const double x : {rect.left(), rect.right()}) {
    Mark(painter, {x, rect.top()}, {0, -1});
    Mark(painter, {x, rect.bottom()}, {0, 1});
  }
  for (const double y : {rect.top(), rect.bottom()}) {
    Mark(painter, {rect.left(), y}, {-1, 0});
    Mark(painter, {rect.right(), y}, {1, 0});
  }
}

void DiscMarks(QPainter& painter, const QRectF& rect) {
  const QPointF centre = rect.center();
  Mark(painter, {centre.x(), rect.top()}, {0, -1});
  Mark(painter, {centre.x(), rect.bottom()}, {0, 1});
  Mark(painter, {rect.left(), centre.y()}, {-1, 0});
  Mark(painter, {rect.right(), centre.y()}, {1, 0});
  Line(painter, centre - QPointF(kCentreMark, 0), centre + QPointF(kCentreMark, 0));
  Line(painter, centre - QPointF(0, kCentreMark), centre + QPointF(0, kCentreMark));
}

// Letters of that height, whatever the device.
void DrawLines(QPainter& painter, QPointF at, double width, const QString& text) {
  QFont font(QStringLiteral("Arial"));
  font.setPixelSize(kBaseFontPixels);
  font.setHintingPreference(QFont::PreferNoHinting);
  const double scale = kTextHeight / kBaseFontPixels;
  painter.save();
  painter.setFont(font);
  painter.translate(at);
  painter.scale(scale, scale);
  constexpr double kEndless = 1e6;
  painter.drawText(QRectF(0, 0, width / scale, kEndless), Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap,
                   text);
  painter.restore();
}

// Millimetres along an edge of the sheet, with their centimetres.
void EdgeRuler(QPainter& painter, double length, Qt::Orientation orientation) {
  const auto at = [&](double along, double away) {
    return orientation == Qt::Horizontal ? QPointF(along, away) : QPointF(away, along);
  };
  for (int mm = 0; mm <= static_cast<int>(length); ++mm) {
    const double tick = mm % 10 == 0 ? kRulerLength : mm % 5 == 0 ? kRulerLength * 0.7 : kRulerLength / 2;
    Line(painter, at(mm, 0), at(mm, tick));
    if (mm % 10 == 0 && mm > 0 && mm + kCentimetre <= length)
      DrawLines(painter, at(mm, kRulerLength) + QPointF(0.5, 0.5), kCentimetre, QString::number(mm / 10));
  }
}

std::string Decimal(std::string_view format, double value) {
  std::string text = Format(format, value);
  std::ranges::replace(text, '.', ',');
  return text;
}

}  // namespace

void PaintPlaced(QPainter& painter, const ObjectPainting& painting, const PlacedObject& placed) {
  painter.save();
  if (placed.frontOnly) {
    painter.setClipRect(RectOf(painting.layout, placed).adjusted(-kHalfPen, -kHalfPen, kHalfPen, kHalfPen),
                        Qt::IntersectClip);
  }
  painter.translate(placed.corner);
  RenderObject(painter, painting, placed.id);
  painter.restore();
}

void PaintMarks(QPainter& painter, const ArtworkLayout& layout, const PlacedObject& placed) {
  const QRectF rect = RectOf(layout, placed);
  QPen pen(Qt::black, kMarkPen);
  pen.setCapStyle(Qt::FlatCap);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(pen);
  if (placed.id == ArtworkObjectId::Label) {
    DiscMarks(painter, rect);
  } else {
    CutMarks(painter, rect);
    pen.setDashPattern({6, 6});  // in widths of the pen
    painter.setPen(pen);
    for (const double fold : FoldsOf(layout.Object(placed.id), placed.id)) {
      const double x = placed.corner.x() + fold;
      if (x <= rect.left()) continue;
      Mark(painter, {x, rect.top()}, {0, -1});
      Mark(painter, {x, rect.bottom()}, {0, 1});
    }
  }
  painter.restore();
}

void PaintCalibration(QPainter& painter, Size sheet, const std::string& printer, const PrinterFit& fit) {
  QPen pen(Qt::black, kMarkPen);
  pen.setCapStyle(Qt::FlatCap);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(pen);
  EdgeRuler(painter, sheet.width, Qt::Horizontal);
  EdgeRuler(painter, sheet.height, Qt::Vertical);
  // The lines begin at the marks, whose distances from the edges are measured.
  const QPointF corner(kMarkPlace, kMarkPlace);
  Line(painter, corner, corner + QPointF(kAcrossLine, 0));
  Line(painter, corner, corner + QPointF(0, kAlongLine));
  constexpr double kEnd = 2;  // to either side
  for (const double x : {corner.x(), corner.x() + kAcrossLine})
    Line(painter, {x, corner.y() - kEnd}, {x, corner.y() + kEnd});
  for (const double y : {corner.y(), corner.y() + kAlongLine})
    Line(painter, {corner.x() - kEnd, y}, {corner.x() + kEnd, y});
  const std::string text = Format(Text(texts::CalibrationPage), printer, Decimal("%.1f", fit.right / 10.0),
                                  Decimal("%.1f", fit.down / 10.0), Decimal("%.2f", fit.across / 100.0),
                                  Decimal("%.2f", fit.along / 100.0));
  DrawLines(painter, {kTextIndent, kTextTop - kMarkPlace / 2}, sheet.width - kTextIndent - kCentimetre,
            QString::fromStdString(text));
  painter.restore();
}

}  // namespace ts5::artworker
