#include "search/ordered_search.h"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace ts5 {
namespace {

constexpr std::size_t kFilesAhead = 64;   // begun and not yet told of
constexpr std::size_t kHitsAhead = 1024;  // of one file

struct FileAtWork {
  std::string path;
  std::vector<SearchHit> hits;
  std::optional<SearchOutcome> outcome;
};

class OrderedSearch {
 public:
  OrderedSearch(const FileSearch& search, const OrderedSearchEvents& events, const CancelCheck& cancelled)
      : search_(search), events_(events), cancelled_(cancelled) {}

  void Execute(unsigned threads) {
    std::vector<std::jthread> workers;
    try {
      for (unsigned i = 0; i < threads; ++i) workers.emplace_back([this] { Work(); });
    } catch (const std::system_error&) {
      // As many as there are.
    }
    if (workers.empty()) return OneByOne();
    while (Deliver()) {
    }
    {
      const std::lock_guard lock(mutex_);
      stop_ = true;
    }
    room_.notify_all();
  }

  void OneByOne() {
    while (auto path = events_.next()) {
      events_.begin(*path);
      if (!events_.end(*path, Search(*path, events_.hit))) return;
    }
  }

 private:
  bool Stopped() const { return stop_ || (cancelled_ && cancelled_()); }

  SearchOutcome Search(const std::string& path, const HitSink& sink) const {
    try {
      return search_(path, sink, [this] { return Stopped(); });
    } catch (const std::bad_alloc&) {
      return {Outcome::OutOfMemory, 0};
    }
  }

  void Work() {
    while (const auto file = Begin()) {
      const SearchOutcome outcome =
          Search(file->path, [&](const SearchHit& hit) { return Keep(*file, hit); });
      const std::lock_guard lock(mutex_);
      file->outcome = outcome;
      news_.notify_one();
    }
    const std::lock_guard lock(mutex_);
    news_.notify_one();
  }

  std::shared_ptr<FileAtWork> Begin() {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [this] { return stop_ || exhausted_ || files_.size() < kFilesAhead; });
    if (stop_ || exhausted_) return nullptr;
    try {
      if (auto path = events_.next()) {
        auto file = std::make_shared<FileAtWork>();
        file->path = std::move(*path);
        files_.push_back(file);
        news_.notify_one();
        return file;
      }
    } catch (const std::bad_alloc&) {
      outOfMemory_ = true;
    }
    exhausted_ = true;
    room_.notify_all();
    return nullptr;
  }

  Outcome Keep(FileAtWork& file, const SearchHit& hit) {
    std::unique_lock lock(mutex_);
    room_.wait(lock, [&] { return stop_ || file.hits.size() < kHitsAhead; });
    if (stop_) return Outcome::Cancelled;
    file.hits.push_back(hit);
    if (&file == files_.front().get()) news_.notify_one();
    return Outcome::Success;
  }

  // What is new of the file whose turn it is; false at the end of the search.
  bool Deliver() {
    std::unique_lock lock(mutex_);
    news_.wait(lock, [this] {
      if (files_.empty()) return exhausted_;
      return !begun_ || !files_.front()->hits.empty() || files_.front()->outcome.has_value();
    });
    if (files_.empty()) {
      if (outOfMemory_) (void)events_.end({}, {Outcome::OutOfMemory, 0});
      return false;
    }
    const std::shared_ptr<FileAtWork> file = files_.front();
    const std::vector<SearchHit> hits = std::exchange(file->hits, {});
    const std::optional<SearchOutcome> outcome = file->outcome;
    const bool begins = !begun_;
    begun_ = !outcome;
    if (outcome) files_.pop_front();
    lock.unlock();
    room_.notify_all();

    if (begins) events_.begin(file->path);
    for (const SearchHit& hit : hits) {
      if (const Outcome taken = events_.hit(hit); Failed(taken)) {
        (void)events_.end(file->path, {taken, 0});
        return false;
      }
    }
    return !outcome || events_.end(file->path, *outcome);
  }

  const FileSearch& search_;
  const OrderedSearchEvents& events_;
  const CancelCheck& cancelled_;

  std::mutex mutex_;
  std::condition_variable news_;                   // for the thread that tells
  std::condition_variable room_;                   // for the workers
  std::deque<std::shared_ptr<FileAtWork>> files_;  // in order; the first one's turn it is
  bool exhausted_ = false;
  bool outOfMemory_ = false;
  std::atomic<bool> stop_ = false;
  bool begun_ = false;  // begin() was called for the first one
};

}  // namespace

void SearchInOrder(const FileSearch& search, const OrderedSearchEvents& events, const CancelCheck& cancelled,
                   unsigned threads) {
  OrderedSearch ordered(search, events, cancelled);
  if (threads > 1) {
    ordered.Execute(threads);
  } else {
    ordered.OneByOne();
  }
}

}  // namespace ts5
