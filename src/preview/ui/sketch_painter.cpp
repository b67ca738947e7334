#include "preview/ui/sketch_painter.h"

#include <QFontMetricsF>
#include <QPainterPath>
#include <QPainterPathStroker>
#include <map>

#include "frame/ui/qt_text.h"
#include "search/ui/music_shapes.h"

namespace ts5::preview {
namespace {

// Fonts are laid out this much larger, so that their outlines are exact.
constexpr double kFine = 20;

QPainterPath Box(double x, double y, double width, double height) {
  QPainterPath path;
  path.addRect(QRectF(x, y, width, height));
  return path;
}

QPainterPath Stroke(const QPainterPath& line, double width) {
  QPainterPathStroker stroker;
  stroker.setWidth(width);
  stroker.setCapStyle(Qt::RoundCap);
  stroker.setJoinStyle(Qt::RoundJoin);
  QPainterPath path = stroker.createStroke(line);
  path.setFillRule(Qt::WindingFill);
  return path;
}

QPainterPath Polyline(std::initializer_list<QPointF> points) {
  QPainterPath path;
  path.addPolygon(QPolygonF(QList<QPointF>(points)));
  return path;
}

// Two bows that meet at the middle line, behind a thick and a thin stroke.
QPainterPath AltoClef() {
  QPainterPath path = Box(0, -2, 0.5, 4);
  path.addPath(Box(0.7, -2, 0.14, 4));
  for (const double side : {-1.0, 1.0}) {
    QPainterPath bow(QPointF(0.9, 0));
    bow.cubicTo(1.3, side * 0.2, 1.25, side * 0.5, 1.3, side * 0.75);
    bow.cubicTo(1.5, side * 0.3, 2.6, side * 0.2, 2.6, side * 1.15);
    bow.cubicTo(2.6, side * 2.2, 1.2, side * 2.2, 1.05, side * 1.5);
    bow.cubicTo(1.3, side * 1.95, 1.95, side * 1.95, 1.95, side * 1.15);
    bow.cubicTo(1.95, side * 0.5, 1.6, side * 0.6, 1.35, side * 1.0);
    bow.closeSubpath();
    path.addPath(bow);
  }
  path.setFillRule(Qt::WindingFill);
  return path;
}

QPainterPath Brace() {
  QPainterPath path(QPointF(0, 0));
  path.cubicTo(-1.5, 0.1, 0.1, 0.42, -1.1, 0.5);
  path.cubicTo(0.1, 0.58, -1.5, 0.9, 0, 1);
  path.cubicTo(-1.0, 0.9, 0.6, 0.58, -1.1, 0.5);
  path.cubicTo(0.6, 0.42, -1.0, 0.1, 0, 0);
  path.setFillRule(Qt::WindingFill);
  return path;
}

QPainterPath Fermata() {
  QPainterPath path(QPointF(-1.25, 0.35));
  path.cubicTo(-1.2, -1.35, 1.2, -1.35, 1.25, 0.35);
  path.cubicTo(1.0, -0.95, -1.0, -0.95, -1.25, 0.35);
  path.addEllipse(QPointF(0, 0.1), 0.22, 0.22);
  return path;
}

QPainterPath CrossHead() {
  QPainterPath path = Polyline({{0.15, -0.45}, {1.05, 0.45}});
  path.addPath(Polyline({{0.15, 0.45}, {1.05, -0.45}}));
  return Stroke(path, 0.17);
}

QPainterPath DoubleSharp() {
  QPainterPath path = Polyline({{0.1, -0.4}, {0.9, 0.4}});
  path.addPath(Polyline({{0.1, 0.4}, {0.9, -0.4}}));
  QPainterPath shape = Stroke(path, 0.15);
  for (const double x : {0.1, 0.9}) {
    for (const double y : {-0.4, 0.4}) shape.addPath(Box(x - 0.16, y - 0.16, 0.32, 0.32));
  }
  shape.setFillRule(Qt::WindingFill);
  return shape;
}

QPainterPath DoubleFlat() {
  const QTransform narrow = QTransform::fromScale(0.8, 1);
  QPainterPath path = narrow.map(AccidentalShape(Accidental::Flat));
  path.addPath(path.translated(0.55, 0));
  path.setFillRule(Qt::WindingFill);
  return path;
}

QPainterPath Breve() {
  QPainterPath path = HeadShape(NoteHead::Whole);
  path.addPath(Box(-0.25, -0.75, 0.14, 1.5));
  path.addPath(Box(1.8, -0.75, 0.14, 1.5));
  return path;
}

QPainterPath Closed(std::initializer_list<QPointF> points) {
  QPainterPath path = Polyline(points);
  path.closeSubpath();
  return path;
}

QPainterPath Wave() {
  QPainterPath path(QPointF(0, 0));
  path.cubicTo(0.5, 0.2, 0.4, 0.35, 0.15, 0.5);
  path.cubicTo(-0.1, 0.65, -0.2, 0.8, 0.3, 1);
  return Stroke(path, 0.17);
}

QPainterPath MakeShape(Sign sign) {
  switch (sign) {
    case Sign::TrebleClef:
      return ClefShape(Clef::Treble);
    case Sign::BassClef:
      return ClefShape(Clef::Bass);
    case Sign::AltoClef:
      return AltoClef();
    case Sign::PercussionClef: {
      QPainterPath path = Box(0.2, -1, 0.5, 2);
      path.addPath(Box(1.1, -1, 0.5, 2));
      return path;
    }
    case Sign::BreveHead:
      return Breve();
    case Sign::WholeHead:
      return HeadShape(NoteHead::Whole);
    case Sign::HalfHead:
      return HeadShape(NoteHead::Half);
    case Sign::FilledHead:
      return HeadShape(NoteHead::Filled);
    case Sign::CrossHead:
      return CrossHead();
    case Sign::DiamondHead:
      return Closed({{0.6, -0.6}, {1.2, 0}, {0.6, 0.6}, {0, 0}});
    case Sign::TriangleHead:
      return Closed({{0.6, -0.55}, {1.25, 0.5}, {-0.05, 0.5}});
    case Sign::SlashHead:
      return Closed({{0.1, 0.9}, {0.6, 0.9}, {1.2, -0.9}, {0.7, -0.9}});
    case Sign::DoubleFlat:
      return DoubleFlat();
    case Sign::Flat:
      return AccidentalShape(Accidental::Flat);
    case Sign::Natural:
      return NaturalShape();
    case Sign::Sharp:
      return AccidentalShape(Accidental::Sharp);
    case Sign::DoubleSharp:
      return DoubleSharp();
    case Sign::WholeRest:
      return RestShape(NoteHead::Whole, 0);
    case Sign::HalfRest:
      return RestShape(NoteHead::Half, 0);
    case Sign::QuarterRest:
      return RestShape(NoteHead::Filled, 0);
    case Sign::EighthRest:
      return RestShape(NoteHead::Filled, 1);
    case Sign::SixteenthRest:
      return RestShape(NoteHead::Filled, 2);
    case Sign::ThirtySecondRest:
      return RestShape(NoteHead::Filled, 3);
    case Sign::FlagUp:
      return FlagShape(true);
    case Sign::FlagDown:
      return FlagShape(false);
    case Sign::Dot:
      return DotShape();
    case Sign::Fermata:
      return Fermata();
    case Sign::Accent:
      return Stroke(Polyline({{-0.7, -0.45}, {0.7, 0}, {-0.7, 0.45}}), 0.15);
    case Sign::StrongAccent:
      return Stroke(Polyline({{-0.5, 0.45}, {0, -0.55}, {0.5, 0.45}}), 0.17);
    case Sign::Staccatissimo:
      return Closed({{-0.22, -0.5}, {0.22, -0.5}, {0, 0.5}});
    case Sign::Tenuto:
      return Box(-0.65, -0.09, 1.3, 0.18);
    case Sign::Arpeggio:
      return Wave();
    case Sign::Brace:
      return Brace();
  }
  return {};
}

const QPainterPath& Shape(Sign sign) {
  static thread_local std::map<Sign, QPainterPath> shapes;
  auto found = shapes.find(sign);
  if (found == shapes.end()) found = shapes.emplace(sign, MakeShape(sign)).first;
  return found->second;
}

void PaintSign(QPainter& painter, const SignMark& mark) {
  painter.save();
  painter.translate(mark.x, mark.y);
  painter.scale(mark.size, mark.size * mark.stretch * (mark.upsideDown ? -1 : 1));
  painter.drawPath(Shape(mark.sign));
  painter.restore();
}

void PaintLine(QPainter& painter, const LineMark& line, const QColor& ink) {
  if (line.beam) {
    const double half = line.width / 2;
    painter.drawPolygon(QPolygonF({{line.x1, line.y1 - half},
                                   {line.x2, line.y2 - half},
                                   {line.x2, line.y2 + half},
                                   {line.x1, line.y1 + half}}));
    return;
  }
  QPen pen(ink, line.width);
  pen.setCapStyle(Qt::FlatCap);
  if (line.dashed) pen.setStyle(Qt::DashLine);
  painter.setPen(pen);
  painter.drawLine(QPointF(line.x1, line.y1), QPointF(line.x2, line.y2));
  painter.setPen(Qt::NoPen);
}

// Two bows that lie close together at the ends and apart in the middle.
void PaintCurve(QPainter& painter, const CurveMark& curve) {
  const double width = curve.x2 - curve.x1;
  const double thick = curve.height > 0 ? 0.28 : -0.28;
  const double lift = curve.height * 4 / 3;
  const QPointF from(curve.x1, curve.y1);
  const QPointF to(curve.x2, curve.y2);
  const auto at = [&](double part, double up) {
    return QPointF(curve.x1 + width * part, curve.y1 + (curve.y2 - curve.y1) * part + up);
  };
  QPainterPath path(from);
  path.cubicTo(at(0.22, lift + thick), at(0.78, lift + thick), to);
  path.cubicTo(at(0.78, lift - thick * 0.3), at(0.22, lift - thick * 0.3), from);
  painter.drawPath(path);
}

void PaintText(QPainter& painter, const TextMark& mark, const QColor& ink) {
  if (mark.text.empty()) return;
  QFont font(QStringLiteral("serif"));
  font.setStyleHint(QFont::Serif);
  font.setPixelSize(static_cast<int>(mark.size * kFine));
  font.setBold(mark.style == TextStyle::Bold || mark.style == TextStyle::BoldItalic);
  font.setItalic(mark.style == TextStyle::Italic || mark.style == TextStyle::BoldItalic);
  const QString text = ToQt(mark.text);
  const double width = QFontMetricsF(font).horizontalAdvance(text);
  const double left = mark.align == TextAlign::Left     ? 0
                      : mark.align == TextAlign::Centre ? -width / 2
                                                        : -width;
  painter.save();
  painter.translate(mark.x, mark.y);
  painter.scale(1 / kFine, 1 / kFine);
  painter.setFont(font);
  painter.setPen(ink);
  painter.drawText(QPointF(left, 0), text);
  if (mark.framed) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(ink, 0.15 * kFine));
    const double size = mark.size * kFine;
    painter.drawRect(QRectF(left - size * 0.25, -size * 0.95, width + size * 0.5, size * 1.3));
  }
  painter.restore();
}

}  // namespace

void PaintSketch(QPainter& painter, const Sketch& sketch, const QColor& ink) {
  painter.setPen(Qt::NoPen);
  painter.setBrush(ink);
  for (const LineMark& line : sketch.lines) PaintLine(painter, line, ink);
  for (const SignMark& sign : sketch.signs) PaintSign(painter, sign);
  for (const CurveMark& curve : sketch.curves) PaintCurve(painter, curve);
  for (const TextMark& text : sketch.texts) PaintText(painter, text, ink);
}

}  // namespace ts5::preview
