#include "preview/sketch.h"

#include <utility>

#include "platform/base/text.h"

namespace ts5::preview {

namespace {

template <typename Mark>
void AddMoved(std::vector<Mark>& to, const std::vector<Mark>& marks, double dx, double dy) {
  for (Mark mark : marks) {
    if constexpr (requires { mark.x1; }) {
      mark.x1 += dx;
      mark.x2 += dx;
      mark.y1 += dy;
      mark.y2 += dy;
    } else {
      mark.x += dx;
      mark.y += dy;
    }
    to.push_back(std::move(mark));
  }
}

}  // namespace

void Sketch::Add(const Sketch& other, double dx, double dy) {
  AddMoved(signs, other.signs, dx, dy);
  AddMoved(lines, other.lines, dx, dy);
  AddMoved(curves, other.curves, dx, dy);
  AddMoved(texts, other.texts, dx, dy);
}

double TextWidth(const std::string& text, double size) {
  constexpr double kMean = 0.5;  // of a character, in heights
  return static_cast<double>(CharacterCount(text)) * size * kMean;
}

}  // namespace ts5::preview
