#include "search/ui/music_shapes.h"

#include <QPainterPathStroker>
#include <QTransform>
#include <array>

namespace ts5 {
namespace {

constexpr double kStemWidth = 0.13;
constexpr double kFilledWidth = 1.25;
constexpr double kWholeWidth = 1.7;

// Outlines are taken and united on a grid this much finer than a staff space: the operations keep curves
// smooth to about a unit.
constexpr double kFine = 256.0;

QPainterPath Scaled(const QPainterPath& path, double factor) {
  return QTransform::fromScale(factor, factor).map(path);
}

QPainterPath Stroked(const QPainterPath& line, double width) {
  QPainterPathStroker stroker;
  stroker.setWidth(width * kFine);
  stroker.setCapStyle(Qt::RoundCap);
  stroker.setJoinStyle(Qt::RoundJoin);
  return Scaled(stroker.createStroke(Scaled(line, kFine)).simplified(), 1 / kFine);
}

QPainterPath United(std::initializer_list<QPainterPath> parts) {
  QPainterPath all;
  for (const QPainterPath& part : parts) all = all.united(Scaled(part, kFine));
  return Scaled(all, 1 / kFine);
}

QPainterPath Without(const QPainterPath& shape, const QPainterPath& hole) {
  return Scaled(Scaled(shape, kFine).subtracted(Scaled(hole, kFine)), 1 / kFine);
}

QPainterPath Rectangle(double x, double y, double width, double height) {
  QPainterPath path;
  path.addRect(QRectF(x, y, width, height));
  return path;
}

QPainterPath Disc(double x, double y, double radius) {
  QPainterPath disc;
  disc.addEllipse(QPointF(x, y), radius, radius);
  return disc;
}

QPainterPath Polygon(std::initializer_list<QPointF> points) {
  QPainterPath path;
  path.addPolygon(QPolygonF(QList<QPointF>(points)));
  path.closeSubpath();
  return path;
}

QPainterPath TrebleClef() {
  // One line from the curl around the second line up to the top and down to the hook, and the swelling of the
  // belly laid over it.
  QPainterPath line(QPointF(1.35, 0.42));
  line.cubicTo(0.95, 0.35, 0.85, -0.45, 1.4, -0.55);
  line.cubicTo(2.15, -0.65, 2.4, 0.55, 1.55, 0.92);
  line.cubicTo(0.75, 1.2, 0.05, 0.55, 0.22, -0.45);
  line.cubicTo(0.42, -1.5, 1.95, -2.2, 1.95, -3.75);
  line.cubicTo(1.95, -4.4, 1.6, -4.75, 1.42, -4.55);
  line.cubicTo(1.05, -4.1, 1.05, -3.4, 1.12, -2.9);
  line.lineTo(1.72, 1.75);
  line.cubicTo(1.85, 2.6, 0.95, 2.85, 0.62, 2.35);
  QPainterPath belly(QPointF(0.22, -0.45));
  belly.cubicTo(0.38, -1.3, 1.3, -1.85, 1.72, -2.75);
  belly.cubicTo(1.45, -1.75, 0.6, -1.15, 0.5, -0.35);
  belly.cubicTo(0.42, 0.35, 0.9, 0.9, 1.55, 0.92);
  belly.cubicTo(0.75, 1.2, 0.05, 0.55, 0.22, -0.45);
  return United({Stroked(line, 0.17), belly, Disc(0.82, 2.25, 0.3)});
}

QPainterPath BassClef() {
  QPainterPath hook(QPointF(0.25, 0.0));
  hook.cubicTo(0.2, -1.0, 1.9, -1.45, 1.95, 0.15);
  hook.cubicTo(2.0, 1.55, 0.9, 2.35, 0.05, 2.75);
  hook.cubicTo(1.0, 2.1, 1.5, 1.3, 1.48, 0.1);
  hook.cubicTo(1.45, -1.0, 0.6, -1.0, 0.45, -0.3);
  hook.closeSubpath();
  return United({hook, Disc(0.5, 0.02, 0.36), Disc(2.45, -0.5, 0.2), Disc(2.45, 0.5, 0.2)});
}

// The two slanted bars of a sharp or natural, rising to the right.
QPainterPath SlantedBar(double y, double width, double rise) {
  return Polygon({{0.0, y + 0.14}, {width, y + 0.14 - rise}, {width, y - 0.12 - rise}, {0.0, y - 0.12}});
}

QPainterPath Sharp() {
  return United({SlantedBar(-0.35, 0.95, 0.26), SlantedBar(0.55, 0.95, 0.26),
                 Rectangle(0.25, -1.2, 0.11, 2.6), Rectangle(0.6, -1.35, 0.11, 2.6)});
}

QPainterPath Flat() {
  QPainterPath bowl(QPointF(0.1, -0.25));
  bowl.cubicTo(0.45, -0.75, 1.0, -0.4, 0.72, 0.1);
  bowl.cubicTo(0.6, 0.35, 0.35, 0.5, 0.1, 0.7);
  bowl.lineTo(0.1, 0.45);
  bowl.cubicTo(0.4, 0.2, 0.55, -0.1, 0.42, -0.2);
  bowl.cubicTo(0.3, -0.28, 0.16, -0.12, 0.1, 0.0);
  bowl.closeSubpath();
  return United({bowl, Rectangle(0.0, -1.75, 0.12, 2.45)});
}

QPainterPath Tilted(double width, double height, double angle) {
  QPainterPath ellipse;
  ellipse.addEllipse(QPointF(0, 0), width / 2, height / 2);
  return QTransform().rotate(angle).map(ellipse);
}

QPainterPath QuarterRest() {
  QPainterPath path(QPointF(0.25, -1.5));
  path.lineTo(0.95, -0.6);
  path.cubicTo(0.55, -0.25, 0.6, 0.1, 1.05, 0.65);
  path.cubicTo(0.55, 0.5, 0.3, 0.8, 0.65, 1.4);
  path.cubicTo(-0.1, 0.95, 0.05, 0.35, 0.7, 0.4);
  path.lineTo(0.15, -0.25);
  path.cubicTo(0.55, -0.6, 0.5, -0.95, 0.15, -1.4);
  path.closeSubpath();
  return path;
}

QPainterPath FlaggedRest(int flags) {
  // The slanted stem, and on it a knob with its bow for every flag, the lowest in the third space.
  const double top = -0.55 - (flags > 2 ? 1.0 : 0.0);
  const double bottom = flags > 1 ? 1.5 : 1.0;
  const double slant = 0.28;  // to the left per space downwards
  QPainterPath stem(QPointF(1.05, top - 0.1));
  stem.lineTo(1.05 - slant * (bottom - top), bottom);
  QPainterPath rest = Stroked(stem, 0.14);
  for (int i = 0; i < flags; ++i) {
    const double y = top + i;
    const double right = 1.05 - slant * i;
    QPainterPath bow(QPointF(right - 0.8, y));
    bow.cubicTo(right - 0.6, y + 0.55, right - 0.2, y + 0.45, right, y - 0.1);
    rest = United({rest, Stroked(bow, 0.13), Disc(right - 0.75, y - 0.02, 0.25)});
  }
  return rest;
}

}  // namespace

QPainterPath ClefShape(Clef clef) {
  return clef == Clef::Treble ? TrebleClef() : BassClef();
}

QPainterPath AccidentalShape(Accidental accidental) {
  switch (accidental) {
    case Accidental::Sharp:
      return Sharp();
    case Accidental::Flat:
      return Flat();
    case Accidental::None:
      break;
  }
  return {};
}

QPainterPath NaturalShape() {
  return United({SlantedBar(-0.4, 0.7, 0.2), SlantedBar(0.6, 0.7, 0.2), Rectangle(0.0, -1.45, 0.11, 2.1),
                 Rectangle(0.6, -0.75, 0.11, 2.1)});
}

double HeadWidth(NoteHead head) {
  return head == NoteHead::Whole ? kWholeWidth : kFilledWidth;
}

QPainterPath HeadShape(NoteHead head) {
  QPainterPath shape;
  switch (head) {
    case NoteHead::Whole:
      shape = Without(Tilted(kWholeWidth, 1.0, 0), Tilted(0.95, 0.62, 55));
      break;
    case NoteHead::Half:
      shape = Without(Tilted(1.34, 0.88, -22), Tilted(1.12, 0.42, -32));
      break;
    case NoteHead::Filled:
      shape = Tilted(1.34, 0.88, -22);
      break;
  }
  return shape.translated(HeadWidth(head) / 2, 0);
}

QPainterPath FlagShape(bool up) {
  const double inward = up ? 1.0 : -1.0;
  QPainterPath flag(QPointF(0, 0));
  flag.cubicTo(0.15, inward * 0.95, 1.3, inward * 1.2, 0.8, inward * 2.3);
  flag.cubicTo(0.98, inward * 1.65, 0.5, inward * 1.05, 0, inward * 0.75);
  flag.closeSubpath();
  return flag;
}

QPainterPath StemShape(NoteHead head, bool up, int flags, double length) {
  const double x = up ? HeadWidth(head) - kStemWidth : 0.0;
  const double direction = up ? -1.0 : 1.0;
  QPainterPath shape = Rectangle(x, up ? -length : 0.1, kStemWidth, length - 0.1);
  for (int i = 0; i < flags; ++i) {
    const double y = direction * (length - 0.78 * i);
    shape = United({shape, FlagShape(up).translated(x, y)});
  }
  return shape;
}

QPainterPath RestShape(NoteHead value, int flags) {
  if (flags > 0) return FlaggedRest(flags);
  switch (value) {
    case NoteHead::Whole:
      return Rectangle(0.0, -1.0, 1.3, 0.5);  // hangs from the fourth line
    case NoteHead::Half:
      return Rectangle(0.0, -0.5, 1.3, 0.5);  // sits on the middle line
    case NoteHead::Filled:
      break;
  }
  return QuarterRest();
}

QPainterPath DotShape() {
  return Disc(0, 0, 0.19);
}

}  // namespace ts5
