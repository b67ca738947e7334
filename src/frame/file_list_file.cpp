#include "frame/file_list_file.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>
#include <utility>

#include "frame/failure_reason.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/fault.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kSection = "sts5 Filelist";
constexpr std::string_view kBannerKey = "======";
constexpr std::string_view kStopKey = "Stop!!";
constexpr std::string_view kCountKey = "Files";
constexpr std::uint32_t kLongestStoredTime = 99'999;  // so that the longest path fits with its times

bool HasDrive(std::string_view path) {
  return path.size() > 2 && path[1] == ':' && (path[2] == '\\' || path[2] == '/');
}

// Finds the files of one list. Directories are looked up once, so that a long list costs one look per file.
class PathFinder {
 public:
  PathFinder(const VolumeTable& volumes, std::string_view listPath, const TrackQuery& trackExists)
      : volumes_(volumes), listDirectory_(DirectoryOf(listPath)), trackExists_(trackExists) {}

  // The path under which the file is there; nothing when it is not.
  std::optional<std::string> Find(const std::string& path) {
    if (!IsUsablePath(path)) return std::nullopt;
    if (IsCdTrackText(path) && trackExists_ && trackExists_(path)) return path;
    if (HasDrive(path)) {
      auto found = FindWithDrive(NormalisedPath(path));
      return found && IsFile(*found) ? found : std::nullopt;
    }
    if (!IsAbsolutePath(path)) {
      // Lists that came with their folder may have the separators of another system.
      std::string native = path;
      std::ranges::replace(native, '\\', '/');
      for (const std::string& name : {path, native})
        if (std::string beside = JoinPath(listDirectory_, name); IsFile(beside)) return beside;
    }
    return IsFile(path) ? std::optional(path) : std::nullopt;
  }

 private:
  using Names = std::map<std::string, std::string, LessIgnoringCase>;

  static bool IsFile(const std::string& path) {
    return IsUsablePath(path) && FileExists(path) && !IsDirectory(path);
  }

  // Part by part from the drive's root on, each as it is spelled or else without regard to case.
  std::optional<std::string> FindWithDrive(const std::string& path) {
    const std::string_view name = FileNameOf(path);
    if (name.empty()) return volumes_.FindPath(path);
    const auto [place, isNew] = directories_.try_emplace(std::string(DirectoryOf(path)));
    if (isNew) place->second = FindWithDrive(place->first);
    if (!place->second) return std::nullopt;
    const std::string& directory = *place->second;
    if (std::string exact = JoinPath(directory, name); FileExists(exact)) return exact;
    const Names& names = NamesIn(directory);
    const auto found = names.find(name);
    return found == names.end() ? std::nullopt : std::optional(JoinPath(directory, found->second));
  }

  const Names& NamesIn(const std::string& directory) {
    const auto [place, isNew] = names_.try_emplace(directory);
    if (!isNew) return place->second;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
         entry.increment(error)) {
      const std::string name = entry->path().filename().string();
      // Of names that differ only in case the first in their order counts.
      const auto [same, added] = place->second.try_emplace(name, name);
      if (!added) same->second = std::min(same->second, name);
    }
    return place->second;
  }

  const VolumeTable& volumes_;
  std::string listDirectory_;
  const TrackQuery& trackExists_;
  std::map<std::string, std::optional<std::string>> directories_;  // as the list names them -> native
  std::map<std::string, Names> names_;                             // native directory -> its names
};

// A value of an 8-bit file as UTF-8, which many programs write without its mark; nothing when it is none, or
// would be the same.
std::optional<std::string> AsUnmarkedUtf8(const std::string& value) {
  std::string bytes = Windows1252FromUtf8(value);
  if (bytes == value || !IsUtf8(bytes)) return std::nullopt;
  return bytes;
}

// The entry of one value; nothing when it counts as missing.
std::optional<FileListEntry> EntryOf(const std::string& value, const EntryFinder& find) {
  if (value.empty() || CharacterCount(value) > kMaxStoredEntry) return std::nullopt;
  FileListEntry entry = ParseStoredEntry(value);
  if (auto path = find(entry.path)) {
    entry.path = std::move(*path);
    return entry;
  }
  // A '*' may be part of a name here.
  if (value == entry.path) return std::nullopt;
  auto path = find(value);
  return path ? std::optional(EntryFromPath(std::move(*path))) : std::nullopt;
}

