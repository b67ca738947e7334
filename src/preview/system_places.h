// Where the bars and notes of one system lie.
#pragma once

#include <vector>

#include "preview/engraving.h"

namespace ts5::preview {

// The bars of a system and where they lie.
struct SystemPlaces {
  std::size_t first = 0;  // bars
  std::size_t last = 0;   // behind the last one
  double left = 0;        // of the staff lines
  double right = 0;
  double stretch = 1;             // of the space between columns
  std::vector<double> bars = {};  // left edges, and the right edge of the last one

  // Where something at this place of the score stands.
  [[nodiscard]] double X(const Engraving& engraving, Fraction at) const;
};

inline constexpr double kSystemStart = 0.7;  // from the left edge to the first sign

// The signs at the start of a system, and their width.
[[nodiscard]] double PrefixWidth(const Engraving& engraving, std::size_t bar);

}  // namespace ts5::preview
