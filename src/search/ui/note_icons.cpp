#include "search/ui/note_icons.h"

#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <array>
#include <functional>
#include <string_view>

#include "resources/icons.h"
#include "search/ui/music_shapes.h"

namespace ts5 {
namespace {

constexpr int kSize = 24;  // logical pixels of the icon's square

// A sign centred in the square, so many pixels to a staff space.
QPainterPath Centred(const QPainterPath& shape, double space) {
  const QPainterPath scaled = QTransform::fromScale(space, space).map(shape);
  return scaled.translated(QPointF(kSize, kSize) / 2.0 - scaled.boundingRect().center());
}

QPainterPath Note(NoteHead head, int flags) {
  QPainterPath note = HeadShape(head);
  if (head != NoteHead::Whole) note = note.united(StemShape(head, true, flags));
  return Centred(note, 4.6);
}

QPainterPath DottedNote() {
  QPainterPath note = HeadShape(NoteHead::Filled).united(StemShape(NoteHead::Filled, true, 0));
  note.addPath(DotShape().translated(1.9, 0.1));
  return Centred(note, 4.6);
}

QPainterPath Octave(const QString& label) {
  QFont font(QStringLiteral("sans-serif"));
  font.setPixelSize(13);
  font.setBold(true);
  QPainterPath path;
  path.addText(0, 0, font, label);
  return path.translated(QPointF(kSize, kSize) / 2.0 - path.boundingRect().center());
}

// A bent arrow that points back.
QPainterPath BackArrow() {
  QPainterPath line(QPointF(8, 8.5));
  line.lineTo(14, 8.5);
  line.arcTo(QRectF(9.5, 8.5, 9, 9), 90, -180);
  line.lineTo(9, 17.5);
  QPainterPathStroker stroker;
  stroker.setWidth(2);
  QPainterPath arrow = stroker.createStroke(line);
  QPainterPath head(QPointF(4, 8.5));
  head.lineTo(9.5, 4);
  head.lineTo(9.5, 13);
  head.closeSubpath();
  return arrow.united(head);
}

QPainterPath ShapeOf(NoteCommand command) {
  switch (command) {
    case NoteCommand::OctaveDown:
      return Octave(QStringLiteral("\u22128"));
    case NoteCommand::OctaveNormal:
      return Octave(QStringLiteral("8"));
    case NoteCommand::OctaveUp:
      return Octave(QStringLiteral("+8"));
    case NoteCommand::Flat:
      return Centred(AccidentalShape(Accidental::Flat), 6.5);
    case NoteCommand::Natural:
      return Centred(NaturalShape(), 6.5);
    case NoteCommand::Sharp:
      return Centred(AccidentalShape(Accidental::Sharp), 6.5);
    case NoteCommand::TrebleClef:
      return Centred(ClefShape(Clef::Treble), 2.9);
    case NoteCommand::BassClef:
      return Centred(ClefShape(Clef::Bass), 4.8);
    case NoteCommand::ToggleDot:
      return DottedNote();
    case NoteCommand::Whole:
      return Note(NoteHead::Whole, 0);
    case NoteCommand::Half:
      return Note(NoteHead::Half, 0);
    case NoteCommand::Quarter:
      return Note(NoteHead::Filled, 0);
    case NoteCommand::Eighth:
      return Note(NoteHead::Filled, 1);
    case NoteCommand::Sixteenth:
      return Note(NoteHead::Filled, 2);
    case NoteCommand::ThirtySecond:
      return Note(NoteHead::Filled, 3);
    case NoteCommand::Undo:
      return BackArrow();
    case NoteCommand::Redo:
      return QTransform(-1, 0, 0, 1, kSize, 0).map(BackArrow());
    default:
      return {};
  }
}

// Commands whose icon is one of the program's own.
std::string_view IconNameOf(NoteCommand command) {
  switch (command) {
    case NoteCommand::Play:
      return "play";
    case NoteCommand::DeleteAll:
      return "delete";
    case NoteCommand::Save:
      return "save";
    case NoteCommand::Manage:
      return "contents";
    default:
      return {};
  }
}

QPixmap Drawn(const QPainterPath& shape, const QColor& ink, int scale) {
  QPixmap pixmap(kSize * scale, kSize * scale);
  pixmap.setDevicePixelRatio(scale);
  pixmap.fill(Qt::transparent);
  QPainter painter(&pixmap);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillPath(shape, ink);
  return pixmap;
}

}  // namespace

QIcon NoteIcon(NoteCommand command, const QPalette& palette) {
  if (const std::string_view name = IconNameOf(command); !name.empty()) return Icon(name);
  const QPainterPath shape = ShapeOf(command);
  QIcon icon;
  if (shape.isEmpty()) return icon;
  for (const int scale : {1, 2, 3}) {
    icon.addPixmap(Drawn(shape, palette.color(QPalette::Active, QPalette::ButtonText), scale), QIcon::Normal);
    icon.addPixmap(Drawn(shape, palette.color(QPalette::Disabled, QPalette::ButtonText), scale),
                   QIcon::Disabled);
  }
  return icon;
}

}  // namespace ts5
