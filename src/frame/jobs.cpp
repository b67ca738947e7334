#include "frame/jobs.h"

#include <algorithm>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

bool HasDevicePanel(const FilterDescriptor& filter) {
  return filter.Shows(kPanelAudioDevices) || filter.Shows(kPanelDiscDrives) || filter.Shows(kPanelPrinters);
}

// The device of a job that has just got another filter: kept where it is of the same kind.
std::int32_t DeviceFor(FilterId filter, std::int32_t device) {
  const FilterDescriptor& descriptor = Descriptor(filter);
  if (descriptor.Shows(kPanelMidiDevices)) return std::max(device, kMidiDeviceBase);
  if (!HasDevicePanel(descriptor)) return kNoDevice;
  return device < 0 || device >= kMidiDeviceBase ? 0 : device;
}

}  // namespace

void CommitDestination(Job& job, const DestinationPanel& panel) {
  if (!IsFilter(job.filter)) return;
  const FilterDescriptor& filter = Descriptor(job.filter);
  if (filter.Shows(kPanelFile)) job.destinationName = panel.name;
  // A filter without the choice leaves it as it was made for the searches.
  if (filter.Shows(kPanelScreen)) job.destinationIsScreen = panel.screen;
  job.destinationDevice = kNoDevice;
  if (filter.Shows(kPanelMidiDevices))
    job.destinationDevice = kMidiDeviceBase + std::max(panel.midiDevice, 0);
  if (filter.Shows(kPanelAudioDevices)) job.destinationDevice = std::max(panel.audioDevice, 0);
  if (filter.Shows(kPanelDiscDrives)) job.destinationDevice = std::max(panel.drive, 0);
  if (filter.Shows(kPanelPrinters)) job.destinationDevice = std::max(panel.printer, 0);
}

Jobs::Jobs(StoredJobs stored, ModuleFinder modules)
    : modules_(std::move(modules)), default_(std::move(stored.defaultJob)) {
  for (Job& job : stored.saved) saved_.push_back(std::make_unique<Job>(std::move(job)));
}

Job& Jobs::operator[](std::size_t number) {
  return number == 0 ? default_ : *saved_.at(number - 1);
}

const Job& Jobs::operator[](std::size_t number) const {
  return number == 0 ? default_ : *saved_.at(number - 1);
}

bool Jobs::AnyRunning() const {
  return default_.State() != RunState::Idle ||
         std::ranges::any_of(saved_, [](const auto& job) { return job->State() != RunState::Idle; });
}

std::vector<const Job*> Jobs::Saved() const {
  std::vector<const Job*> jobs;
  for (const auto& job : saved_) jobs.push_back(job.get());
  return jobs;
}

std::optional<std::size_t> Jobs::Find(JobId id) const {
  for (std::size_t i = 0; i <= saved_.size(); ++i) {
    if ((*this)[i].Id() == id) return i;
  }
  return std::nullopt;
}

std::size_t Jobs::Append(Job job) {
  saved_.push_back(std::make_unique<Job>(std::move(job)));
  return saved_.size();
}

void Jobs::Drop(std::size_t number) {
  saved_.erase(saved_.begin() + static_cast<std::ptrdiff_t>(number - 1));
  if (active_ > number) --active_;
}

void Jobs::Commit(JobWindow& window) {
  if (const auto panel = window.Panel()) {
    CommitDestination(Active(), *panel);
  } else {
    window.Tell(Text(texts::JobNotSaved), MessageIcon::Exclamation);
  }
}

// The job that is left: edits are kept, or undone.
void Jobs::Leave(JobSaving policy, JobWindow& window) {
  Job& job = Active();
  if (active_ == 0) return Commit(window);
  if (!job.MayChange()) return;
  const bool keep = policy == JobSaving::Automatic ||
                    (policy == JobSaving::Ask &&
                     window.Confirm(Text(texts::AskSaveActiveJob), MessageIcon::Question, Answer::Yes));
  if (keep) {
    Commit(window);
  } else if (snapshot_) {
    job = *snapshot_;
  }
}

void Jobs::TakeSnapshot() {
  snapshot_ = active_ == 0 ? std::nullopt : std::optional(Active());
}

bool Jobs::Activate(std::size_t number, JobSaving policy, JobWindow& window) {
  if (number > saved_.size()) return false;
  Leave(policy, window);
  const std::size_t left = std::exchange(active_, number);
  if (!window.Show(Active())) {
    active_ = left;
    window.Tell(Text(texts::JobNotActivated), MessageIcon::Exclamation);
    return false;
  }
  TakeSnapshot();
  return true;
}

