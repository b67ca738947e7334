#include "disc/drive_choice.h"

#include <algorithm>

#include "frame/cd_tracks.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {
namespace {

std::string PathOf(const std::string& drive) {
  return IsCdDrive(drive) ? drive : CdDirectoryOf(drive).value_or("");
}

}  // namespace

std::string RecorderPath(const Run& run) {
  if (!run.Devices().recorder.empty()) return PathOf(run.Devices().recorder);
  const auto writers = CdWriters();
  if (writers.empty()) return {};
  const auto index = static_cast<std::size_t>(std::max(run.GetJob().destinationDevice, 0));
  return writers[std::min(index, writers.size() - 1)].path;
}

std::string SourceDrivePath(const Run& run) {
  if (!run.Devices().source.empty()) return PathOf(run.Devices().source);
  return IsCdDrive(run.GetJob().directory.path) ? run.GetJob().directory.path : std::string();
}

}  // namespace ts5::disc
