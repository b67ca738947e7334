// The two bars of music around a hit, as one line of notes: for lists in which one wants to see whether it is
// the melody that was meant.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

#include "frame/search_hit.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "preview/engraving.h"
#include "preview/sketch.h"

namespace ts5::preview {

inline constexpr std::size_t kBarsOfHit = 2;

// Lengths in staff spaces; y 0 is the top line of the staff.
struct MusicLine {
  Sketch sketch;
  double width = 0;
  double top = 0;
  double bottom = 4;

  [[nodiscard]] double Height() const { return bottom - top; }
};

// Draws one hit after another. Hits of one score follow each other, so the score read last is kept. Used by
// one thread at a time.
class HitLines {
 public:
  HitLines();
  ~HitLines();

  // notes: how many the melody has. What reading its file gives; DamagedMidi and DamagedScore where the file
  // does not have the hit any more; Cancelled.
  [[nodiscard]] Result<MusicLine> Draw(const SearchHit& hit, std::size_t notes,
                                       const CancelCheck& cancelled = {});

 private:
  std::string path_;
  std::unique_ptr<Engraving> score_;
};

// The bar in which a hit begins, by its index; nothing where the score does not have the hit any more. Hits
// themselves count bars from the first full one.
[[nodiscard]] std::optional<std::size_t> BarOfHit(const ScoreMusic& music, const SearchHit& hit);

// Bars of one staff, each as wide as it is by itself; with what stands over the top staff of a system: bar
// number, tempo, endings.
[[nodiscard]] MusicLine DrawBars(const Engraving& engraving, std::size_t staff, std::size_t first,
                                 std::size_t last, bool headed);

}  // namespace ts5::preview
