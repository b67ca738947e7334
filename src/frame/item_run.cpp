#include "frame/item_run.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <new>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "frame/filter_catalogue.h"
#include "frame/item_dependence.h"
#include "frame/run.h"
#include "frame/texts.h"
#include "platform/casts.h"
#include "platform/paths.h"

namespace ts5 {
namespace {

// How far the conversions may be ahead of the item whose turn it is, per thread. Each holds one open file.
constexpr std::size_t kAheadPerWorker = 8;

// One item on its way. code: what the check or the conversion said.
struct Item {
  std::size_t index = 0;
  std::string source = {};
  Outcome code = Outcome::Success;
  bool suitable = false;  // passed its check: it gets a target
  std::optional<StagedFile> target = {};
  bool extended = false;
  std::int32_t number = 0;
};

struct Target {
  std::string name;
  Outcome code = Outcome::Success;
  bool mustAsk = false;  // exists, and may be replaced only with the user's consent
};

std::uint32_t Count(std::size_t number) {
  return ClampTo<std::uint32_t>(number);
}

// The automatic name of a source's target as things stand now; nothing when no number is free.
std::optional<std::string> AutomaticTarget(const TargetRule& rule, const DestinationRules& rules,
                                           const std::string& source, const DestinationFiles& files) {
  const TargetName name = TargetNameFor(rule, rules, source, files);
  const bool inPlace = rule.formatKept && !rules.useSuffix;
  const bool number =
      rules.overwrite == OverwritePolicy::Number || (!inPlace && IsSameFile(name.Plain(), source));
  return SettledName(name, number, files);
}

class ItemRun {
 public:
  ItemRun(Run& run, const ItemFilter& filter)
      : run_(run),
        filter_(filter),
        count_(run.ItemCount()),
        mode_(DestinationModeOf(run.GetJob(), run.Destination().noPreset)) {}

  void Execute() {
    const std::size_t workers = WorkerCount();
    if (workers > 1) {
      InParallel(workers);
    } else {
      OneByOne(0);
    }
    RunResult& result = run_.Result();
    result.lines[0].count = Count(successes_);
    result.lines[1].count = Count(count_ - successes_);
    result.remarks = run_.Remarks();
  }

 private:
  [[nodiscard]] std::size_t WorkerCount() const {
    if (!filter_.independent || count_ < 2) return 1;
    const std::size_t cores = filter_.workers != 0 ? filter_.workers : std::thread::hardware_concurrency();
    if (cores < 2) return 1;
    return SourceCouldBeTarget(Plan()) ? 1 : std::min(cores, count_);
  }

  [[nodiscard]] std::vector<PlannedItem> Plan() const {
    std::vector<PlannedItem> plan;
    plan.reserve(count_);
    for (std::size_t i = 0; i < count_ && !run_.Cancelled(); ++i) {
      PlannedItem& item = plan.emplace_back();
      item.source = run_.Source(i);
      if (!IsUsablePath(item.source)) continue;
      item.target = TargetNameFor(Rule(item.source), run_.Destination(), item.source, run_.Files());
    }
    return plan;
  }

  [[nodiscard]] TargetRule Rule(const std::string& source) const {
    return run_.Module().target(*run_.GetJob().parameters, source);
  }

  // The name of an item's target as things stand now.
  [[nodiscard]] Target NameTarget(const std::string& source) const {
    const DestinationRules& rules = run_.Destination();
    Target target;
    if (mode_.editable && !run_.GetJob().destinationName.empty()) {
      target.name = run_.GetJob().destinationName;
    } else {
      const auto settled = AutomaticTarget(Rule(source), rules, source, run_.Files());
      if (!settled) target.code = Outcome::TargetFailed;
      target.name = settled.value_or("");
    }
    if (!IsUsablePath(target.name)) target.code = Outcome::TargetFailed;
    target.mustAsk = rules.overwrite != OverwritePolicy::Replace && run_.Files().exists(target.name);
    return target;
  }

