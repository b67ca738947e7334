#include "platform/disc/recorder_tray.h"

#include <sys/stat.h>

#include <filesystem>

#include "platform/base/text.h"
#include "platform/disc/drive_claim.h"
#include "platform/disc/recorded_disc.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kTrayOut = "out";

std::string TrayFile() {
  return JoinPath(VirtualRecorderDirectory(), "disc");
}

Result<DriveClaim> ClaimToChange() {
  if (const Outcome made = MakeDirectories(VirtualRecorderDirectory()); Failed(made)) return Failure(made);
  auto claim = DriveClaim::TakeSoon(VirtualRecorderDirectory());
  if (!claim && claim.error() != Outcome::InUse) return Failure(Outcome::TargetFailed);
  return claim;
}

Outcome PutIn(const std::string& directory) {
  if (const auto disc = RecordedDisc::Load(directory); !disc) return disc.error();
  std::error_code error;
  const std::string path = std::filesystem::absolute(directory, error).lexically_normal().string();
  if (error) return Outcome::SourceFailed;
  return WriteRecorderTray({.disc = path, .open = false});
}

}  // namespace

RecorderTray ReadRecorderTray() {
  constexpr std::size_t kMost = 4096;
  const auto text = ReadFileStart(TrayFile(), kMost);
  if (!text) return {};
  const auto lines = Split(AsText(*text), '\n');
  return {std::string(lines[0]), lines.size() > 1 && lines[1] == kTrayOut};
}

Outcome InsertBlankDisc(const std::string& directory, int minutes, bool rewritable) {
  const auto claim = ClaimToChange();
  if (!claim) return claim.error();
  if (const Outcome made = RecordedDisc::MakeBlank(directory, minutes, rewritable); Failed(made)) return made;
  return PutIn(directory);
}

Outcome InsertRecordedDisc(const std::string& directory) {
  const auto claim = ClaimToChange();
  return claim ? PutIn(directory) : claim.error();
}

Outcome WriteRecorderTray(const RecorderTray& tray) {
  if (const Outcome made = MakeDirectories(VirtualRecorderDirectory()); Failed(made)) return made;
  return WriteFile(TrayFile(), AsBytes(tray.disc + "\n" + (tray.open ? std::string(kTrayOut) + "\n" : "")));
}

TrayMark MarkOfTray() {
  struct stat status {};
  if (::stat(TrayFile().c_str(), &status) != 0) return {};
  return {status.st_ino, std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec};
}

}  // namespace ts5
