// The signs of the staff as vector shapes, crisp at any size. Units are staff spaces (the distance of two
// lines), x to the right and y down, with the origin named at each shape. All of them are to be filled.
#pragma once

#include <QPainterPath>

#include "search/note_layout.h"

namespace ts5 {

// Origin: left edge, on the line that the clef names (second from below in the treble clef, fourth in the
// bass clef).
[[nodiscard]] QPainterPath ClefShape(Clef clef);
// Origin: left edge, on the head's middle. Empty for no accidental; the natural sign has its own function.
[[nodiscard]] QPainterPath AccidentalShape(Accidental accidental);
[[nodiscard]] QPainterPath NaturalShape();
// Origin: left edge, middle.
[[nodiscard]] QPainterPath HeadShape(NoteHead head);
[[nodiscard]] double HeadWidth(NoteHead head);
// A stem of that length with 0 to 3 flags. Origin: the middle of the head's left edge.
[[nodiscard]] QPainterPath StemShape(NoteHead head, bool up, int flags, double length = 3.5);
// Origin: the left edge of the stem, at its tip.
[[nodiscard]] QPainterPath FlagShape(bool up);
// Origin: left edge, on the middle line.
[[nodiscard]] QPainterPath RestShape(NoteHead value, int flags);
// Origin: its middle.
[[nodiscard]] QPainterPath DotShape();

}  // namespace ts5
