// Paints melodies on their one-line staff, for the editor and for printed lists. One unit of the painter is a
// pixel at 96 dpi; middle is the y of the middle line.
#pragma once

#include <QColor>
#include <QPainter>
#include <span>

#include "search/note_layout.h"
#include "search/search_melody.h"

namespace ts5 {

// The y of a staff place.
[[nodiscard]] double StaffPlaceY(int place, double middle);
// The five lines and the clef.
void PaintStaff(QPainter& painter, Clef clef, double width, double middle, const QColor& ink);
// With the painter's brush.
void PaintNote(QPainter& painter, const NotePlace& note, double middle);
// A whole melody, as large as the area allows, but no larger than the editor shows it at most.
void PaintMelody(QPainter& painter, const QRectF& area, std::span<const MelodyElement> elements, Clef clef);

}  // namespace ts5
