#include "search/ui/melody_painter.h"

#include <algorithm>

#include "search/ui/music_shapes.h"

namespace ts5 {
namespace {

constexpr int kMiddlePlace = 4;
constexpr double kClefLeft = 14.0;
constexpr double kLedgerOverhang = 3.0;
constexpr float kLineOpacity = 0.55F;
constexpr double kPictureHeight = 100.0;  // with some ledger lines
constexpr double kBehind = 24.0;          // the last note

void Fill(QPainter& painter, const QPainterPath& shape, double x, double y) {
  painter.save();
  painter.translate(x, y);
  painter.scale(kStaffSpace, kStaffSpace);
  painter.drawPath(shape);
  painter.restore();
}

}  // namespace

double StaffPlaceY(int place, double middle) {
  return middle - (place - kMiddlePlace) * kStaffSpace / 2.0;
}

void PaintStaff(QPainter& painter, Clef clef, double width, double middle, const QColor& ink) {
  QColor lines = ink;
  lines.setAlphaF(kLineOpacity);
  for (int line = 0; line <= 8; line += 2) {
    painter.fillRect(QRectF(kStaffLeft, StaffPlaceY(line, middle) - 0.5, width - 2 * kStaffLeft, 1.0), lines);
  }
  painter.setBrush(ink);
  Fill(painter, ClefShape(clef), kClefLeft, StaffPlaceY(clef == Clef::Treble ? 2 : 6, middle));
}

void PaintNote(QPainter& painter, const NotePlace& note, double middle) {
  const double y = StaffPlaceY(note.rest ? kMiddlePlace : note.place, middle);
  const double width = HeadWidth(note.head) * kStaffSpace;
  if (note.rest) {
    Fill(painter, RestShape(note.head, note.flags), note.x, y);
  } else {
    for (const int line : note.ledgerLines) {
      painter.drawRect(QRectF(note.x - kLedgerOverhang, StaffPlaceY(line, middle) - 0.5,
                              width + 2 * kLedgerOverhang, 1.0));
    }
    Fill(painter, AccidentalShape(note.accidental), note.accidentalX, y);
    Fill(painter, HeadShape(note.head), note.x, y);
    if (note.stem) Fill(painter, StemShape(note.head, note.stemUp, note.flags, note.stemLength), note.x, y);
  }
  // A dot beside a head on a line stands in the space above it.
  const bool onLine = !note.rest && note.place % 2 == 0;
  if (note.dotted)
    Fill(painter, DotShape(), note.x + width + 5.0, y - (onLine || note.rest ? kStaffSpace / 2 : 0.0));
}

void PaintMelody(QPainter& painter, const QRectF& area, std::span<const MelodyElement> elements, Clef clef) {
  const double width = CursorX(elements, elements.size()) + kBehind;
  const double scale = std::min(area.height() / kPictureHeight, area.width() / width);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.translate(area.topLeft());
  painter.scale(scale, scale);
  const double middle = kPictureHeight / 2;
  PaintStaff(painter, clef, width, middle, Qt::black);
  for (const NotePlace& note : LayOutNotes(elements, clef)) PaintNote(painter, note, middle);
  painter.restore();
}

}  // namespace ts5
