#include "app/shell/active_job.h"

#include <utility>

#include "app/shell/application.h"
#include "frame/file_types.h"
#include "frame/target_naming.h"

namespace ts5 {

ActiveJob::ActiveJob(Application& application, JobDialogs& dialogs, QObject* parent)
    : QObject(parent), application_(application), dialogs_(dialogs) {}

Job& ActiveJob::operator*() const {
  return application_.GetJobs().Active();
}

// --- other jobs

void ActiveJob::Show() {
  // A job that never had a filter gets its first one here.
  UpdateBar();
  emit FilterChanged();
  emit JobShown();
  ShowDestination();
  emit SourceReplaced();
  if ((*this)->destinationName.empty()) OfferDestination();
  emit Changed();
}

void ActiveJob::Activate(std::size_t number) {
  Settle();
  Jobs& jobs = application_.GetJobs();
  if (number == jobs.ActiveNumber()) return;
  (void)jobs.Activate(number, application_.GetSettings().jobSaving, *this);
}

bool ActiveJob::Activate(JobId job) {
  if (const auto number = application_.GetJobs().Find(job)) Activate(*number);
  return (*this)->Id() == job;
}

bool ActiveJob::Remove(std::size_t number) {
  return application_.GetJobs().Remove(number, *this);
}

void ActiveJob::RestoreRemoved() {
  if (const auto number = application_.GetJobs().Restore()) Activate(*number);
}

void ActiveJob::CommitAtEnd(JobSaving policy) {
  application_.GetJobs().CommitAtEnd(policy, *this);
}

bool ActiveJob::Confirm(std::string_view question, MessageIcon icon, Answer preset) {
  return dialogs_.Confirm(question, icon, preset);
}

void ActiveJob::Tell(std::string_view text, MessageIcon icon) {
  dialogs_.Tell(text, icon);
}

bool ActiveJob::Show(Job& /*job*/) {
  Show();
  return true;
}

// --- changes of the job

bool ActiveJob::SwitchFilter(FilterId filter) {
  Job& job = **this;
  CommitDestination();
  if (job.destinationName == offered_) job.destinationName.clear();  // is made anew
  if (!application_.GetJobs().SwitchFilter(job, filter, dialogs_)) return false;
  emit FilterChanged();
  ShowDestination();
  // The switch to or from the burner has emptied the list, and the burner's list has columns of its own.
  if (job.Mode() == SourceMode::List) emit SourceReplaced();
  UpdateBar();
  if (job.destinationName.empty()) OfferDestination();
  emit Changed();
  return true;
}

void ActiveJob::ToggleTile(FilterId filter) {
  std::uint32_t& word = (*this)->filterStatus.at(static_cast<std::size_t>(filter));
  word = ToggledStatus(word);
  UpdateBar();
}

void ActiveJob::FixFilter(bool fixed) {
  (*this)->filterFixed = fixed;
  UpdateBar();
}

bool ActiveJob::ShowsAllFilters() const {
  return application_.GetSettings().showAllFilters;
}

void ActiveJob::ShowAllFilters(bool all) {
  application_.GetSettings().showAllFilters = all;
  UpdateBar();
}

void ActiveJob::ShowSource() {
  Show();
  OfferDestination();
}

void ActiveJob::ChangeFiles() {
  UpdateBar();
  OfferDestination();
  emit Changed();
}

void ActiveJob::ChangeRun() {
  UpdateBar();
  emit Changed();
}

void ActiveJob::SetAudioCd(bool audioCd) {
  audioCd_ = audioCd ? (*this)->directory.path : std::string();
}

void ActiveJob::SetDestinationName(const std::string& name) {
  panel_.name = name;
  emit DestinationNamed(name);
}

void ActiveJob::SetTargetDirectory(const std::string& directory) {
  (*this)->targetDirectory = directory;
  OfferDestination();
  emit Changed();
}

// --- what follows

bool ActiveJob::Offers(FilterId filter) const {
  return application_.Module(filter) != nullptr;
}

bool ActiveJob::CanRun() const {
  return bar_.CanRun() && Offers((*this)->filter);
}

bool ActiveJob::IsAudioCd() const {
  const Job& job = **this;
  if (job.Mode() == SourceMode::List) return false;
  // Tracks that are selected tell it before their disc has been read.
  const DirectorySelection& directory = job.directory;
  return directory.names.empty() ? !audioCd_.empty() && audioCd_ == directory.path
                                 : IsCdTrackText(directory.names.front());
}

void ActiveJob::ShowDestination() {
  offered_.clear();
  offeredFor_ = (*this)->filter;
  emit DestinationReplaced();
}

void ActiveJob::UpdateBar() {
  Job& job = **this;
  const auto updated = [&] {
    FilterBarInput input;
    input.source = job.Mode() == SourceMode::List ? ListContext(job.files)
                                                  : DirectoryContext(job.directory, IsAudioCd());
    input.devices = application_.Devices().Counts();
    input.jobIsIdle = job.MayChange();
    input.filter = job.filter;
    input.filterFixed = job.filterFixed;
    input.showAll = ShowsAllFilters();
    if (input.showAll && job.Mode() == SourceMode::List && job.files.Selection().empty())
      input.whole = WholeListContext(job.files);
    input.words = job.filterStatus;
    return RefreshFilterBar(input);
  };
  bar_ = updated();
  if (bar_.filter != job.filter && application_.GetJobs().SwitchFilter(job, bar_.filter, dialogs_))
    bar_ = updated();
  job.filterStatus = bar_.words;
  job.filterFixed = bar_.filterFixed;
  emit BarChanged();
}

void ActiveJob::OfferDestination() {
  const Job& job = **this;
  TargetOffer offer =
      OfferTarget(job, application_.Module(job.filter), DestinationRulesOf(application_.GetSettings(), job),
                  SystemDestinationFiles());
  // Files that the filter does not take have no target, and a name is for one filter only.
  if (!CanRun() && offer.mode.automatic) offer.name.emplace();
  if (!offer.name && std::exchange(offeredFor_, job.filter) != job.filter) offer.name.emplace();
  offeredFor_ = job.filter;
  if (!offer.name) return;
  offered_ = *offer.name;
  SetDestinationName(offered_);
}

}  // namespace ts5
