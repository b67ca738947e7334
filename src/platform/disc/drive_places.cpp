// Where the disc drives of this machine are, known without asking a drive: apart from what drives do, so that
// a program that only lists places is spared all that.

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/disc/cd_drive.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/directories.h"
#include "platform/files/paths.h"

namespace ts5 {

std::vector<std::string> CdDeviceFiles() {
  std::vector<std::string> files;
  std::error_code error;
  for (std::filesystem::directory_iterator entry("/sys/class/block", error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename().string();
    if (name.starts_with("sr")) files.push_back("/dev/" + name);
  }
  std::ranges::sort(files);
  return files;
}

std::string VirtualCdDirectory() {
  return JoinPath(ProgramDirectory(), "virtual-cd");
}

std::string VirtualRecorderDirectory() {
  return JoinPath(ProgramDirectory(), "virtual-recorder");
}

}  // namespace ts5
