// What is drawn of a page of music, without a painter: signs, lines, curves and texts. Lengths are staff
// spaces (the distance of two lines), x to the right and y down.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace ts5::preview {

enum class Sign : std::uint8_t {
  TrebleClef,
  BassClef,
  AltoClef,
  PercussionClef,
  BreveHead,
  WholeHead,
  HalfHead,
  FilledHead,
  CrossHead,
  DiamondHead,
  TriangleHead,
  SlashHead,
  DoubleFlat,
  Flat,
  Natural,
  Sharp,
  DoubleSharp,
  WholeRest,
  HalfRest,
  QuarterRest,
  EighthRest,
  SixteenthRest,
  ThirtySecondRest,
  FlagUp,  // of a stem that points up
  FlagDown,
  Dot,
  Fermata,
  Accent,
  StrongAccent,
  Staccatissimo,
  Tenuto,
  Arpeggio,  // a wave of one space, downwards
  Brace,     // of one space height, at the left of x; to be stretched
};

struct SignMark {
  Sign sign{};
  double x = 0;  // left edge, on the line or the middle of what it stands at
  double y = 0;
  double size = 1;
  double stretch = 1;  // of its height
  bool upsideDown = false;
};
struct LineMark {
  double x1 = 0;
  double y1 = 0;
  double x2 = 0;
  double y2 = 0;
  double width = 0.1;  // of a beam: its height
  bool dashed = false;
  bool beam = false;  // ends are upright
};
// A tie or slur: thin at its ends.
struct CurveMark {
  double x1 = 0;
  double y1 = 0;
  double x2 = 0;
  double y2 = 0;
  double height = 1;  // of its middle over the straight line; below 0 upwards
};
enum class TextStyle : std::uint8_t { Plain, Italic, Bold, BoldItalic };
enum class TextAlign : std::uint8_t { Left, Centre, Right };
struct TextMark {
  double x = 0;  // of the alignment
  double y = 0;  // base line
  std::string text = {};
  double size = 2;  // height of the font
  TextStyle style = TextStyle::Plain;
  TextAlign align = TextAlign::Left;
  bool framed = false;
};

struct Sketch {
  std::vector<SignMark> signs = {};
  std::vector<LineMark> lines = {};
  std::vector<CurveMark> curves = {};
  std::vector<TextMark> texts = {};

  void Add(const Sketch& other, double dx, double dy);
};

// How wide a text is at most, about; the painter knows it exactly.
[[nodiscard]] double TextWidth(const std::string& text, double size, TextStyle style = TextStyle::Plain);

}  // namespace ts5::preview