  [[nodiscard]] bool MayReplace(const std::string& target) {
    run_.StatusText(target);
    return run_.Ask({.text = std::string(Text(texts::AskOverwriteTarget)),
                     .icon = MessageIcon::Exclamation}) == Answer::Yes;
  }

  [[nodiscard]] Item Check(std::size_t index) const {
    Item item{.index = index, .source = run_.Source(index)};
    if (!IsUsablePath(item.source)) {
      item.code = Outcome::SourceFailed;
      return item;
    }
    if (filter_.check)
      item.code = Guarded([&] { return filter_.check(*run_.GetJob().parameters, item.source); });
    item.suitable = Succeeded(item.code);
    if (item.suitable) item.code = Outcome::Success;
    return item;
  }

  // Converts into a file beside the target; the item's code says how it went.
  void Convert(Item& item, const Target& target) {
    item.code = target.code;
    if (Failed(item.code)) return;
    auto staged = StagedFile::Create(target.name);
    if (!staged) {
      item.code = staged.error();
      return;
    }
    item.target = std::move(*staged);
    ItemWork work{.run = run_,
                  .parameters = *run_.GetJob().parameters,
                  .source = item.source,
                  .target = *item.target,
                  .abandoned = abandoned_,
                  .progress = [this, index = item.index](double fraction) {
                    if (front_.load(std::memory_order_relaxed) == index) ShowProgress(index, fraction);
                  }};
    item.code = Guarded([&] { return filter_.convert(work); });
    item.extended = work.extended;
    item.number = work.number;
    if (Succeeded(item.code) && item.target->Size() == 0) {
      item.target.reset();  // nothing to change, nothing to put in place
      return;
    }
    // Here and not when its turn comes: flushes of several files overlap.
    if (Succeeded(item.code)) {
      if (const Outcome flushed = item.target->Flush(); Failed(flushed)) item.code = flushed;
    }
    if (Failed(item.code)) item.target.reset();
  }

  template <typename Action>
  static Outcome Guarded(const Action& action) {
    try {
      return action();
    } catch (const std::bad_alloc&) {
      return Outcome::OutOfMemory;
    } catch (const std::length_error&) {
      return Outcome::OutOfMemory;
    } catch (const std::exception&) {
      return Outcome::LibraryFailed;
    }
  }

  void ShowProgress(std::size_t index, double fraction) {
    run_.Progress(Count(index + 1), Count(count_), fraction);
  }

  // Whether item index may begin; the first question of every turn.
  [[nodiscard]] bool Begin(std::size_t index) {
    if (run_.Cancelled()) return EndCancelled();
    front_ = index;
    ShowProgress(index, 0);
    return true;
  }

  bool EndCancelled() {
    run_.AddCode(Outcome::Cancelled);
    run_.Result().cancelled = true;
    return false;
  }

  // Books the item; false when the run ends with it.
  bool Finish(const Item& item, const std::string& target) {
    const bool converted = Succeeded(item.code);
    run_.Result().items.push_back({item.source, converted ? target : std::string(), Code(item.code)});
    if (item.code == Outcome::Cancelled) return EndCancelled();
    if (converted) ++successes_;
    if (item.code != Outcome::Success) run_.AddStatus({Code(item.code), item.extended, item.number});
    return true;
  }

  bool Refused(Item item) {
    item.target.reset();
    item.code = Outcome::Cancelled;
    return Finish(item, {});
  }

  bool Commit(Item& item, const std::string& target) {
    if (Succeeded(item.code) && !item.target) return Finish(item, {});
    if (Succeeded(item.code)) {
      if (const Outcome done = item.target->CommitAs(target); Failed(done)) item.code = done;
    }
    item.target.reset();
    return Finish(item, target);
  }

