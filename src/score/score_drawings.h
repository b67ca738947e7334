// The drawing objects that hang on the note groups of a score: which fields each kind has, and what of them
// is heard.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "score/jump_words.h"
#include "score/score_source.h"

namespace ts5 {

enum class DrawingKind : std::uint8_t {
  Group = 0,
  FlaggedGroup = 1,
  Shape = 2,
  Text = 3,
  OtherShape = 4,
  MarkedLine = 5,
  Line = 6,
  Curve = 7,
  EndedLine = 8,
  FourPointCurve = 9,
  FormShape = 10,
  Hairpin = 11,
  Volta = 12,
  OtherEndedLine = 13,
  Frame = 14,
  Mark = 15,  // the kinds above have no data
};

// The fields behind the kind byte, one letter each:
//   h header   s CompactSigned   1 2 4 so many bytes   c colour   b blob   f optional frame
//   v the byte that the reader keeps   t the blob that it keeps   n nested list   p list of points
//   o form byte: 1 or 2 alone, 11 bytes behind any other
inline constexpr std::array<std::string_view, 16> kDrawingFields = {
    "hssn",         // group
    "hss1ns",       // group with a flag
    "hssssb",       // shape with data
    "hss1ft",       // text
    "hssssb",       // shape with data
    "hssssc1s1c",   // line with an end mark
    "hssssc1",      // line
    "4s2p2cc",      // curve
    "hssssc12",     // line with ends
    "hssssssssc4",  // four-point curve
    "hsssco",       // shape with a form
    "hssssc1v",     // hairpin
    "hsssc1v",      // volta bracket
    "hssssc12",     // line with ends
    "hssc24",       // frame
    "hsssc1",       // mark
};

// Lists may be nested so deep; a file that goes deeper is damaged.
inline constexpr int kMaxDrawingDepth = 64;

// The values of a mark that are no loudness but an accent of the moment.
inline constexpr std::int8_t kForcePiano = -1;
inline constexpr std::int8_t kLeastMomentaryAccent = -4;

// What the drawing objects of a group say about its sound. Later objects take the place of earlier ones.
struct DrawnMarks {
  std::uint8_t articulation = 0;  // code, 0 none
  bool marked = false;            // a mark that MIDI files show
  std::int8_t dynamic = 0;        // level 1..127, or -1 (fp) to -4; 0 none
  bool hairpin = false;
  bool diminuendo = false;
  std::uint16_t hairpinSpan = 0;  // in note groups
  std::uint16_t curveSpan = 0;    // of a four-point curve; 0 none
  std::uint8_t firstEnding = 0;   // a volta bracket with the numbers from here
  std::uint8_t lastEnding = 0;    // to here, 1..15; 0 none
  std::uint16_t endingSpan = 0;   // chords that the bracket reaches over; 0 to the repeat end
  JumpWords jump;
};

// What is kept of the fields of one object.
struct DrawingFields {
  std::uint16_t span = 0;
  std::uint8_t value = 0;
  ByteView text;
};
// Any field but a nested list.
void ReadDrawingField(ScoreSource& in, char field, DrawingFields& fields);
// What an object of this kind says about the sound; nested ones speak for themselves.
void ApplyDrawing(DrawingKind kind, const DrawingFields& fields, DrawnMarks& marks);

// Reads a list with everything in it; marks is added to.
void ReadDrawings(ScoreSource& in, DrawnMarks& marks);

// What a text means for the sound, in the symbol font of the notation program.
void ApplyDrawnText(std::string_view text, DrawnMarks& marks);

}  // namespace ts5
