// The tempo map of a MIDI file: ticks to time and back, by its Set Tempo events.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

namespace ts5 {

struct TempoEvent {
  std::uint64_t tick = 0;
  std::uint32_t quarter = 500'000;  // microseconds of a quarter note, above 0

  friend bool operator==(const TempoEvent&, const TempoEvent&) = default;
};

class TempoMap {
 public:
  // 120 quarter notes a minute at a division of 480.
  TempoMap() : TempoMap(480, {}) {}
  // division: ticks per quarter note, above 0. The events in any order; of those at one tick the last counts.
  // Before the first one the tempo is 120 quarter notes a minute.
  TempoMap(std::uint16_t division, std::vector<TempoEvent> events);

  // Where a tick lies in time; at most 100 days.
  [[nodiscard]] std::chrono::nanoseconds TimeOf(std::uint64_t tick) const;
  // The last tick at or before the time.
  [[nodiscard]] std::uint64_t TickAt(std::chrono::nanoseconds time) const;

 private:
  struct Change {
    std::uint64_t tick = 0;
    double seconds = 0;         // where the change lies
    double secondsPerTick = 0;  // from there on
  };
  std::vector<Change> changes_;  // never empty; the first is at tick 0
};

}  // namespace ts5