// Unlike a switch to another job, the end undoes nothing: No keeps the job as it is, only without the panel.
void Jobs::CommitAtEnd(JobSaving policy, JobWindow& window) {
  const bool keep = policy == JobSaving::Automatic ||
                    (policy == JobSaving::Ask &&
                     window.Confirm(Text(texts::AskSaveActiveJob), MessageIcon::Question, Answer::Yes));
  if (keep) Commit(window);
}

bool Jobs::MayCreate() const {
  return default_.MayChange() && saved_.size() < kMaxJobs;
}

JobTitle Jobs::NewTitle() const {
  const std::size_t number = saved_.size() + 1;
  return {Format(Text(texts::JobTitle), number), Format(Text(texts::JobDescription), number)};
}

std::optional<std::size_t> Jobs::Create(const JobTitle& title) {
  if (active_ != 0 || !MayCreate()) return std::nullopt;
  const JobTitle standard = NewTitle();
  auto job = std::make_unique<Job>(default_);
  job->title = standard.title;
  job->description = standard.description;
  job->filterStatus = NewFilterStatus();
  job->filterFixed = false;
  job->previousFilter = job->filter;
  saved_.push_back(std::move(job));
  Rename(saved_.size(), title);
  return saved_.size();
}

void Jobs::Rename(std::size_t number, const JobTitle& title) {
  Job& job = (*this)[number];
  if (!title.title.empty()) job.title = FirstCharacters(title.title, kMaxTitleCharacters);
  if (!title.description.empty())
    job.description = FirstCharacters(title.description, kMaxDescriptionCharacters);
  // Undoing other edits does not undo this one.
  if (snapshot_ && number == active_) {
    snapshot_->title = job.title;
    snapshot_->description = job.description;
  }
}

bool Jobs::MayRemove(std::size_t number) const {
  return number > 0 && number <= saved_.size() && (*this)[number].State() == RunState::Idle;
}

bool Jobs::Remove(std::size_t number, JobWindow& window) {
  if (!MayRemove(number)) return false;
  const Job& job = (*this)[number];
  const std::string question = std::string(Text(texts::AskDeleteJob)) + "\n\n" +
                               Format(Text(texts::JobInQuestion), job.title, job.description);
  if (!window.Confirm(question, MessageIcon::Question, Answer::No)) return false;
  const auto place = saved_.begin() + static_cast<std::ptrdiff_t>(number - 1);
  removed_ = std::move(*place);
  removedNumber_ = number;
  saved_.erase(place);
  if (active_ > number) {
    --active_;
  } else if (active_ == number) {
    active_ = 0;
    TakeSnapshot();
    if (!window.Show(default_)) window.Tell(Text(texts::JobNotActivated), MessageIcon::Exclamation);
  }
  return true;
}

std::optional<std::size_t> Jobs::Restore() {
  if (!MayRestore()) return std::nullopt;
  const std::size_t number = std::min(removedNumber_, saved_.size() + 1);
  saved_.insert(saved_.begin() + static_cast<std::ptrdiff_t>(number - 1), std::move(removed_));
  if (active_ >= number) ++active_;
  return number;
}

void Jobs::KeepDestination(const Job& job) {
  kept_[{job.Id(), job.filter}] = {ItemCount(job), ItemSource(job, 0), job.destinationName,
                                   job.destinationIsScreen, job.destinationDevice};
}

void Jobs::TakeKeptDestination(Job& job) const {
  const auto found = kept_.find({job.Id(), job.filter});
  if (found == kept_.end()) return;
  const Destination& kept = found->second;
  job.destinationIsScreen = kept.screen;
  job.destinationDevice = DeviceFor(job.filter, kept.device);
  if (kept.sources == ItemCount(job) && kept.source == ItemSource(job, 0)) job.destinationName = kept.name;
}

bool Jobs::SwitchFilter(Job& job, FilterId filter, JobDialogs& dialogs) {
  if (!job.MayChange() || !IsFilter(filter)) return false;
  if (job.filter == filter) return true;
  const bool toBurner = Has(filter, kTimedList);
  if (!job.files.Empty() && (toBurner || Has(job.filter, kTimedList))) {
    const TextId question = toBurner ? texts::AskSwitchToBurner : texts::AskSwitchFromBurner;
    if (!dialogs.Confirm(Text(question), MessageIcon::Question, Answer::No)) return false;
    job.files.Clear();
  }
  // What was set for the old filter is there again when the user comes back to it.
  KeepDestination(job);
  const FilterModule* const old = IsFilter(job.filter) ? modules_(job.filter) : nullptr;
  if (old != nullptr && job.parameters) SaveParameters(*old, *job.parameters, job.stored);
  job.previousFilter = std::exchange(job.filter, filter);
  job.parameters = LoadParameters(modules_(filter), job.stored);
  job.destinationDevice = DeviceFor(filter, job.destinationDevice);
  job.destinationName.clear();  // it is of the kind that the old filter makes
  TakeKeptDestination(job);
  return true;
}

}  // namespace ts5
