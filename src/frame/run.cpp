#include "frame/run.h"

#include <algorithm>
#include <thread>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/run_undo.h"
#include "platform/files/file_mark.h"

namespace ts5 {
namespace {

constexpr std::size_t kMostMeasured = 20'000;  // sources whose sizes are looked up, some microseconds each

}  // namespace

Run::Run(RunSetup setup, const FilterModule& module, std::shared_ptr<JobRun> state,
         std::shared_ptr<RunHost> host)
    : setup_(std::move(setup)), module_(&module), state_(std::move(state)), host_(std::move(host)) {
  result_.filter = module.id;
  result_.titles = Descriptor(module.id).titles;
}

const FilterParameters& ParametersOf(const Run& run) {
  return *run.GetJob().parameters;
}

Outcome Run::KeepReplaced(const std::string& target) {
  return setup_.undo ? setup_.undo->Keep(target, [this] { return Cancelled(); }) : Outcome::Success;
}

void Run::Made(const std::string& target, std::size_t newDirectories) {
  if (setup_.undo) setup_.undo->Made(target, newDirectories);
}

void Run::Changed(const std::string& target) {
  if (setup_.undo) setup_.undo->Changed(target);
}

bool Run::Sleep(std::chrono::milliseconds duration) const {
  const auto end = std::chrono::steady_clock::now() + duration;
  while (!Cancelled()) {
    const auto left = end - std::chrono::steady_clock::now();
    if (left <= left.zero()) return true;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(left, kCancelPoll));
  }
  return false;
}

void Run::SetState(RunState state) {
  const std::lock_guard lock(hostMutex_);
  if (state_->state.exchange(state) == state) return;
  const auto now = std::chrono::steady_clock::now();
  state == RunState::Running ? time_.Resume(now) : time_.Pause(now);
  host_->StateChanged(state);
}

void Run::Progress(std::uint32_t item, std::uint32_t items, double fraction) {
  Progress({.item = item, .items = items, .fraction = fraction});
}

void Run::Progress(const RunProgress& progress) {
  const std::lock_guard lock(hostMutex_);
  state_->currentItem = progress.item == 0 ? 0 : progress.item - 1;
  // Whether something is recorded is known at once: it cannot be stopped meanwhile.
  const bool turned = progress.buffer.has_value() != lastProgress_.buffer.has_value();
  lastProgress_ = progress;
  lastProgress_.fraction = std::clamp(progress.fraction, 0.0, 1.0);
  if (progress.whole) lastProgress_.whole = std::clamp(*progress.whole, 0.0, 1.0);
  progressPending_ = true;
  const auto now = std::chrono::steady_clock::now();
  if (progress.whole) {
    time_.Reached(*lastProgress_.whole, now);
  } else {
    MeasureSources();
    time_.Reached(progress.item, progress.items, lastProgress_.fraction, now);
  }
  if (!turned && progressSent_ && now - lastSent_ < kProgressInterval) return;
  lastSent_ = now;
  SendProgress();
}

void Run::SendProgress() {
  if (!progressPending_) return;
  progressPending_ = false;
  progressSent_ = true;
  lastProgress_.elapsed = time_.Elapsed(std::chrono::steady_clock::now());
  // Titles are played in their own time, which the playback window shows.
  lastProgress_.remaining = Has(module_->id, kPlays) ? std::nullopt : time_.Remaining();
  host_->Progress(lastProgress_);
}

// Big files take longer than small ones; of very many the mean does.
void Run::MeasureSources() {
  if (std::exchange(measured_, true) || lastProgress_.items != ItemCount() || ItemCount() > kMostMeasured)
    return;
  std::vector<std::uint64_t> sizes;
  sizes.reserve(ItemCount());
  for (std::size_t i = 0; i < ItemCount() && !Cancelled(); ++i) {
    const auto mark = MarkOf(Source(i));
    sizes.push_back(mark ? mark->size : 0);
  }
  time_.SetSizes(sizes);
}

void Run::TaskText(std::string_view text) {
  const std::lock_guard lock(hostMutex_);
  host_->TaskText(text);
}

void Run::StatusText(std::string_view text) {
  const std::lock_guard lock(hostMutex_);
  host_->StatusText(text);
}

void Run::ProtocolLine(std::string_view line) {
  const std::lock_guard lock(hostMutex_);
  host_->ProtocolLine(line);
}

void Run::Notice(std::string_view text, MessageIcon icon) {
  const std::lock_guard lock(hostMutex_);
  host_->Notice(text, icon);
}

Outcome Run::Hit(const SearchHit& hit) {
  const std::lock_guard lock(hostMutex_);
  return host_->Hit(hit);
}

Answer Run::Ask(QuestionText question) {
  if (Cancelled()) return Answer::Cancelled;
  const auto state = std::make_shared<QuestionState>();
  {
    const std::lock_guard lock(hostMutex_);
    SendProgress();  // the window shows the place at which the question comes up
    host_->Ask(std::make_shared<Question>(std::move(question), state));
    time_.Pause(std::chrono::steady_clock::now());
  }
  const Answer answer = state->Wait([this] { return Cancelled(); });
  const std::lock_guard lock(hostMutex_);
  time_.Resume(std::chrono::steady_clock::now());
  return answer;
}

bool Run::ConfirmStop(std::string_view question) {
  if (!Cancelled()) return false;
  const std::int32_t request = state_->cancelRequest.exchange(kNoCancel);
  if (Ask({.text = std::string(question)}) == Answer::No) return false;
  state_->cancelRequest = request == kNoCancel ? kUserStop : request;
  return true;
}

void Run::AddStatus(const RunStatus& status) {
  const bool known =
      std::ranges::any_of(statusList_, [&](const RunStatus& entry) { return entry.SameKind(status); });
  if (!known) statusList_.push_back(status);
}

std::vector<std::string> Run::Remarks() const {
  std::vector<std::string> lines;
  for (const RunStatus& status : statusList_) {
    for (std::string& line : RemarkLines(module_->remarks, status)) {
      // Different outcomes may have one text.
      if (std::ranges::find(lines, line) == lines.end()) lines.push_back(std::move(line));
    }
  }
  return lines;
}

std::string Run::RemarkOf(const RunItem& item) const {
  std::string remark;
  if (item.code == 0) return remark;
  // The number of a message is that of the first outcome of its kind.
  RunStatus status{item.code, item.extended, item.code};
  const auto known =
      std::ranges::find_if(statusList_, [&](const RunStatus& one) { return one.SameKind(status); });
  if (known != statusList_.end() && known->number != 0) status.number = known->number;
  for (const std::string& line : RemarkLines(module_->remarks, status)) {
    remark += (remark.empty() ? "" : " ") + line;
  }
  std::ranges::replace(remark, '\n', ' ');
  return remark;
}

void Run::Finish() {
  const std::lock_guard lock(hostMutex_);
  SendProgress();
  for (RunItem& item : result_.items) {
    if (item.remark.empty()) item.remark = RemarkOf(item);
  }
  for (const RunStatus& status : statusList_) result_.cancelled |= status.code == Code(Outcome::Cancelled);
  state_->currentItem = 0;
  state_->state = RunState::Idle;
  host_->StateChanged(RunState::Idle);
  host_->Finished(result_);
}

}  // namespace ts5
