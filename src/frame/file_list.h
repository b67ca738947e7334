// The source files of a job: the free file list, made by hand from files anywhere, and the selection in a
// directory. Plain values, copied with the job.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "frame/file_types.h"

namespace ts5 {

// Where the source files of a job come from: selected files of a directory, or its free file list.
enum class SourceMode { Directory, List };

// Drive indices: 0 is c:, 1 is d: and so on; this one means that the job works on its free file list.
inline constexpr std::int32_t kListModeDrive = -1;
// A CD project takes at most so many entries.
inline constexpr std::size_t kMaxBurnerEntries = 99;

struct FileListEntry {
  std::string path;  // a file, or a CD track as "VENDOR PRODUCT\Track 3"
  bool cdTrack = false;
  std::uint32_t duration = 0;  // seconds, burner only
  std::uint32_t pause = 0;     // seconds before the entry, burner only

  bool operator==(const FileListEntry&) const = default;
};

// An entry of that path, with the CD track flag read from the text.
[[nodiscard]] FileListEntry EntryFromPath(std::string path, std::uint32_t duration = 0,
                                          std::uint32_t pause = 0);

// An entry as jobs and file-list files keep it: the path alone, or for the burner "path*duration|pause".
[[nodiscard]] std::string StoredEntry(const FileListEntry& entry, bool burner);
// Such a text taken apart: the path ends at the last '*'; with a '|' the number after the last '|' is the
// pause and the number after the last '*' the duration. Numbers below 0 count as 0.
[[nodiscard]] FileListEntry ParseStoredEntry(std::string_view text);

class FreeFileList {
 public:
  [[nodiscard]] bool Empty() const { return entries_.empty(); }
  [[nodiscard]] std::size_t Size() const { return entries_.size(); }
  [[nodiscard]] const FileListEntry& operator[](std::size_t index) const { return entries_[index]; }
  [[nodiscard]] const std::vector<FileListEntry>& Entries() const { return entries_; }
  // Durations and pauses of all entries, in seconds.
  [[nodiscard]] std::uint64_t Total() const { return total_; }

  void Append(FileListEntry entry);
  // Removes these entries; indices may come in any order, wrong ones are ignored. What stays selected keeps
  // its entry, the focus goes to the entry that takes the place of the first one removed.
  void Remove(const std::vector<std::size_t>& indices);
  // The focused entry changes place with its neighbour, and with it its selection and the focus. False at the
  // end.
  bool MoveUp();
  bool MoveDown();
  void SetPath(std::size_t index, std::string path);
  void SetTimes(std::size_t index, std::uint32_t duration, std::uint32_t pause);
  void Clear();

  // Indices of the selected entries, ascending.
  [[nodiscard]] const std::vector<std::size_t>& Selection() const { return selection_; }
  // Wrong and repeated indices are left out.
  void Select(std::vector<std::size_t> indices);
  void SelectAll();
  // Puts the entries in another order: place i gets what was at order[i]. Selection and focus go along. False
  // when it is no order of all entries.
  bool Reorder(const std::vector<std::size_t>& order);
  // The entry with the focus; Size() when there is none.
  [[nodiscard]] std::size_t Focus() const { return focus_ < entries_.size() ? focus_ : entries_.size(); }
  void SetFocus(std::size_t index) { focus_ = index; }

  bool operator==(const FreeFileList&) const = default;

 private:
  bool SwapFocusedWith(std::size_t neighbour);

  std::vector<FileListEntry> entries_;
  std::vector<std::size_t> selection_;
  std::size_t focus_ = 0;
  std::uint64_t total_ = 0;
};

// The source in directory mode: the directory, and the selected files of it by name and by place in the view.
struct DirectorySelection {
  std::string path = {};
  std::vector<std::string> names = {};
  std::vector<std::uint32_t> indices = {};

  // A file of the directory as it is named here: with the directories below, where there are any.
  [[nodiscard]] std::string NameOf(std::string_view file) const;
  void Deselect() {
    names.clear();
    indices.clear();
  }
  bool operator==(const DirectorySelection&) const = default;
};

}  // namespace ts5
