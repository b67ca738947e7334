// Listing a directory for the file view, on a thread of its own so that a slow disc never holds up the
// window, and the directories below one for the tree.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "frame/cd_tracks.h"
#include "frame/file_types.h"
#include "platform/base/outcome.h"

namespace ts5 {

struct DirectoryItem {
  std::string name;  // "Lied.mid", "Chor/Alt.mid" below the directory, or "Track 01" on an audio CD
  FileTypeId type = FileTypeId::Unsupported;
  bool cdTrack = false;
  std::uint32_t seconds = 0;  // playing time of a track
  std::string entry = {};     // how lists name a track: "VENDOR PRODUCT\Track 01"

  bool operator==(const DirectoryItem&) const = default;
};

struct ListingEnd {
  Outcome outcome = Outcome::Success;  // SourceFailed: cannot be opened; ReadFailed: broke off; Cancelled
  std::size_t refused = 0;             // files whose path is too long or no text
};

// The audio CD that a directory stands for; nothing when it stands for none.
using AudioCdQuery = std::function<std::optional<AudioCd>(const std::string& directory)>;

using ItemSink = std::function<void(std::vector<DirectoryItem> batch)>;

// Lists the media files of a directory, type by type in the order of the patterns of the add dialog, each
// type by name without regard to case, numbers inside as numbers. A link counts as what it leads to. What was
// found before a failure is delivered.
[[nodiscard]] ListingEnd ListDirectory(const std::string& directory, const AudioCdQuery& audioCd,
                                       const std::stop_token& stop, const ItemSink& sink);
// The same with all directories below, each behind the one that holds it, in order of their names. Hidden
// ones and links to directories are left out, so that it ends; one that cannot be read has no files.
[[nodiscard]] ListingEnd ListTree(const std::string& directory, const AudioCdQuery& audioCd,
                                  const std::stop_token& stop, const ItemSink& sink);

// The file patterns of the view, "*.asf" first.
[[nodiscard]] std::vector<std::string> ListedPatterns();

// One listing at a time. Sink and end are called through post, that is on the thread of the event loop; none
// of them after Cancel() or the destructor. Used from that thread only.
class DirectoryLister {
 public:
  using Post = std::function<void(std::function<void()>)>;

  explicit DirectoryLister(Post post, AudioCdQuery audioCd = {});
  ~DirectoryLister();
  DirectoryLister(const DirectoryLister&) = delete;
  DirectoryLister& operator=(const DirectoryLister&) = delete;

  // False while another listing runs: the request is ignored.
  bool Start(const std::string& directory, bool subdirectories, ItemSink sink,
             std::function<void(ListingEnd)> end);
  [[nodiscard]] bool Running() const { return job_ != nullptr; }
  // Ends the listing without waiting for a disc that does not answer.
  void Cancel();

 private:
  struct Job;
  Post post_;
  AudioCdQuery audioCd_;
  std::shared_ptr<Job> job_;
};

// For the tree: whether a directory has directories below it, and their names in order. Hidden ones (".name")
// are left out; a directory that cannot be read has none.
[[nodiscard]] bool HasSubdirectories(const std::string& directory);
[[nodiscard]] std::vector<std::string> Subdirectories(const std::string& directory);

}  // namespace ts5
