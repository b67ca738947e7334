#include "frame/cd_tracks.h"

#include <algorithm>

#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr int kMaxTrack = 99;

std::string CleanDriveName(std::string_view name) {
  std::string clean(Trim(name));
  std::ranges::replace_if(
      clean, [](char c) { return c == '.' || c == ':'; }, ' ');
  return clean;
}

// "VENDOR PRODUCT" as entries have it.
std::string EntryName(const DriveName& drive) {
  return std::string(DirectoryOf(CdTrackEntry(drive, 1)));
}

// As it stands among the drives: what a drive itself says of its product ends after 16 characters.
std::optional<DriveName> NameOfDrive(const std::string& path) {
  const auto drives = ScanDrives();
  const auto drive = std::ranges::find(drives, path, &CdDriveEntry::path);
  return drive == drives.end() ? std::nullopt : std::optional(drive->name);
}

}  // namespace

std::string CdTrackEntry(const DriveName& drive, int track) {
  return Format(Text(texts::DriveTrackNumber), CleanDriveName(drive.vendor), CleanDriveName(drive.product),
                track);
}

std::string CdTrackEntry(const DriveName& drive, std::string_view trackName) {
  return Format(Text(texts::DriveTrackName), CleanDriveName(drive.vendor), CleanDriveName(drive.product),
                trackName);
}

std::optional<int> TrackNumberOf(std::string_view cdaName) {
  const std::string_view stem = WithoutExtension(cdaName);
  const std::size_t end = stem.find_last_not_of("0123456789");
  const auto number = ParseInteger(stem.substr(end == std::string_view::npos ? 0 : end + 1));
  if (!number || *number < 1 || *number > kMaxTrack) return std::nullopt;
  return static_cast<int>(*number);
}

std::string CdTrackPlace::Title() const {
  return Format(Text(texts::TrackOfDrive), number, drive.name.vendor, drive.name.product);
}

std::optional<CdTrackPlace> FindCdTrack(std::string_view source, const std::vector<CdDriveEntry>& drives) {
  const auto number = TrackNumberOf(FileNameOf(source));
  const std::string_view place = DirectoryOf(source);
  if (!number || place.empty()) return std::nullopt;
  const auto drive = std::ranges::find_if(
      drives, [&](const CdDriveEntry& one) { return place == one.path || place == EntryName(one.name); });
  if (drive == drives.end()) return std::nullopt;
  return CdTrackPlace{*drive, *number};
}

std::optional<CdTrackPlace> FindCdTrack(std::string_view source) {
  // Drives are asked for their names only for what can be a track at all.
  if (HasExtension(FileNameOf(source)) || !TrackNumberOf(FileNameOf(source))) return std::nullopt;
  return FindCdTrack(source, ScanDrives());
}

bool CdTrackExists(std::string_view source) {
  const auto place = FindCdTrack(source);
  auto drive = place ? CdDrive::Open(place->drive.path) : Failure(Outcome::SourceFailed);
  const auto toc = drive ? drive->ReadToc() : Failure(Outcome::CdDriveFailed);
  return toc && toc->Find(place->number) != nullptr;
}

bool IsCdDrive(const std::string& path) {
  if (IsVirtualDrive(path)) return true;
  const auto devices = CdDeviceFiles();
  return std::ranges::find(devices, path) != devices.end();
}

std::optional<std::string> CdDirectoryOf(std::string_view driveName) {
  for (CdDriveEntry& drive : ScanDrives()) {
    if (EqualsIgnoringCase(driveName, EntryName(drive.name))) return std::move(drive.path);
  }
  return std::nullopt;
}

std::string DiscFailureText(Outcome outcome, std::string_view path) {
  switch (outcome) {
    case Outcome::InUse:
      return std::string(Text(texts::DiscBusy));
    case Outcome::WrongFormat:
      return Format(Text(texts::DiscNoSheet), path);
    case Outcome::TargetFailed:
    case Outcome::WriteFailed:
      return std::string(Text(texts::DiscNotKept));
    default:
      return Format(Text(texts::DiscUnreadable), path);
  }
}

std::optional<AudioCd> FindAudioCd(const std::string& directory) {
  if (!IsCdDrive(directory)) return std::nullopt;
  auto drive = CdDrive::Open(directory);
  const auto toc = drive ? drive->ReadToc() : Failure(Outcome::CdDriveFailed);
  if (!toc) return std::nullopt;
  AudioCd disc;
  for (const TocTrack& track : toc->tracks)
    if (track.audio) disc.tracks.push_back({track.number, std::max(1U, track.sectors / kSectorsPerSecond)});
  if (disc.tracks.empty()) return std::nullopt;
  disc.drive = NameOfDrive(directory).value_or(DriveName{});
  return disc;
}

std::optional<DriveName> DriveOfFile(const VolumeTable& volumes, std::string_view path) {
  const Volume* const volume = volumes.Find(volumes.DriveOfPath(path));
  if (volume == nullptr || volume->kind != Volume::Kind::Optical) return std::nullopt;
  return NameOfDrive(volume->device.empty() ? volume->path : volume->device);
}

}  // namespace ts5
