#include "frame/item_run.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <new>
#include <optional>
#include <set>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "frame/failure_reason.h"
#include "frame/ordered_pool.h"
#include "frame/run.h"
#include "frame/run_journal.h"
#include "frame/run_target.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/files/fault.h"
#include "platform/files/flush_group.h"
#include "platform/files/paths.h"
#include "platform/files/real_paths.h"

namespace ts5 {
namespace {

// How far the conversions may be ahead of the item whose turn it is, per thread and in all. Each holds one
// open file.
constexpr std::size_t kAheadPerWorker = 32;
constexpr std::size_t kMaxAhead = 128;
// So many targets at most are put in place together.
constexpr std::size_t kMaxTogether = 64;

// One item on its way. code: what the check or the conversion said.
struct Item {
  std::size_t index = 0;
  std::string source = {};
  const ItemRecord* before = nullptr;  // what became of it in the run that this one goes on with
  Outcome code = Outcome::Success;
  bool suitable = false;  // passed its check: it gets a target
  bool unchanged = false;
  bool kept = false;      // failed, and its target is put in place all the same
  bool endsRun = false;   // no item after it has its turn
  std::string name = {};  // of the target that is in its place
  std::unique_ptr<PreparedItem> prepared = {};
  std::optional<StagedFile> target = {};
  bool extended = false;
  std::int32_t number = 0;
  std::string reason = {};  // of a failure, see RunItem
  std::string line = {};
  std::optional<std::vector<ItemLoss>> losses = {};
};

std::uint32_t Count(std::size_t number) {
  return ClampTo<std::uint32_t>(number);
}

// The outcome of an action that may throw.
template <typename Action>
Outcome Guarded(const Action& action) {
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

class ItemRun {
 public:
  ItemRun(Run& run, const ItemFilter& filter)
      : run_(run),
        filter_(filter),
        count_(run.ItemCount()),
        named_(run.GetJob()),
        naming_(named_, run.Destination(), run.Files()) {
    // All parts of a run are named together, whatever machine makes them.
    if (IsShared()) named_.files.SelectAll();
  }

  void Execute() {
    if (run_.GoesOn()) {
      TakePlan();
    } else {
      NameTargets();
      BeginJournal();
    }
    ClearPlaces();
    const std::size_t workers = WorkerCount();
    if (workers == 0 || !InParallel(workers)) OneByOne();
    CountItems(run_.Result(), count_);
    run_.Result().remarks = run_.Remarks();
    // What the end of the program cuts off can be gone on with.
    const bool whole = run_.Result().items.size() == count_ && !run_.Result().cancelled;
    if (journal_ && (whole || !run_.Closing())) journal_->Remove();
  }

 private:
  // 0: one item after the other, on this thread.
  [[nodiscard]] std::size_t WorkerCount() const {
    if (!filter_.independent || count_ < 2) return 0;
    const std::size_t cores = filter_.workers != 0 ? filter_.workers : std::thread::hardware_concurrency();
    return std::clamp<std::size_t>(cores, 1, count_);
  }

  // The list of the job has all items, and those of this run are selected in it.
  [[nodiscard]] bool IsShared() const {
    return run_.Share().parts > 1 && run_.GetJob().Mode() == SourceMode::List;
  }

  // All names are settled before the first item begins.
  void NameTargets() {
    targets_.reserve(count_);
    std::size_t evading = 0;
    for (std::size_t i = 0; i < ts5::ItemCount(named_) && !run_.Cancelled(); ++i) {
      PlannedTarget target = NameTarget(ItemSource(named_, i));
      if (IsShared() && !run_.Share().Takes(i)) continue;
      if (target.evades) ++evading;
      targets_.push_back(std::move(target));
    }
    if (evading > 0 && count_ > 1) run_.ProtocolLine(Format(Text(texts::TargetsEvade), Count(evading)));
  }

  // The names of the run that this one goes on with; what it has made counts as made.
  void TakePlan() {
    journal_ = run_.GoesOn();
    targets_ = journal_->Plan().targets;
    for (const PlannedTarget& target : targets_) naming_.Reserve(target);
  }

  // A single file is as easily begun anew.
  void BeginJournal() {
    if (run_.Journals().empty() || count_ < 2 || targets_.size() < count_) return;
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    RunPlan plan{.job = run_.GetJob(),
                 .number = run_.JobNumber(),
                 .destination = run_.Destination(),
                 .devices = run_.Devices(),
                 .begun = std::chrono::duration_cast<std::chrono::seconds>(now).count(),
                 .targets = targets_};
    auto journal =
        RunJournal::Begin(run_.Journals(), std::move(plan), [this](FilterId) { return &run_.Module(); });
    if (journal) journal_ = std::make_shared<RunJournal>(*std::move(journal));
  }

  // Where a killed run has left something, it goes.
  void ClearPlaces() const {
    std::set<std::string, std::less<>> directories;
    for (const PlannedTarget& target : targets_) {
      if (Failed(target.code)) continue;
      const std::string place = BehindLinks(target.name).value_or(target.name);
      const std::string_view directory = DirectoryOf(place);
      if (!directories.contains(directory)) directories.emplace(directory);
    }
    for (const std::string& directory : directories) (void)ClearAbandonedFiles(directory);
  }

  PlannedTarget NameTarget(const std::string& source) {
    PlannedTarget target;
    const Outcome named = Guarded([&] {
      target = NameItem(naming_, run_.GetJob(), run_.Module(), run_.Destination(), source);
      return target.code;
    });
    target.code = named;
    return target;
  }

  [[nodiscard]] bool MayReplace(const std::string& target) {
    run_.StatusText(target);
    return run_.Ask({.text = std::string(Text(texts::AskOverwriteTarget)),
                     .icon = MessageIcon::Exclamation}) == Answer::Yes;
  }

  // The user's word on what stands where the target of an item goes; false when it has to stay.
  [[nodiscard]] bool AsksFirst(std::size_t index) const {
    const PlannedTarget& target = targets_[index];
    return target.taking == Taking::Ask && Succeeded(target.code) && run_.Files().exists(target.name) &&
           !run_.Files().isDirectory(target.name);  // which no answer would replace
  }
  [[nodiscard]] bool Permit(std::size_t index) {
    if (!MayReplace(targets_[index].name)) return false;
    targets_[index].taking = Taking::Replace;
    return true;
  }

  void Check(Item& item) const {
    if (!IsUsablePath(item.source)) {
      item.code = Outcome::SourceFailed;
      Explain(item);
      return;
    }
    ForgetFault();
    item.code = Guarded([&] {
      if (filter_.prepare) {
        auto prepared = filter_.prepare(item.source);
        if (!prepared) return prepared.error();
        item.prepared = *std::move(prepared);
      }
      return filter_.check ? filter_.check(item.source) : Outcome::Success;
    });
    item.suitable = Succeeded(item.code);
    if (item.suitable) item.code = Outcome::Success;
    Explain(item);
  }

  // Of what has just been done on this thread.
  void Explain(Item& item) const {
    if (Failed(item.code))
      item.reason = FailureReason(item.code, item.source, targets_[item.index].name, TakeFault());
  }

  // Converts into a file beside the target; the item's code says how it went.
  void Convert(Item& item) {
    ForgetFault();
    item.code = Guarded([&] { return ConvertInto(item); });
    Explain(item);
    item.prepared.reset();
    if ((Failed(item.code) && !item.kept) || item.unchanged) item.target.reset();
  }

  Outcome ConvertInto(Item& item) {
    PlannedTarget& target = targets_[item.index];
    if (Failed(target.code)) return target.code;
    if (!run_.Destination().structure.empty()) {
      const std::string directory(DirectoryOf(target.name));
      target.newDirectories = MissingDirectories(directory);
      (void)MakeDirectories(directory);
    }
    auto staged = StagedFile::Create(target.name);
    if (!staged) return staged.error();
    item.target = std::move(*staged);
    ItemWork work{.run = run_,
                  .source = item.source,
                  .target = *item.target,
                  .abandoned = abandoned_,
                  .progress =
                      [this, index = item.index](double fraction) {
                        if (front_.load(std::memory_order_relaxed) == index) ShowProgress(index, fraction);
                      },
                  .prepared = item.prepared.get(),
                  .targetName = target.name};
    const Outcome converted = filter_.convert(work);
    item.extended = work.extended;
    item.number = work.number;
    item.line = std::move(work.line);
    item.losses = std::move(work.losses);
    item.unchanged = work.unchanged;
    item.endsRun = work.endsRun && Failed(converted);
    const bool dropped = Failed(converted) && (!work.keepTarget || converted == Outcome::Cancelled);
    if (dropped || work.unchanged) return converted;
    if (item.target->IsEmpty()) return Outcome::TargetFailed;
    item.kept = Failed(converted);
    return converted;
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

  // The item as the result has it; name: of its target.
  [[nodiscard]] static ItemRecord RecordOf(const Item& item, std::string name) {
    RunItem done{item.source, std::move(name), Code(item.code), item.extended, item.reason};
    done.unchanged = item.unchanged;
    if (Succeeded(item.code)) done.losses = item.losses;
    // What a target lacks says nothing of one that did not come about.
    if (Succeeded(item.code) || !item.losses) done.remark = item.line;
    return {.index = item.index, .item = std::move(done), .number = item.number};
  }

  // Books the item; false when the run ends with it.
  bool Book(const Item& item) {
    ItemRecord record = item.before != nullptr ? *item.before : RecordOf(item, item.name);
    const bool cancelled = record.item.code == Code(Outcome::Cancelled);
    if (journal_ && item.before == nullptr && !cancelled) journal_->Book(record);
    const RunStatus status{record.item.code, record.item.extended, record.number, record.item.remark};
    run_.Result().items.push_back(std::move(record.item));
    if (cancelled) return EndCancelled();
    if (status.code != Code(Outcome::Success)) run_.AddStatus(status);
    return !item.endsRun;
  }

  // The user says No: the run ends, and the item leaves nothing.
  bool Refuse(Item& item) {
    item.target.reset();
    item.reason.clear();
    item.code = Outcome::Cancelled;
    return Book(item);
  }

  // Takes an item whose turn it is; false when the run ends with it. A question waits for nobody's flush:
  // what stands before it is in its place by then.
  bool Take(Item item) {
    if (item.suitable && AsksFirst(item.index)) {
      if (!Settle()) return false;
      if (!Permit(item.index)) return Refuse(item);
    }
    waiting_.push_back(std::move(item));
    return waiting_.size() < kMaxTogether || Settle();
  }

  // Puts all that was taken in its place: the contents go to the disk together, then each gets its name in
  // order, then their directories go to the disk. False when the run ends.
  bool Settle() {
    std::vector<Item> items = std::exchange(waiting_, {});
    std::vector<StagedFile*> files;
    for (Item& item : items) {
      if (item.target) files.push_back(&*item.target);
    }
    FlushGroup group;
    group.FlushContents(files);
    Announce(items);
    std::size_t count = 0;
    for (; count < items.size(); ++count) {
      if (!PutInPlace(items[count])) break;
    }
    ForgetFault();
    const Outcome flushed = group.FlushDirectories();
    bool goesOn = true;
    for (std::size_t i = 0; goesOn && i < std::min(count + 1, items.size()); ++i) {
      Item& item = items[i];
      if (Failed(flushed) && !item.name.empty() && Succeeded(item.code)) {
        FailLate(item, flushed);
        item.reason = FailureReason(flushed, item.source, item.name, {});
      }
      goesOn = Book(item);
    }
    return goesOn;
  }

  void Announce(const std::vector<Item>& items) {
    if (!journal_) return;
    std::vector<ItemRecord> records;
    for (const Item& item : items) {
      if (!item.target) continue;
      records.push_back(RecordOf(item, targets_[item.index].name));
      records.back().staged = MarkOf(item.target->TemporaryPath());
    }
    journal_->Announce(records);
  }

  // What the conversion said of its success holds no longer.
  static void FailLate(Item& item, Outcome code) {
    item.code = code;
    item.extended = false;
    item.line.clear();
  }

  [[nodiscard]] static bool EndsWith(const Item& item) {
    return item.code == Outcome::Cancelled || item.endsRun;
  }

  // False when the run ends with the item, e.g. as the user says No to what has appeared there meanwhile.
  bool PutInPlace(Item& item) {
    if (!item.target) return !EndsWith(item);
    ForgetFault();
    auto taken = PutTarget(run_, *item.target, targets_[item.index], naming_,
                           [this](const std::string& target) { return MayReplace(target); });
    if (taken) {
      item.name = *std::move(taken);
    } else {
      FailLate(item, taken.error());
      Explain(item);
    }
    item.target.reset();
    return !EndsWith(item);
  }

  [[nodiscard]] const ItemRecord* DoneBefore(std::size_t index) const {
    return run_.GoesOn() ? journal_->Done(index) : nullptr;
  }

  void OneByOne() {
    for (std::size_t i = 0; i < targets_.size(); ++i) {
      if (!Begin(i)) return;
      Item item{.index = i, .source = run_.Source(i), .before = DoneBefore(i)};
      if (item.before == nullptr) Check(item);
      if (item.suitable) {
        if (AsksFirst(i) && !Permit(i)) {
          Refuse(item);
          return;
        }
        Convert(item);
      }
      waiting_.push_back(std::move(item));
      if (!Settle()) return;
    }
    if (run_.Cancelled()) EndCancelled();
  }

  // Conversions run ahead in a bounded window; questions and names come in order. What is done while targets
  // are put in place waits for the next time, so that there are the more together the slower the disk is.
  // False when nothing was done.
  [[nodiscard]] bool InParallel(std::size_t workers) {
    std::size_t next = 0;
    std::size_t begun = 0;
    bool goesOn = true;
    OrderedPool<Item> pool(
        {.next = [&]() -> std::unique_ptr<Item> {
           if (next == targets_.size()) return nullptr;
           auto item = std::make_unique<Item>();
           item->index = next++;
           item->source = run_.Source(item->index);
           item->before = DoneBefore(item->index);
           return item;
         },
         .work =
             [this](Item& item) {
               if (item.before != nullptr) return;
               Check(item);
               if (item.suitable) Convert(item);
             },
         .begin =
             [&](const Item& item) {
               ++begun;
               if (run_.Cancelled() && goesOn) goesOn = Settle();
               return goesOn && (goesOn = Begin(item.index));
             },
         .take = [&](Item& item, bool done) { return !done || (goesOn = Take(std::move(item))); },
         .idle = [&] { return goesOn = Settle(); }},
        std::min(workers * kAheadPerWorker, kMaxAhead), abandoned_);
    if (!pool.Run(ClampTo<unsigned>(workers))) return false;
    if (goesOn && Settle() && begun == targets_.size() && run_.Cancelled()) EndCancelled();
    return true;
  }

  Run& run_;
  const ItemFilter& filter_;
  const std::size_t count_;
  Job named_;  // with all the items that are named together
  TargetNaming naming_;
  std::vector<PlannedTarget> targets_;  // of the items
  std::shared_ptr<RunJournal> journal_;
  std::vector<Item> waiting_;  // taken, and not yet in their places
  std::atomic<std::size_t> front_ = 0;
  std::atomic<bool> abandoned_ = false;
};

}  // namespace

bool ItemWork::Cancelled() const {
  return run.Cancelled() || abandoned.load(std::memory_order_relaxed);
}

void RunItems(Run& run, const ItemFilter& filter) {
  ItemRun(run, filter).Execute();
}

}  // namespace ts5
