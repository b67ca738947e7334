#include "frame/directory_listing.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/list_order.h"
#include "frame/texts.h"
#include "platform/base/detached_task.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBatchSize = 1000;

using PatternRanks = std::map<std::string, std::size_t, LessIgnoringCase>;

// The place of each listed extension in the order of the patterns. Made anew for each listing: a thread that
// waits for a disc may outlive everything static.
PatternRanks MakeRanks() {
  PatternRanks ranks;
  for (const std::string& pattern : ListedPatterns()) ranks.emplace(ExtensionOf(pattern), ranks.size());
  return ranks;
}

struct FoundFile {
  std::size_t rank;
  std::string sortKey;
  std::string name;
};

bool LessByKey(const std::string& keyA, const std::string& a, const std::string& keyB, const std::string& b) {
  const int order = CompareKeys(keyA, keyB);
  return order != 0 ? order < 0 : a < b;
}
bool LessByName(const std::string& a, const std::string& b) {
  return LessByKey(SortKey(a), a, SortKey(b), b);
}

void Deliver(std::vector<FoundFile> files, const std::stop_token& stop, const ItemSink& sink) {
  std::ranges::sort(files, [](const FoundFile& a, const FoundFile& b) {
    return a.rank != b.rank ? a.rank < b.rank : LessByKey(a.sortKey, a.name, b.sortKey, b.name);
  });
  std::vector<DirectoryItem> batch;
  for (FoundFile& file : files) {
    if (stop.stop_requested()) return;
    const FileTypeId type = FileTypeOf(file.name);
    batch.push_back({std::move(file.name), type});
    if (batch.size() == kBatchSize) sink(std::exchange(batch, {}));
  }
  if (!batch.empty()) sink(std::move(batch));
}

void DeliverTracks(const AudioCd& disc, const ItemSink& sink) {
  std::vector<DirectoryItem> items;
  for (const AudioCd::Track& track : disc.tracks) {
    std::string name = Format(Text(texts::TrackName), track.number);
    std::string entry = CdTrackEntry(disc.drive, name);
    items.push_back({std::move(name), FileTypeId::CdTrack, true, track.seconds, std::move(entry)});
  }
  if (!items.empty()) sink(std::move(items));
}

// Calls visit with every entry until it returns false. False when the directory cannot be opened or breaks
// off; opened tells the two apart.
template <typename Visit>
bool ForEachEntry(const std::string& directory, bool& opened, Visit visit) {
  std::error_code error;
  fs::directory_iterator entry(directory, error);
  opened = !error;
  while (!error && entry != fs::directory_iterator()) {
    if (!visit(*entry)) return true;
    entry.increment(error);
  }
  return !error;
}

bool IsDirectoryEntry(const fs::directory_entry& entry) {
  std::error_code error;
  return entry.is_directory(error) && !error;
}

// One that is there itself, not a link to one.
bool IsOwnDirectory(const fs::directory_entry& entry) {
  std::error_code error;
  return entry.symlink_status(error).type() == fs::file_type::directory && !error;
}

bool IsTreeDirectory(const fs::directory_entry& entry) {
  const std::string name = entry.path().filename().string();
  return !name.starts_with('.') && IsDirectoryEntry(entry) && IsUsablePath(entry.path().native());
}

}  // namespace

std::vector<std::string> ListedPatterns() {
  std::vector<std::string> patterns = ParseFileFilter(Text(texts::FileFilterMedia)).at(0).patterns;
  // Scores that the text does not name.
  for (const char* pattern : {"*.stvx", "*.musicxml", "*.mxl"}) patterns.emplace_back(pattern);
  return patterns;
}

ListingEnd ListDirectory(const std::string& directory, const AudioCdQuery& audioCd,
                         const std::stop_token& stop, const ItemSink& sink) {
  if (const auto disc = audioCd ? audioCd(directory) : std::nullopt) {
    if (stop.stop_requested()) return {Outcome::Cancelled};
    DeliverTracks(*disc, sink);
    return {};
  }

  const PatternRanks ranks = MakeRanks();
  ListingEnd end;
  std::vector<FoundFile> files;
  bool opened = false;
  const bool complete = ForEachEntry(directory, opened, [&](const fs::directory_entry& entry) {
    std::string name = entry.path().filename().string();
    const auto rank = ranks.find(ExtensionOf(name));
    if (rank == ranks.end() || IsDirectoryEntry(entry)) return !stop.stop_requested();
    if (IsUsablePath(entry.path().native())) {
      files.push_back({rank->second, SortKey(name), std::move(name)});
    } else {
      ++end.refused;
    }
    return !stop.stop_requested();
  });
  Deliver(std::move(files), stop, sink);
  if (stop.stop_requested()) {
    end.outcome = Outcome::Cancelled;
  } else if (!complete) {
    end.outcome = opened ? Outcome::ReadFailed : Outcome::SourceFailed;
  }
  return end;
}

