#include "platform/disc/volumes.h"

#include <algorithm>
#include <filesystem>

#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/base/texts.h"
#include "platform/disc/cd_drive.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kMediaDirectories[] = {"/media/", "/run/media/", "/mnt/"};

struct Mount {
  std::string point;
  std::string source;
};

// Blanks and the like stand as \040 in the list of mounts.
std::string Unescaped(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto digit = [&](std::size_t at) { return at < text.size() ? text[at] - '0' : -1; };
    const int high = digit(i + 1);
    const int middle = digit(i + 2);
    const int low = digit(i + 3);
    const auto octal = [](int d) { return d >= 0 && d < 8; };
    if (text[i] == '\\' && octal(high) && high < 4 && octal(middle) && octal(low)) {
      plain += static_cast<char>(high * 64 + middle * 8 + low);
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

// The mounts that stand for a medium of the user: what lies in one of the directories for media and comes
// from a device or another machine. A later mount on the same place hides the earlier one.
std::vector<Mount> MediaOf(std::string_view mountInfo) {
  std::vector<Mount> media;
  for (const std::string_view line : Split(mountInfo, '\n')) {
    const auto fields = Split(line, ' ');
    const auto dash = std::ranges::find(fields, "-");
    if (fields.size() < 5 || fields.end() - dash < 3) continue;
    Mount mount{Unescaped(fields[4]), Unescaped(dash[2])};
    const bool inPlace = std::ranges::any_of(kMediaDirectories,
                                             [&](std::string_view d) { return mount.point.starts_with(d); });
    const std::string_view source = mount.source;
    if (!inPlace || !(source.starts_with("/dev/") || source.starts_with("//") ||
                      source.find(":/") != std::string_view::npos))
      continue;
    std::erase_if(media, [&](const Mount& earlier) { return earlier.point == mount.point; });
    media.push_back(std::move(mount));
  }
  return media;
}

// The entry of a directory that is the name without regard to case; nothing when there is none.
std::optional<std::string> EntryIgnoringCase(const std::string& directory, std::string_view name) {
  std::optional<std::string> best;
  std::error_code error;
  for (fs::directory_iterator entry(directory, fs::directory_options::skip_permission_denied, error), end;
       !error && entry != end; entry.increment(error)) {
    std::string candidate = entry->path().filename().string();
    if (EqualsIgnoringCase(candidate, name) && (!best || candidate < *best)) best = std::move(candidate);
  }
  return best;
}

bool HoldsPath(std::string_view directory, std::string_view path) {
  if (directory.empty() || !path.starts_with(directory)) return false;
  return directory.back() == '/' || path.size() == directory.size() || path[directory.size()] == '/';
}

// kNoDrive when it is none of c to z, in either case.
int DriveOfLetter(char letter) {
  if (letter >= 'C' && letter <= 'Z') return letter - 'C';
  return letter >= 'c' && letter <= 'z' ? letter - 'c' : kNoDrive;
}

}  // namespace

VolumeTable VolumeTable::Of(std::string_view home, std::string_view mountInfo,
                            const std::vector<std::string>& opticalDevices) {
  using Kind = Volume::Kind;
  VolumeTable table;
  auto& volumes = table.volumes_;
  volumes.push_back({Kind::Home, std::string(Text(texts::VolumeHome)), NormalisedPath(home), ""});
  volumes.push_back({Kind::Root, std::string(Text(texts::VolumeRoot)), "/", ""});
  const auto media = MediaOf(mountInfo);
  for (const Mount& mount : media) {
    if (std::ranges::find(opticalDevices, mount.source) != opticalDevices.end()) continue;
    volumes.push_back({Kind::Medium, std::string(FileNameOf(mount.point)), mount.point, mount.source});
  }
  for (const std::string& device : opticalDevices) {
    const auto disc = std::ranges::find(media, device, &Mount::source);
    Volume drive{Kind::Optical, std::string(Text(texts::VolumeOptical)), device, device};
    if (disc != media.end()) {
      drive.path = disc->point;
      drive.name = FileNameOf(disc->point);
    }
    volumes.push_back(std::move(drive));
  }
  if (volumes.size() > kMaxDrives) volumes.resize(kMaxDrives);
  return table;
}

VolumeTable VolumeTable::OfThisMachine() {
  const auto mounts = ReadFile("/proc/self/mountinfo");
  VolumeTable table = Of(HomeDirectory(), mounts ? AsText(*mounts) : std::string_view{}, CdDeviceFiles());
  table.AddVirtualCd(VirtualCdDirectory());
  table.AddVirtualRecorder(VirtualRecorderDirectory());
  return table;
}

void VolumeTable::AddVirtualCd(const std::string& directory) {
  if (volumes_.size() < kMaxDrives)
    volumes_.push_back({Volume::Kind::Optical, std::string(Text(texts::VolumeVirtualCd)), directory, ""});
}

void VolumeTable::AddVirtualRecorder(const std::string& directory) {
  if (volumes_.size() < kMaxDrives)
    volumes_.push_back(
        {Volume::Kind::Optical, std::string(Text(texts::VolumeVirtualRecorder)), directory, ""});
}

const Volume* VolumeTable::Find(int drive) const {
  return drive >= 0 && std::cmp_less(drive, volumes_.size()) ? &volumes_[static_cast<std::size_t>(drive)]
                                                             : nullptr;
}

std::string VolumeTable::DisplayText(int drive) const {
  const Volume* const volume = Find(drive);
  return volume == nullptr ? "" : Format(Text(texts::VolumeDisplay), volume->name, LetterOfDrive(drive));
}

int VolumeTable::DriveOfPath(std::string_view nativePath) const {
  int best = kNoDrive;
  std::size_t longest = 0;
  for (std::size_t i = 0; i < volumes_.size(); ++i) {
    const std::string& path = volumes_[i].path;
    if (HoldsPath(path, nativePath) && path.size() > longest) {
      longest = path.size();
      best = static_cast<int>(i);
    }
  }
  return best;
}

std::optional<std::string> VolumeTable::NativePath(std::string_view path) const {
  const bool hasLetter = path.size() >= 2 && path[1] == ':' && DriveOfLetter(path[0]) != kNoDrive;
  if (!hasLetter) return std::string(path);
  const Volume* const volume = Find(DriveOfLetter(path[0]));
  if (volume == nullptr || volume->path.empty()) return std::nullopt;

  const std::string whole =
      NormalisedPath(std::string(path.substr(0, 2)) + "\\" + std::string(path.substr(2)));
  std::string native = volume->path;
  bool exists = true;
  for (const std::string_view part : Split(std::string_view(whole).substr(3), '\\')) {
    if (part.empty()) continue;
    std::string next = JoinPath(native, part);
    exists = exists && IsDirectory(native);
    if (exists && !FileExists(next)) {
      const auto entry = EntryIgnoringCase(native, part);
      exists = entry.has_value();
      if (entry) next = JoinPath(native, *entry);
    }
    native = std::move(next);
  }
  return native;
}

std::optional<std::string> VolumeTable::FindPath(std::string_view path) const {
  auto native = NativePath(path);
  if (!native || !FileExists(*native)) return std::nullopt;
  return native;
}

}  // namespace ts5
