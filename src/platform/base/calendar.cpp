#include "platform/base/calendar.h"

#include <sys/stat.h>

#include <ctime>

namespace ts5 {

CalendarDate TodayUtc() {
  return std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
}

Result<CalendarDate> LastWriteDate(const std::string& path) {
  struct stat status = {};
  struct tm local = {};
  if (stat(path.c_str(), &status) != 0 || localtime_r(&status.st_mtim.tv_sec, &local) == nullptr) {
    return Failure(Outcome::SourceFailed);
  }
  using namespace std::chrono;
  return CalendarDate(year(local.tm_year + 1900), month(static_cast<unsigned>(local.tm_mon + 1)),
                      day(static_cast<unsigned>(local.tm_mday)));
}

}  // namespace ts5
