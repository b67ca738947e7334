// Dates and times as people write them.
#pragma once

#include <chrono>
#include <compare>

namespace ts5 {

struct CivilTime {
  int year = 1970;
  int month = 1;  // 1 to 12
  int day = 1;    // 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;  // 60 in a leap second

  auto operator<=>(const CivilTime&) const = default;
};

[[nodiscard]] CivilTime LocalTime(std::chrono::system_clock::time_point moment);
[[nodiscard]] inline CivilTime LocalNow() {
  return LocalTime(std::chrono::system_clock::now());
}

}  // namespace ts5
