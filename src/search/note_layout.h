// Where the note editor draws: places of the elements on the one-line staff. Pure geometry, so that the
// control only paints and the rule "no room for another note" needs no window.
//
// Lengths are in pixels at 96 dpi, x from the control's left edge. Heights are staff places: 0 is the lowest
// line, 8 the highest, every line and every space counts one.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "search/search_melody.h"

namespace ts5 {

inline constexpr double kStaffSpace = 8.0;  // distance of two lines
inline constexpr double kStaffLeft = 8.0;   // left end of the lines
inline constexpr double kRoomForAnotherNote = 30.0;

enum class NoteHead { Whole, Half, Filled };

struct NotePlace {
  bool rest = false;
  double x = 0;   // left edge of the head or rest
  int place = 4;  // staff place of the head; rests stand in the middle
  Accidental accidental = Accidental::None;
  double accidentalX = 0;
  NoteHead head = NoteHead::Filled;
  int flags = 0;  // 0 for quarters and longer, 1 eighth .. 3 thirty-second
  bool dotted = false;
  bool stem = true;  // whole notes and rests have none
  bool stemUp = true;
  double stemLength =
      3.5;  // in staff spaces, from the head; of notes far from the staff up to the middle line
  std::vector<int> ledgerLines;  // staff places
};

// The staff place of a key as it is written.
[[nodiscard]] int StaffPlace(std::int16_t pitch, Clef clef);
[[nodiscard]] std::vector<int> LedgerLines(int place);
// The natural key that is written there, which may lie outside 0..127.
[[nodiscard]] int KeyAtPlace(int place, Clef clef);
[[nodiscard]] bool IsBlackKey(int key);

// One place per element.
[[nodiscard]] std::vector<NotePlace> LayOutNotes(std::span<const MelodyElement> elements, Clef clef);
// x of the insertion mark before the element at position (0..count).
[[nodiscard]] double CursorX(std::span<const MelodyElement> elements, std::size_t position);
// The insertion position nearest to x, for a click.
[[nodiscard]] std::size_t PositionAt(std::span<const MelodyElement> elements, double x);
// The element whose head or rest lies at x and a staff place, for a click.
[[nodiscard]] std::optional<std::size_t> ElementAt(std::span<const MelodyElement> elements, Clef clef,
                                                   double x, int place);
// Whether another element has its place on a staff of the width.
[[nodiscard]] bool HasRoomForNote(std::span<const MelodyElement> elements, double width);

}  // namespace ts5
