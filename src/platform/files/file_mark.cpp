#include "platform/files/file_mark.h"

#include <filesystem>
#include <system_error>

#include "platform/files/file_steps.h"

namespace ts5 {

std::optional<FileMark> MarkOf(const std::string& path) {
  const auto status = StatusOf(path, true);
  if (!status) return std::nullopt;
  constexpr std::int64_t kNanoseconds = 1'000'000'000;
  return FileMark{{static_cast<std::uint64_t>(status->st_dev), static_cast<std::uint64_t>(status->st_ino)},
                  static_cast<std::uint64_t>(status->st_size),
                  status->st_mtim.tv_sec * kNanoseconds + status->st_mtim.tv_nsec};
}

std::optional<std::string> FindMarked(const std::string& directory, const FileMark& mark) {
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(directory, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    if (IsStagedName(entry->path().filename().native())) continue;
    if (MarkOf(entry->path().native()) == mark) return entry->path().native();
  }
  return std::nullopt;
}

}  // namespace ts5
