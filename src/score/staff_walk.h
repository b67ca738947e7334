// Goes through the items of a document's staves in the order in which they sound, with what is in force
// there.
#pragma once

#include <algorithm>
#include <optional>
#include <vector>

#include "score/score_document.h"

namespace ts5 {

// The time signatures of a score, each with the place from which it holds. 4/4 before the first one.
class TimesInForce {
 public:
  // One that is not usable, or no other than the last, changes nothing.
  void Take(ScoreTimeSignature time, Fraction at) {
    if (!time.Usable() || times_.back().time == time) return;
    times_.push_back({std::max(at, times_.back().at), time});
  }
  [[nodiscard]] ScoreTimeSignature At(Fraction place) const {
    if (times_.back().at <= place) return times_.back().time;
    const auto after = std::ranges::upper_bound(times_, place, {}, &TimeAt::at);
    return after == times_.begin() ? times_.front().time : std::prev(after)->time;
  }

 private:
  struct TimeAt {
    Fraction at;
    ScoreTimeSignature time;
  };
  std::vector<TimeAt> times_ = std::vector<TimeAt>(1);
};

// The voices of a staff in one system side by side: the one that is behind goes on first, of several the
// upper one. take gets a voice, the index of its next item and the place since the system began; it returns
// how long the item lasts, or nothing to leave off. How far the longest voice has come.
template <typename Take>
Fraction WalkVoices(const StaffItems& staff, const Take& take) {
  struct Walker {
    Fraction elapsed;
    std::size_t next = 0;
  };
  std::vector<Walker> walkers(staff.voices.size());
  Fraction longest;
  for (;;) {
    std::size_t voice = walkers.size();
    for (std::size_t v = 0; v < walkers.size(); ++v) {
      if (walkers[v].next == staff.voices[v].size()) continue;
      if (voice == walkers.size() || walkers[v].elapsed < walkers[voice].elapsed) voice = v;
    }
    if (voice == walkers.size()) return longest;
    Walker& walker = walkers[voice];
    const std::optional<Fraction> length = take(voice, walker.next, walker.elapsed);
    if (!length) return longest;
    ++walker.next;
    walker.elapsed += *length;
    longest = std::max(longest, walker.elapsed);
  }
}

}  // namespace ts5