  void OneByOne(std::size_t first) {
    for (std::size_t i = first; i < count_; ++i) {
      if (!Begin(i)) return;
      Item item = Check(i);
      std::string name;
      if (item.suitable) {
        Target target = NameTarget(item.source);
        if (target.mustAsk && !MayReplace(target.name)) {
          Refused(std::move(item));
          return;
        }
        Convert(item, target);
        name = std::move(target.name);
      }
      if (!Commit(item, name)) return;
    }
    if (run_.Cancelled()) EndCancelled();
  }

  // Conversions run ahead in a bounded window; names, questions and commits come here in order.
  void InParallel(std::size_t workers) {
    const std::size_t window = workers * kAheadPerWorker;
    std::mutex mutex;
    std::condition_variable room;
    std::condition_variable ready;
    std::vector<std::optional<Item>> slots(window);
    std::size_t next = 0;
    std::size_t front = 0;
    bool ending = false;

    const auto work = [&] {
      std::unique_lock lock(mutex);
      while (true) {
        room.wait(lock, [&] { return ending || next >= count_ || next < front + window; });
        if (ending || next >= count_) return;
        const std::size_t index = next++;
        lock.unlock();
        Item item = Check(index);
        // The name may still change; its directory does not.
        if (item.suitable) Convert(item, NameTarget(item.source));
        lock.lock();
        slots[index % window] = std::move(item);
        if (index == front) ready.notify_one();
      }
    };

    std::vector<std::jthread> threads;
    try {
      for (std::size_t i = 0; i < workers; ++i) threads.emplace_back(work);
    } catch (const std::system_error&) {
      if (threads.empty()) return OneByOne(0);  // fewer threads do as well
    }

    while (front < count_) {
      if (!Begin(front)) break;
      std::optional<Item> item;
      {
        std::unique_lock lock(mutex);
        ready.wait(lock, [&] { return slots[front % window].has_value(); });
        item = std::exchange(slots[front % window], std::nullopt);
      }
      if (!TakeTurn(*item)) break;
      {
        const std::lock_guard lock(mutex);
        ++front;
      }
      room.notify_all();
    }
    if (front == count_ && run_.Cancelled()) EndCancelled();
    abandoned_ = true;
    {
      const std::lock_guard lock(mutex);
      ending = true;
    }
    room.notify_all();
  }

  bool TakeTurn(Item& item) {
    if (!item.suitable) return Commit(item, {});
    const Target target = NameTarget(item.source);
    if (target.mustAsk && !MayReplace(target.name)) return Refused(std::move(item));
    if (Failed(target.code)) item.code = target.code;
    return Commit(item, target.name);
  }

  Run& run_;
  const ItemFilter& filter_;
  const std::size_t count_;
  const DestinationMode mode_;
  std::size_t successes_ = 0;
  std::atomic<std::size_t> front_ = 0;
  std::atomic<bool> abandoned_ = false;
};

}  // namespace

bool ItemWork::Cancelled() const {
  return run.Cancelled() || abandoned.load(std::memory_order_relaxed);
}

std::string AutomaticDestination(const Job& job, const FilterModule& module, const DestinationRules& rules,
                                 const DestinationFiles& files) {
  const std::string source = ItemSource(job, 0);
  if (IsSearch(job.filter)) {
    const bool wholeList =
        job.Mode() == SourceMode::List ? job.files.Selection().empty() : job.directory.names.empty();
    const std::string first = source.empty() ? JoinPath(job.directory.path, "*") : source;
    const TargetName name = ResultFileNameFor(rules, first, ItemCount(job), wholeList, files);
    return SettledName(name, rules.overwrite == OverwritePolicy::Number, files).value_or("");
  }
  if (!module.target || !job.parameters || source.empty()) return {};
  return AutomaticTarget(module.target(*job.parameters, source), rules, source, files).value_or("");
}

void RunItems(Run& run, const ItemFilter& filter) {
  ItemRun(run, filter).Execute();
}

}  // namespace ts5
