// A staff of one system whose notes are drawn and whose marks are to come.
#pragma once

#include <vector>

#include "preview/canvas.h"
#include "preview/placed_slice.h"

namespace ts5::preview {

struct MarkedStaff {
  const Engraving& engraving;
  const SystemPlaces& places;
  std::size_t staff = 0;
  const std::vector<PlacedVoice>& voices;
  Canvas& canvas;
  Fraction from;  // of the system
  Fraction to;
};

inline constexpr double kWordSize = 2.0;  // of texts
inline constexpr double kSmallSize = 1.7;

}  // namespace ts5::preview
