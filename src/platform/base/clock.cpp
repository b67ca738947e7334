#include "platform/base/clock.h"

#include <ctime>

namespace ts5 {

CivilTime LocalTime(std::chrono::system_clock::time_point moment) {
  const std::time_t seconds = std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
  std::tm time{};
  if (::localtime_r(&seconds, &time) == nullptr) return {};
  return {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec};
}

}  // namespace ts5
