#include "modules/measured_times.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <system_error>

#include "audio/playing_time.h"

namespace ts5 {
namespace {

struct Measured {
  std::filesystem::file_time_type changed;
  std::uint64_t time = 0;
};

}  // namespace

std::uint64_t MeasuredTime(const FileListEntry& entry) {
  static std::mutex mutex;
  static std::map<std::string, Measured> known;
  std::error_code fault;
  const auto changed = std::filesystem::last_write_time(entry.path, fault);
  if (fault) return 0;
  const std::lock_guard lock(mutex);
  const auto [found, isNew] = known.try_emplace(entry.path);
  if (isNew || found->second.changed != changed) found->second = {changed, PlayingTimeOf(entry)};
  return found->second.time;
}

}  // namespace ts5
