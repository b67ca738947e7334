#include "frame/run.h"

#include <algorithm>
#include <thread>

namespace ts5 {

Run::Run(RunSetup setup, const FilterModule& module, std::shared_ptr<JobRun> state,
         std::shared_ptr<RunHost> host)
    : setup_(std::move(setup)),
      module_(&module),
      state_(std::move(state)),
      host_(std::move(host)),
      result_(ResultWithTitles(module.id, TitlesOf(module.id))) {}

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
  if (state_->state.exchange(state) != state) host_->StateChanged(state);
}

void Run::Progress(std::uint32_t item, std::uint32_t items, double fraction) {
  const std::lock_guard lock(hostMutex_);
  state_->currentItem = item == 0 ? 0 : item - 1;
  lastProgress_ = {item, items, std::clamp(fraction, 0.0, 1.0)};
  progressPending_ = true;
  const auto now = std::chrono::steady_clock::now();
  if (progressSent_ && now - lastSent_ < kProgressInterval) return;
  lastSent_ = now;
  SendProgress();
}

void Run::SendProgress() {
  if (!progressPending_) return;
  progressPending_ = false;
  progressSent_ = true;
  host_->Progress(lastProgress_);
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
  }
  return state->Wait([this] { return Cancelled(); });
}

bool Run::ConfirmStop(std::string_view question) {
  if (!Cancelled()) return false;
  const std::int32_t request = state_->cancelRequest.exchange(kNoCancel);
  if (Ask({.text = std::string(question)}) == Answer::No) return false;
  state_->cancelRequest = request == kNoCancel ? kUserStop : request;
  return true;
}

void Run::AddStatus(const Status& status) {
  const bool known =
      std::ranges::any_of(statusList_, [&](const Status& entry) { return entry.SameKind(status); });
  if (!known) statusList_.push_back(status);
}

std::vector<std::string> Run::Remarks() const {
  std::vector<std::string> lines;
  for (const Status& status : statusList_) {
    for (std::string& line : RemarkLines(module_->remarks, status)) {
      // Different outcomes may have one text.
      if (std::ranges::find(lines, line) == lines.end()) lines.push_back(std::move(line));
    }
  }
  return lines;
}

void Run::Finish() {
  const std::lock_guard lock(hostMutex_);
  SendProgress();
  for (const Status& status : statusList_) result_.cancelled |= status.code == Code(Outcome::Cancelled);
  state_->currentItem = 0;
  state_->state = RunState::Idle;
  host_->StateChanged(RunState::Idle);
  host_->Finished(result_);
}

}  // namespace ts5
