// The file-list file (.sts): a free file list as a profile file with the section "sts5 Filelist".
//
//   [sts5 Filelist]
//   ======================================================   (key "======", 46 '=' as its value)
//   Stop!!=Diese Datei wurde automatisch erzeugt ...
//   Files=2
//   1=/home/anna/Musik/Lied.mid
//   2=/home/anna/Musik/Satz.wav*185|2                        (burner: *seconds|pause)
//
// Windows-1252 with CR LF. A list with a path that has no place in that code page is written as UTF-8 with
// its mark, so that no path is lost. Lists of others in UTF-8 without a mark, or in UTF-16 with one, are
// read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/file_drop.h"
#include "frame/file_list.h"
#include "platform/base/outcome.h"
#include "platform/disc/volumes.h"
#include "platform/store/profile.h"

namespace ts5 {

inline constexpr std::size_t kMaxStoredEntry = 271;  // characters of one value
inline constexpr std::string_view kFileListExtension = "sts";

// The chosen name with the extension of file lists, when it has none.
[[nodiscard]] std::string FileListName(std::string_view chosen);

// The lines of the file.
[[nodiscard]] Profile FileListProfile(const FreeFileList& list, bool burner);
// Replaces the file as a whole: TargetFailed, WriteFailed.
[[nodiscard]] Outcome SaveFileList(const std::string& path, const FreeFileList& list, bool burner);

struct LoadedFileList {
  std::vector<FileListEntry> entries;
  std::uint64_t missing = 0;  // values that are empty, too long, or whose file does not exist
};

// The path under which the file of an entry is there; nothing when it is not.
using EntryFinder = std::function<std::optional<std::string>(const std::string& path)>;
// NotAFileList: no number of files. NotABurnerList: burner is set and the list has no times. Costs what the
// file holds, whatever number it claims.
[[nodiscard]] Result<LoadedFileList> ReadFileList(const Profile& profile, bool burner,
                                                  const EntryFinder& find);

// Whether a CD track of a list is there; without it a track counts as missing.
using TrackQuery = std::function<bool(const std::string& entry)>;

// Reads a list without changing one. Paths are taken as native ones, beside the list file when they are
// relative, and through the volume table when they read like "X:\a\b". NotAFileList: it cannot be read or has
// no number of files. NotABurnerList: burner is set and the list has no times.
[[nodiscard]] Result<LoadedFileList> LoadFileList(const std::string& path, bool burner,
                                                  const VolumeTable& volumes,
                                                  const TrackQuery& trackExists = {});

// Takes what was loaded into the list: in its place, or behind what it holds. A burner list takes at most
// kMaxBurnerEntries; true when that left entries out.
[[nodiscard]] bool TakeLoadedList(FreeFileList& list, LoadedFileList loaded, bool replace, bool burner);

// What to tell the user after a load; nothing when all files came.
[[nodiscard]] std::optional<UserMessage> LoadMessage(const Result<LoadedFileList>& loaded,
                                                     std::string_view path);
[[nodiscard]] UserMessage SaveFailedMessage(std::string_view path);

}  // namespace ts5