// The numbers of the entries that the file really has, in order, up to count. Whatever it claims, there are
// no more.
std::vector<std::int64_t> EntryNumbers(const Profile& profile, std::int32_t count) {
  std::vector<std::int64_t> numbers;
  for (const std::string& key : profile.Keys(kSection)) {
    const auto number = ParseInteger(key);
    if (number && *number >= 1 && *number <= count && std::to_string(*number) == key)
      numbers.push_back(*number);
  }
  std::ranges::sort(numbers);
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

std::string ValueFor(FileListEntry entry, bool burner) {
  std::string value = StoredEntry(entry, burner);
  if (CharacterCount(value) <= kMaxStoredEntry) return value;
  entry.duration = std::min(entry.duration, kLongestStoredTime);
  entry.pause = std::min(entry.pause, kLongestStoredTime);
  return StoredEntry(entry, burner);
}

bool FitsCodePage(const std::string& text) {
  return Utf8FromWindows1252(Windows1252FromUtf8(text)) == text;
}

// An empty profile that becomes Windows-1252, or UTF-8 where that would lose a path.
Profile EmptyProfile(const FreeFileList& list) {
  const bool fits =
      std::ranges::all_of(list.Entries(), [](const FileListEntry& e) { return FitsCodePage(e.path); });
  return fits ? Profile() : Profile(TextEncoding::Utf8);
}

}  // namespace

std::string FileListName(std::string_view chosen) {
  return HasExtension(chosen) ? std::string(chosen) : WithExtension(chosen, kFileListExtension);
}

Profile FileListProfile(const FreeFileList& list, bool burner) {
  Profile profile = EmptyProfile(list);
  profile.Write(kSection, kBannerKey, std::string(46, '='));
  profile.Write(kSection, kStopKey, Text(texts::FileListHead));
  profile.WriteInteger(kSection, kCountKey, static_cast<std::int64_t>(list.Size()));
  for (std::size_t i = 0; i < list.Size(); ++i) {
    profile.Write(kSection, std::to_string(i + 1), ValueFor(list[i], burner));
  }
  return profile;
}

Outcome SaveFileList(const std::string& path, const FreeFileList& list, bool burner) {
  return FileListProfile(list, burner).Save(path);
}

Result<LoadedFileList> ReadFileList(const Profile& profile, bool burner, const EntryFinder& find) {
  const std::int32_t count = profile.ReadInteger(kSection, kCountKey, -1);
  if (count < 0) return Failure(Outcome::NotAFileList);
  if (burner && profile.ReadText(kSection, "1").find('*') == std::string::npos)
    return Failure(Outcome::NotABurnerList);

  LoadedFileList loaded;
  for (const std::int64_t number : EntryNumbers(profile, count)) {
    const std::string value = profile.ReadText(kSection, std::to_string(number));
    auto entry = EntryOf(value, find);
    if (!entry && profile.Encoding() == TextEncoding::Windows1252) {
      if (const auto utf8 = AsUnmarkedUtf8(value)) entry = EntryOf(*utf8, find);
    }
    if (entry) loaded.entries.push_back(std::move(*entry));
  }
  loaded.missing = static_cast<std::uint64_t>(count) - loaded.entries.size();
  return loaded;
}

Result<LoadedFileList> LoadFileList(const std::string& path, bool burner, const VolumeTable& volumes,
                                    const TrackQuery& trackExists) {
  ForgetFault();
  const auto profile = Profile::Load(path);
  if (!profile) return Failure(Outcome::NotAFileList);
  PathFinder finder(volumes, path, trackExists);
  return ReadFileList(*profile, burner, [&](const std::string& entry) { return finder.Find(entry); });
}

bool TakeLoadedList(FreeFileList& list, LoadedFileList loaded, bool replace, bool burner) {
  if (replace) list.Clear();
  for (FileListEntry& entry : loaded.entries) {
    if (burner && list.Size() >= kMaxBurnerEntries) return true;
    list.Append(std::move(entry));
  }
  return false;
}

std::optional<UserMessage> LoadMessage(const Result<LoadedFileList>& loaded, std::string_view path) {
  const auto message = [](TextId id, const auto&... arguments) {
    return UserMessage{id, Format(Text(id), arguments...)};
  };
  if (!loaded && loaded.error() == Outcome::NotABurnerList) return message(texts::NotABurnerList);
  if (!loaded) {
    UserMessage failed = message(texts::ListNotLoaded, path);
    const std::string reason = FailureReason(Outcome::WrongFormat, std::string(path), {}, TakeFault());
    if (!reason.empty()) failed.text += "\n" + reason;
    return failed;
  }
  if (loaded->missing > 0) return message(texts::FilesNotLoaded, loaded->missing);
  return std::nullopt;
}

UserMessage SaveFailedMessage(std::string_view path) {
  return {texts::ListNotSaved, Format(Text(texts::ListNotSaved), path)};
}

}  // namespace ts5
