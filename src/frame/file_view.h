// The texts of the source area: columns of the file view, drive selector and directory tree, and the
// questions before files are removed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "frame/file_list.h"
#include "frame/filter_id.h"
#include "frame/texts.h"
#include "platform/base/strings.h"

namespace ts5 {

// Those from Length on show facts of the file: frame/file_columns.
enum class FileColumn : std::uint8_t {
  Name,
  Directory,
  Time,
  Pause,
  Length,
  Size,
  Date,
  Key,
  Metre,
  Tempo,
  Voices,
};

struct ColumnTitle {
  FileColumn column;
  TextId title;
};
// The columns that are always there. The free file list shows name and directory, for the burner time and
// pause as well; a directory shows names, and with its subdirectories where they lie; an audio CD tracks and
// times.
[[nodiscard]] std::span<const ColumnTitle> ListColumns(FilterId filter);
[[nodiscard]] std::span<const ColumnTitle> DirectoryColumns(bool audioCd, bool subdirectories = false);
[[nodiscard]] std::string ColumnText(const FileListEntry& entry, FileColumn column);
[[nodiscard]] std::string TimeText(std::uint32_t seconds);  // 185 -> "3:05"

// Texts of a drive by its index; its entry in the drive selector stands one below, as the first entry is the
// free file list (texts::ListModeDrive).
[[nodiscard]] std::string DriveFailedText(std::int32_t driveIndex);  // with the drive as "x:"
[[nodiscard]] std::string TreeRootText(std::int32_t driveIndex);

// The source drive after the command that switches between directory and free file list: to the list always,
// back only to a directory that the job has. Nothing: stays as it is.
[[nodiscard]] std::optional<std::int32_t> SwitchedSourceDrive(std::int32_t current,
                                                              std::string_view sourcePath,
                                                              std::int32_t driveOfSourcePath,
                                                              bool preparingPlayback);

// The question before count selected entries are removed from the list, or their files deleted. name: the one
// file.
[[nodiscard]] std::string DeleteQuestion(bool listMode, std::size_t count, std::string_view name);
[[nodiscard]] std::string FileNotDeletedText(std::string_view path);

}  // namespace ts5
