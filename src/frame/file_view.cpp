#include "frame/file_view.h"

#include <array>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr auto kListColumns = std::to_array<ColumnTitle>({
    {FileColumn::Name, texts::FileColumnName},
    {FileColumn::Directory, texts::FileColumnDirectory},
    {FileColumn::Time, texts::FileColumnTime},
    {FileColumn::Pause, texts::FileColumnPause},
});
constexpr auto kAudioCdColumns = std::to_array<ColumnTitle>({
    {FileColumn::Name, texts::FileColumnTracks},
    {FileColumn::Time, texts::FileColumnTime},
});

}  // namespace

std::span<const ColumnTitle> ListColumns(FilterId filter) {
  return std::span(kListColumns).first(Has(filter, kTimedList) ? 4 : 2);
}

std::span<const ColumnTitle> DirectoryColumns(bool audioCd, bool subdirectories) {
  if (audioCd) return kAudioCdColumns;
  return std::span(kListColumns).first(subdirectories ? 2 : 1);
}

std::string ColumnText(const FileListEntry& entry, FileColumn column) {
  switch (column) {
    case FileColumn::Name:
      return std::string(FileNameOf(entry.path));
    case FileColumn::Directory:
      return std::string(DirectoryOf(entry.path));
    case FileColumn::Time:
      return TimeText(entry.duration);
    case FileColumn::Pause:
      return std::to_string(entry.pause);
    default:
      break;
  }
  return {};
}

std::string TimeText(std::uint32_t seconds) {
  return Format(Text(texts::MinutesAndSeconds), seconds / 60, seconds % 60);
}

std::string DriveFailedText(std::int32_t driveIndex) {
  return Format(Text(texts::DriveFailed), std::string{LetterOfDrive(driveIndex), ':'});
}

std::string TreeRootText(std::int32_t driveIndex) {
  return Format(Text(texts::TreeRoot), LetterOfDrive(driveIndex));
}

std::optional<std::int32_t> SwitchedSourceDrive(std::int32_t current, std::string_view sourcePath,
                                                std::int32_t driveOfSourcePath, bool preparingPlayback) {
  if (preparingPlayback) return std::nullopt;
  if (current != kListModeDrive) return kListModeDrive;
  if (sourcePath.empty()) return std::nullopt;
  return driveOfSourcePath;
}

std::string DeleteQuestion(bool listMode, std::size_t count, std::string_view name) {
  if (count == 1) return Format(Text(listMode ? texts::AskRemoveEntry : texts::AskDeleteFile), name);
  return Format(Text(listMode ? texts::AskRemoveEntries : texts::AskDeleteFiles), count);
}

std::string FileNotDeletedText(std::string_view path) {
  return Format(Text(texts::FileNotDeleted), path);
}

}  // namespace ts5
