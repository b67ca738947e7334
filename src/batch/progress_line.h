// The one line of a terminal that rewrites itself.
#pragma once

#include <string>
#include <string_view>

#include "batch/console.h"

namespace ts5::batch {

class ProgressLine {
 public:
  // Shows nothing when shown is false or nobody watches.
  ProgressLine(Console& console, bool shown) : console_(console), shown_(shown && console.terminal) {}
  ~ProgressLine() { Clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // Replaces the line; a text wider than the terminal is cut.
  void Show(std::string_view text);
  // Takes the line away before something else is written; the next Show brings it back.
  void Clear();

 private:
  Console& console_;
  bool shown_;
  std::string current_;
};

}  // namespace ts5::batch
