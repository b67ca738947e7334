#include "converters/tempo_systems.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

namespace ts5::converters {
namespace {

using Events = std::vector<ScoreEvent>;

// The events of a voice that belong to a system.
std::pair<Events::const_iterator, Events::const_iterator> EventsIn(const Events& events,
                                                                   std::uint32_t system) {
  return {std::ranges::lower_bound(events, system, {}, &ScoreEvent::system),
          std::ranges::upper_bound(events, system, {}, &ScoreEvent::system)};
}

class Splitter {
 public:
  Splitter(ScoreDocument& document, const ScoreMusic& music) : document_(document), music_(music) {}

  std::vector<ScoreTempo> Split() {
    std::vector<SystemItems> systems = std::exchange(document_.systems, {});
    auto next = music_.tempos.begin();
    double now = 0;
    for (std::uint32_t s = 0; s < systems.size(); ++s) {
      const Fraction end = EndOf(s);
      for (; next != music_.tempos.end() && next->at <= start_; ++next) now = next->quarters;
      Append(std::move(systems[s]), now);
      cut_.clear();
      for (; next != music_.tempos.end() && next->at < end; ++next) {
        if (CutAt(next->at, s)) {
          now = next->quarters;
          document_.systems.back().tempo = Whole(now);
        } else {
          left_.push_back(*next);
        }
      }
      start_ = end;
    }
    return std::move(left_);
  }

 private:
  static std::uint32_t Whole(double quarters) {
    return quarters <= 0 ? 0 : static_cast<std::uint32_t>(std::max(std::lround(quarters), 1L));
  }

  void Append(SystemItems system, double quarters) {
    if (Whole(quarters) != 0 && Whole(quarters) != system.tempo) {
      system.tempo = Whole(quarters);
      system.record = {};
    }
    document_.systems.push_back(std::move(system));
  }

  // Where the longest voice of a system has ended.
  [[nodiscard]] Fraction EndOf(std::uint32_t system) const {
    Fraction end = start_;
    for (const auto& staff : music_.voices) {
      for (const Events& events : staff) {
        const auto [first, last] = EventsIn(events, system);
        if (first != last) end = std::max(end, std::prev(last)->start + std::prev(last)->length);
      }
    }
    return end;
  }

  // The item of a voice at which it can be cut at a place, counted in the whole system; nothing when it goes
  // on.
  std::optional<std::size_t> ItemAt(const Events& events, const VoiceItems& items, Fraction at,
                                    std::uint32_t system, std::size_t cut) const {
    const auto [first, last] = EventsIn(events, system);
    const auto next = std::lower_bound(
        first, last, at, [](const ScoreEvent& event, Fraction place) { return event.start < place; });
    if (next != first && std::prev(next)->start + std::prev(next)->length > at) return std::nullopt;
    std::size_t item = next == last ? cut + items.size() : next->object;
    if (item < cut || item - cut > items.size()) return std::nullopt;
    // Clefs and signatures stand before what they are for.
    while (item > cut && !items[item - cut - 1].IsGroup() && !items[item - cut - 1].Is(ObjectKind::BarLine) &&
           !items[item - cut - 1].Is(ObjectKind::ChordVariant))
      --item;
    return std::max(item, cut);
  }

  // Cuts the last system; false where that is not possible.
  bool CutAt(Fraction at, std::uint32_t system) {
    SystemItems& whole = document_.systems.back();
    if (cut_.empty()) {
      for (const StaffItems& staff : whole.staves) cut_.emplace_back(staff.voices.size());
    }
    std::vector<std::vector<std::size_t>> places = cut_;
    for (std::size_t i = 0; i < whole.staves.size(); ++i) {
      const StaffItems& staff = whole.staves[i];
      const auto& voices = music_.voices[staff.layout];
      for (std::size_t v = 0; v < staff.voices.size(); ++v) {
        if (v >= voices.size()) return false;
        const auto item = ItemAt(voices[v], staff.voices[v], at, system, cut_[i][v]);
        if (!item) return false;
        places[i][v] = *item;
      }
    }
    SystemItems rest;
    for (std::size_t i = 0; i < whole.staves.size(); ++i) {
      StaffItems& staff = whole.staves[i];
      StaffItems& behind = rest.staves.emplace_back();
      behind.layout = staff.layout;
      behind.time = music_.bars[BarAt(music_, at)].time;
      for (std::size_t v = 0; v < staff.voices.size(); ++v) {
        const auto from = staff.voices[v].begin() + static_cast<std::ptrdiff_t>(places[i][v] - cut_[i][v]);
        behind.voices.emplace_back(std::move_iterator(from), std::move_iterator(staff.voices[v].end()));
        staff.voices[v].erase(from, staff.voices[v].end());
      }
      staff.voiceRecords = {};
    }
    cut_ = std::move(places);
    document_.systems.push_back(std::move(rest));
    return true;
  }

  ScoreDocument& document_;
  const ScoreMusic& music_;
  std::vector<ScoreTempo> left_;
  Fraction start_;                             // of the system
  std::vector<std::vector<std::size_t>> cut_;  // items of it, by staff and voice, that are in systems before
};

}  // namespace

std::vector<ScoreTempo> BeginSystemsAtTempos(ScoreDocument& document, const ScoreMusic& music) {
  if (music.bars.empty()) return {};
  return Splitter(document, music).Split();
}

}  // namespace ts5::converters
