#include "search/ordered_search.h"

#include <atomic>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "frame/ordered_pool.h"

namespace ts5 {
namespace {

constexpr std::size_t kFilesAhead = 64;   // begun and not yet told of
constexpr std::size_t kHitsAhead = 1024;  // of one file

struct FileAtWork {
  std::string path;
  std::vector<SearchHit> hits;
  SearchOutcome outcome = {};
};

class OrderedSearch {
 public:
  OrderedSearch(const FileSearch& search, const OrderedSearchEvents& events, const CancelCheck& cancelled)
      : search_(search), events_(events), cancelled_(cancelled) {}

  void Execute(unsigned threads) {
    if (threads < 2) return OneByOne();
    OrderedPool<FileAtWork> pool(
        {.next = [this]() -> std::unique_ptr<FileAtWork> {
           auto path = events_.next();
           if (!path) return nullptr;
           auto file = std::make_unique<FileAtWork>();
           file->path = *std::move(path);
           return file;
         },
         .work =
             [&](FileAtWork& file) {
               file.outcome = Search(file.path, [&](const SearchHit& hit) {
                 const bool kept = pool.Update(
                     file, [&] { return file.hits.size() < kHitsAhead; }, [&] { file.hits.push_back(hit); });
                 return kept ? Outcome::Success : Outcome::Cancelled;
               });
             },
         .begin =
             [this](const FileAtWork& file) {
               events_.begin(file.path);
               return true;
             },
         .take =
             [&](FileAtWork& file, bool done) {
               return Tell(file.path, pool.Locked([&] { return std::exchange(file.hits, {}); })) &&
                      (!done || events_.end(file.path, file.outcome));
             }},
        kFilesAhead, stop_);
    try {
      if (!pool.Run(threads)) OneByOne();
    } catch (const std::bad_alloc&) {
      (void)events_.end({}, {Outcome::OutOfMemory, 0});
    }
  }

 private:
  void OneByOne() {
    while (auto path = events_.next()) {
      events_.begin(*path);
      if (!events_.end(*path, Search(*path, events_.hit))) return;
    }
  }

  bool Tell(const std::string& path, const std::vector<SearchHit>& hits) const {
    for (const SearchHit& hit : hits) {
      if (const Outcome taken = events_.hit(hit); Failed(taken)) {
        (void)events_.end(path, {taken, 0});
        return false;
      }
    }
    return true;
  }

  [[nodiscard]] bool Stopped() const { return stop_ || (cancelled_ && cancelled_()); }

  SearchOutcome Search(const std::string& path, const HitSink& sink) const {
    try {
      return search_(path, sink, [this] { return Stopped(); });
    } catch (const std::bad_alloc&) {
      return {Outcome::OutOfMemory, 0};
    }
  }

  const FileSearch& search_;
  const OrderedSearchEvents& events_;
  const CancelCheck& cancelled_;
  std::atomic<bool> stop_ = false;
};

}  // namespace

void SearchInOrder(const FileSearch& search, const OrderedSearchEvents& events, const CancelCheck& cancelled,
                   unsigned threads) {
  OrderedSearch(search, events, cancelled).Execute(threads);
}

}  // namespace ts5
