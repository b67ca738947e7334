#include "midi/tempo_map.h"

#include <algorithm>
#include <iterator>

namespace ts5 {
namespace {

// Longer than any music: sums of hostile delta times stop here.
constexpr double kLongestSeconds = 100.0 * 24 * 3600;

std::chrono::nanoseconds Nanoseconds(double seconds) {
  return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(seconds, kLongestSeconds) * 1e9));
}

}  // namespace

TempoMap::TempoMap(std::uint16_t division, std::vector<TempoEvent> events) {
  std::ranges::stable_sort(events, {}, &TempoEvent::tick);
  const auto secondsPerTick = [division](std::uint32_t quarter) { return quarter / 1e6 / division; };
  changes_.push_back({0, 0, secondsPerTick(TempoEvent{}.quarter)});
  for (const TempoEvent& event : events) {
    const Change& last = changes_.back();
    const double seconds = last.seconds + static_cast<double>(event.tick - last.tick) * last.secondsPerTick;
    if (event.tick == last.tick) changes_.pop_back();
    changes_.push_back({event.tick, seconds, secondsPerTick(event.quarter)});
  }
}

std::chrono::nanoseconds TempoMap::TimeOf(std::uint64_t tick) const {
  const auto next = std::ranges::upper_bound(changes_, tick, {}, &Change::tick);
  const Change& change = *std::prev(next);
  return Nanoseconds(change.seconds + static_cast<double>(tick - change.tick) * change.secondsPerTick);
}

std::uint64_t TempoMap::TickAt(std::chrono::nanoseconds time) const {
  const double seconds = static_cast<double>(std::max<std::int64_t>(time.count(), 0)) / 1e9;
  const auto next = std::ranges::upper_bound(changes_, seconds, {}, &Change::seconds);
  const Change& change = *std::prev(next);
  const auto ticks = static_cast<std::uint64_t>((seconds - change.seconds) / change.secondsPerTick);
  const std::uint64_t tick = change.tick + ticks;
  return TimeOf(tick + 1) <= time ? tick + 1 : tick;  // where the division fell short of a whole number
}

}  // namespace ts5
