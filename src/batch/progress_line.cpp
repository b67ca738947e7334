#include "batch/progress_line.h"

#include "platform/base/text.h"

namespace ts5::batch {

void ProgressLine::Show(std::string_view text) {
  if (!shown_) return;
  // The last column stays free: some terminals go to the next line when it is written.
  const std::string_view visible = FirstCharacters(text, console_.width > 1 ? console_.width - 1 : 1);
  if (visible == current_) return;
  console_.err << '\r' << visible << "\x1b[K" << std::flush;
  current_ = visible;
}

void ProgressLine::Clear() {
  if (current_.empty()) return;
  console_.err << "\r\x1b[K" << std::flush;
  current_.clear();
}

}  // namespace ts5::batch
