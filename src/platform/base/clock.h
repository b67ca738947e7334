// Dates and times as people write them.
#pragma once

#include <chrono>
#include <compare>
#include <string>

#include "platform/base/outcome.h"

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

[[nodiscard]] CivilTime UtcTime(std::chrono::system_clock::time_point moment);
[[nodiscard]] CivilTime LocalTime(std::chrono::system_clock::time_point moment);
[[nodiscard]] inline CivilTime LocalNow() {
  return LocalTime(std::chrono::system_clock::now());
}

// When the file was last changed; SourceFailed when there is none.
[[nodiscard]] Result<std::chrono::system_clock::time_point> ModificationTime(const std::string& path);

}  // namespace ts5
