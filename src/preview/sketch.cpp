#include "preview/sketch.h"

#include "platform/base/text.h"

namespace ts5::preview {

void Sketch::Add(const Sketch& other, double dx, double dy) {
  for (SignMark mark : other.signs) {
    mark.x += dx;
    mark.y += dy;
    signs.push_back(mark);
  }
  for (LineMark mark : other.lines) {
    mark.x1 += dx;
    mark.x2 += dx;
    mark.y1 += dy;
    mark.y2 += dy;
    lines.push_back(mark);
  }
  for (CurveMark mark : other.curves) {
    mark.x1 += dx;
    mark.x2 += dx;
    mark.y1 += dy;
    mark.y2 += dy;
    curves.push_back(mark);
  }
  for (TextMark mark : other.texts) {
    mark.x += dx;
    mark.y += dy;
    texts.push_back(std::move(mark));
  }
}

double TextWidth(const std::string& text, double size, TextStyle style) {
  // Of a character, in heights: what the wider ones of the usual serif fonts have.
  const bool bold = style == TextStyle::Bold || style == TextStyle::BoldItalic;
  return static_cast<double>(CharacterCount(text)) * size * (bold ? 0.68 : 0.58);
}

}  // namespace ts5::preview