ListingEnd ListTree(const std::string& directory, const AudioCdQuery& audioCd, const std::stop_token& stop,
                    const ItemSink& sink) {
  ListingEnd end = ListDirectory(directory, audioCd, stop, sink);
  // Paths from the directory on, the next one last.
  std::vector<std::string> waiting;
  const auto wait = [&](const std::string& below) {
    std::vector<std::string> names;
    bool opened = false;
    (void)ForEachEntry(JoinPath(directory, below), opened, [&](const fs::directory_entry& entry) {
      if (IsOwnDirectory(entry) && IsTreeDirectory(entry)) names.push_back(entry.path().filename().string());
      return !stop.stop_requested();
    });
    std::ranges::sort(names, [](const auto& a, const auto& b) { return LessByName(b, a); });
    for (const std::string& name : names) waiting.push_back(JoinPath(below, name));
  };
  if (Succeeded(end.outcome)) wait({});
  while (!waiting.empty() && !stop.stop_requested()) {
    const std::string below = std::move(waiting.back());
    waiting.pop_back();
    const ListingEnd one =
        ListDirectory(JoinPath(directory, below), {}, stop, [&](std::vector<DirectoryItem> items) {
          for (DirectoryItem& item : items) item.name = JoinPath(below, item.name);
          sink(std::move(items));
        });
    end.refused += one.refused;
    wait(below);
  }
  if (stop.stop_requested()) end.outcome = Outcome::Cancelled;
  return end;
}

// Shared with the worker, which may outlive the lister when the disc does not answer.
struct DirectoryLister::Job {
  std::stop_source stop;
  std::mutex mutex;
  Post post;  // taken away by Cancel(): the event loop may be gone from then on

  void Send(std::function<void()> event) {
    const std::lock_guard lock(mutex);
    if (post) post(std::move(event));
  }
};

DirectoryLister::DirectoryLister(Post post, AudioCdQuery audioCd)
    : post_(std::move(post)), audioCd_(std::move(audioCd)) {}

DirectoryLister::~DirectoryLister() {
  Cancel();
}

bool DirectoryLister::Start(const std::string& directory, bool subdirectories, ItemSink sink,
                            std::function<void(ListingEnd)> end) {
  if (Running()) return false;
  job_ = std::make_shared<Job>();
  job_->post = post_;
  // Events of a listing that was cancelled meanwhile are dropped where they arrive: there the stop request is
  // seen.
  const auto deliver = [job = job_, sink = std::move(sink)](std::vector<DirectoryItem> batch) {
    job->Send([job, sink, batch = std::move(batch)]() mutable {
      if (!job->stop.stop_requested()) sink(std::move(batch));
    });
  };
  const auto task =
      DetachedTask::Start([this, job = job_, directory, list = subdirectories ? &ListTree : &ListDirectory,
                           audioCd = audioCd_, deliver, end = std::move(end)] {
        const ListingEnd result = list(directory, audioCd, job->stop.get_token(), deliver);
        job->Send([this, job, end, result] {
          if (job->stop.stop_requested()) return;
          job_.reset();
          end(result);
        });
      });
  if (!task) job_.reset();
  return task.has_value();
}

void DirectoryLister::Cancel() {
  const std::shared_ptr<Job> job = std::exchange(job_, nullptr);
  if (!job) return;
  job->stop.request_stop();
  const std::lock_guard lock(job->mutex);
  job->post = nullptr;
}

bool HasSubdirectories(const std::string& directory) {
  bool found = false;
  bool opened = false;
  (void)ForEachEntry(directory, opened, [&](const fs::directory_entry& entry) {
    found = IsTreeDirectory(entry);
    return !found;
  });
  return found;
}

std::vector<std::string> Subdirectories(const std::string& directory) {
  std::vector<std::string> names;
  bool opened = false;
  (void)ForEachEntry(directory, opened, [&](const fs::directory_entry& entry) {
    if (IsTreeDirectory(entry)) names.push_back(entry.path().filename().string());
    return true;
  });
  std::ranges::sort(names, LessByName);
  return names;
}

}  // namespace ts5
