// A sketch that knows where something stands already, so that texts find a free place.
#pragma once

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "preview/sketch.h"

namespace ts5::preview {

class Canvas {
 public:
  void Put(Sign sign, double x, double y, double size = 1, bool upsideDown = false) {
    sketch_.signs.push_back({sign, x, y, size, 1, upsideDown});
  }
  void Line(double x1, double y1, double x2, double y2, double width, bool dashed = false) {
    sketch_.lines.push_back({x1, y1, x2, y2, width, dashed, false});
  }
  void Beam(double x1, double y1, double x2, double y2, double height) {
    sketch_.lines.push_back({x1, y1, x2, y2, height, false, true});
  }
  void Curve(double x1, double y1, double x2, double y2, double height) {
    sketch_.curves.push_back({x1, y1, x2, y2, height});
  }
  // And takes its place.
  void Text(TextMark text) {
    const double width = TextWidth(text.text, text.size, text.style);
    const double left = text.align == TextAlign::Left     ? text.x
                        : text.align == TextAlign::Centre ? text.x - width / 2
                                                          : text.x - width;
    Take(left, text.y - 0.8 * text.size, left + width, text.y + 0.25 * text.size);
    sketch_.texts.push_back(std::move(text));
  }

  // Something lies in this box.
  void Take(double x1, double y1, double x2, double y2) {
    taken_.push_back({x1, y1, x2, y2});
    top_ = std::min(top_, y1);
    bottom_ = std::max(bottom_, y2);
  }
  // The highest and the lowest that is taken between x1 and x2, the staff lines included.
  [[nodiscard]] double Above(double x1, double x2) const {
    double top = 0;
    for (const Box& box : taken_) {
      if (box.x1 < x2 && box.x2 > x1) top = std::min(top, box.y1);
    }
    return top;
  }
  [[nodiscard]] double Below(double x1, double x2) const {
    double bottom = 4;
    for (const Box& box : taken_) {
      if (box.x1 < x2 && box.x2 > x1) bottom = std::max(bottom, box.y2);
    }
    return bottom;
  }
  [[nodiscard]] double Top() const { return top_; }
  [[nodiscard]] double Bottom() const { return bottom_; }
  [[nodiscard]] Sketch Release() { return std::move(sketch_); }

 private:
  struct Box {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
  };
  Sketch sketch_;
  std::vector<Box> taken_;
  double top_ = 0;
  double bottom_ = 4;
};

}  // namespace ts5::preview
