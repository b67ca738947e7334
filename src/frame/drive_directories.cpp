#include "frame/drive_directories.h"

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr char kBetween = '|';  // a directory with it in its name is not kept
constexpr int kMostKept = 40;

}  // namespace

std::string WithDirectory(std::string_view kept, std::string_view directory, const VolumeTable& volumes) {
  const int drive = volumes.DriveOfPath(directory);
  if (drive == kNoDrive || directory.find(kBetween) != std::string_view::npos) return std::string(kept);
  std::string all(directory);
  int count = 1;
  for (const std::string_view other : Split(kept, kBetween)) {
    if (other.empty() || other == directory || count == kMostKept) continue;
    // That of a medium that is not there now lies on another drive for the time being.
    if (volumes.DriveOfPath(other) == drive && IsDirectory(std::string(other))) continue;
    all += kBetween + std::string(other);
    ++count;
  }
  return all;
}

std::optional<std::string> DirectoryOn(std::string_view kept, int drive, const VolumeTable& volumes) {
  for (const std::string_view one : Split(kept, kBetween)) {
    std::string directory(one);
    if (IsAbsolutePath(directory) && volumes.DriveOfPath(directory) == drive && IsDirectory(directory))
      return directory;
  }
  return std::nullopt;
}

}  // namespace ts5
