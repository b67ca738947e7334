#include "frame/file_drop.h"

#include <algorithm>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kUnitsPerSecond = 10'000'000;  // of 100 ns

// Nothing when the file is not taken at all.
std::optional<FileListEntry> EntryFor(const std::string& path, const DropEnvironment& environment) {
  if (FileTypeOf(path) != FileTypeId::CdTrack) return FileListEntry{path};
  // Files come with their whole path; what has none is a track of the directory view.
  if (!IsAbsolutePath(path) && !DirectoryOf(path).empty() && IsCdTrackText(path))
    return FileListEntry{path, true};
  const auto track = TrackNumberOf(FileNameOf(path));
  const auto drive = track && environment.driveOf ? environment.driveOf(path) : std::nullopt;
  if (!drive) return std::nullopt;
  return FileListEntry{CdTrackEntry(*drive, *track), true};
}

bool IsTaken(const FileListEntry& entry, FilterId filter) {
  if (!IsUsablePath(entry.path)) return false;
  if (entry.cdTrack) return true;
  const FileTypeId type = FileTypeOf(entry.path);
  if (type == FileTypeId::Unsupported || type == FileTypeId::CdTrack) return false;
  if (type == FileTypeId::Score && Has(filter, kTimedList)) return false;
  return !IsDirectory(entry.path);
}

std::uint32_t WholeSeconds(std::uint64_t units) {
  return std::max(std::uint32_t{1}, ClampTo<std::uint32_t>(units / kUnitsPerSecond));
}

class Dropper {
 public:
  Dropper(FreeFileList& list, FilterId filter, const DropEnvironment& environment)
      : list_(list), burner_(Has(filter, kTimedList)), filter_(filter), environment_(environment) {}

  void Reject() { ++result_.rejected; }

  // False when the list takes no more.
  bool Add(FileListEntry entry) {
    if (!IsTaken(entry, filter_)) {
      Reject();
      return true;
    }
    if (burner_) {
      if (list_.Size() >= kMaxBurnerEntries) {
        result_.messages.push_back({texts::TooManyTracks, std::string(Text(texts::TooManyTracks))});
        return false;
      }
      entry.duration = WholeSeconds(environment_.durationOf ? environment_.durationOf(entry) : 0);
      entry.pause = 0;
    }
    list_.Append(std::move(entry));
    ++result_.added;
    return true;
  }

  DropResult Finish() {
    if (result_.rejected > 0) {
      result_.messages.push_back(
          {texts::FilesRejected, Format(Text(texts::FilesRejected), result_.rejected)});
    }
    return std::move(result_);
  }

 private:
  FreeFileList& list_;
  bool burner_;
  FilterId filter_;
  const DropEnvironment& environment_;
  DropResult result_;
};

}  // namespace

DropResult DropFiles(FreeFileList& list, FilterId filter, const std::vector<std::string>& paths,
                     const DropEnvironment& environment) {
  Dropper dropper(list, filter, environment);
  for (const std::string& path : paths) {
    auto entry = EntryFor(path, environment);
    if (!entry) {
      dropper.Reject();
    } else if (!dropper.Add(std::move(*entry))) {
      break;
    }
  }
  return dropper.Finish();
}

UserMessage DropWithoutList() {
  return {texts::NoWindowForFiles, std::string(Text(texts::NoWindowForFiles))};
}

}  // namespace ts5
