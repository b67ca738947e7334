// Dates that are shown to users or written into files.
#pragma once

#include <chrono>
#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

using CalendarDate = std::chrono::year_month_day;

// The parts as plain numbers, for printf formats.
struct DateNumbers {
  int day;
  int month;
  int year;
};
[[nodiscard]] constexpr DateNumbers NumbersOf(CalendarDate date) {
  return {static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(static_cast<unsigned>(date.month())), static_cast<int>(date.year())};
}

// Today in universal time.
[[nodiscard]] CalendarDate TodayUtc();
// The day, in local time, on which the file was last written. SourceFailed: there is none.
[[nodiscard]] Result<CalendarDate> LastWriteDate(const std::string& path);

}  // namespace ts5
