#include "platform/base/clock.h"

#include <sys/stat.h>

#include <ctime>

namespace ts5 {
namespace {

CivilTime Civil(const std::tm& time) {
  return {time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min, time.tm_sec};
}

std::time_t Seconds(std::chrono::system_clock::time_point moment) {
  return std::chrono::floor<std::chrono::seconds>(moment).time_since_epoch().count();
}

}  // namespace

CivilTime UtcTime(std::chrono::system_clock::time_point moment) {
  const std::time_t seconds = Seconds(moment);
  std::tm time{};
  return ::gmtime_r(&seconds, &time) == nullptr ? CivilTime{} : Civil(time);
}

CivilTime LocalTime(std::chrono::system_clock::time_point moment) {
  const std::time_t seconds = Seconds(moment);
  std::tm time{};
  return ::localtime_r(&seconds, &time) == nullptr ? CivilTime{} : Civil(time);
}

Result<std::chrono::system_clock::time_point> ModificationTime(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return Failure(Outcome::SourceFailed);
  const auto sinceEpoch =
      std::chrono::seconds(status.st_mtim.tv_sec) + std::chrono::nanoseconds(status.st_mtim.tv_nsec);
  return std::chrono::system_clock::time_point(
      std::chrono::duration_cast<std::chrono::system_clock::duration>(sinceEpoch));
}

}  // namespace ts5
