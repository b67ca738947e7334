#include "app/run/run_commands.h"

#include <QApplication>
#include <algorithm>
#include <cstdint>
#include <utility>

#include "app/run/question_dialog.h"
#include "app/shell/application.h"
#include "app/shell/parameter_windows.h"
#include "app/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/run_journal.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "frame/ui/results_dialog.h"
#include "platform/files/paths.h"
#include "preview/ui/preview_window.h"
#include "search/search_run.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::chrono::seconds kClockInterval{1};

// The device of a player by the name that it had when the lists were made.
std::string OutputOf(const Job& job, const DeviceLists& devices) {
  if (!IsPlayer(job.filter)) return {};
  const bool midi = Descriptor(job.filter).Shows(kPanelMidiDevices);
  const auto& names = midi ? devices.midiOutputs : devices.audioOutputs;
  const std::int32_t index = job.destinationDevice - (midi ? kMidiDeviceBase : 0);
  return index >= 0 && std::cmp_less(index, names.size()) ? names[static_cast<std::size_t>(index)]
                                                          : std::string();
}

}  // namespace

RunCommands::RunCommands(Desk& desk, ActiveJob& active, const SourceArea& source, RunPanels& panels,
                         Application& application)
    : desk_(desk), active_(active), source_(source), panels_(panels), application_(application) {
  clock_.setInterval(kClockInterval);
  connect(&clock_, &QTimer::timeout, this, [this] {
    for (const auto& [id, going] : going_) {
      if (const Job* const job = Find(id)) panels_.Of(*job).ShowTime();
    }
    emit Progressed();
  });
  connect(&notices_, &DesktopNotices::Chosen, this, &RunCommands::NoticeChosen);
  desk_.Actions().On(CommandId::Run, [this] { Start(); });
  desk_.Actions().On(CommandId::Stop, [this] { Stop(); });
  desk_.Actions().On(CommandId::UndoRun, [this] { Undo(active_->Id()); });
  connect(&active_, &ActiveJob::Changed, this,
          [this] { desk_.Actions().SetEnabled(CommandId::UndoRun, MayUndo(active_->Id())); });
  worker_.Start(
      [this, stop = stopUndoing_, registry = application_.RegistryPath()]() -> BackgroundWorker::Done {
        auto kept = FindKeptUndo(UndoDirectory(), registry);
        const UndoReport report = FinishAbandonedUndo(UndoDirectory(), [stop] { return stop->load(); });
        return [this, kept = std::move(kept), none = report.Empty(),
                text = std::string(Text(texts::UndoFinished)) + "\n\n" + UndoText(report)] {
          TakeKept(kept);
          if (none) return active_.Refresh();
          if (active_->Mode() == SourceMode::Directory) emit DirectoryChanged();
          active_.ChangeFiles();
          desk_.TellLater(text, MessageIcon::Information);
        };
      });
}

void RunCommands::Close() {
  for (const auto& [id, going] : going_) going.host->Close();
  going_.clear();
  clock_.stop();
  *stopUndoing_ = true;
  // Jobs may have other numbers and titles than after their runs.
  for (const auto& [id, undo] : undo_) {
    if (undoing_.contains(id) || noting_.contains(id)) continue;
    const auto owner = OwnerOf(id);
    owner ? (void)undo->KeepFor(*owner) : undo->Forget();
  }
}

Job* RunCommands::Find(JobId id) const {
  Jobs& jobs = application_.GetJobs();
  const auto number = jobs.Find(id);
  return number ? &jobs[*number] : nullptr;
}

// --- starting and stopping

void RunCommands::Start() {
  Job& job = *active_;
  // A second Run while a title plays pauses, or goes on.
  if (IsPlayer(job.filter) && !job.MayChange()) return job.run->player.TogglePause();
  active_.CommitDestination();
  std::optional<Job> narrowed = Narrowed(job);
  if (narrowed && ItemCount(*narrowed) == 0)
    return desk_.Tell(Text(texts::NothingShown), MessageIcon::Information);
  Begin(job, narrowed ? *narrowed : job, NameOrigin::Field);
}

std::optional<Job> RunCommands::Narrowed(const Job& job) const {
  if (!IsSearch(job.filter) || ItemCount(job) > 0) return std::nullopt;
  const auto shown = source_.NarrowedFiles();
  if (!shown) return std::nullopt;
  Job only = WithOnly(job, *shown);
  only.run = JobRunHandle(job.run.Shared());
  return only;
}

RunRequest RunCommands::Request(Job& job, const Job& work, NameOrigin origin) {
  const Settings& settings = application_.GetSettings();
  RunRequest request;
  request.settings = settings;
  request.destination = DestinationRulesOf(settings, work);
  request.destination.offered = active_.OfferedDestination();
  request.destination.origin = origin;
  request.number = application_.GetJobs().Find(job.Id()).value_or(0);
  request.devices.output = OutputOf(work, application_.Devices());
  request.journals = application_.Journals();
  request.practices = application_.Practices();
  if (IsSearch(work.filter) && work.destinationIsScreen) {
    request.begin = [this, &job, &work, policy = settings.oldSearchResults] {
      const auto& parameters = As<SearchParameters>(*work.parameters);
      panels_.Of(job).BeginSearch(RecordAtStart(SearchKindOf(work.filter), parameters), policy, [this] {
        return desk_.Confirm(Text(texts::AskClearResults), MessageIcon::Question, Answer::Yes);
      });
    };
  }
  return request;
}

void RunCommands::Begin(Job& job, Job& work, NameOrigin origin) {
  const ParameterDialog* const dialog = FindParameterDialog(work.filter);
  if (dialog != nullptr && dialog->prepare && work.parameters && work.MayChange() &&
      !dialog->prepare(work, application_, desk_, desk_.Window()))
    return;
  Launch(job, work, Request(job, work, origin));
}

void RunCommands::Launch(Job& job, Job& work, RunRequest request) {
  const JobId id = job.Id();
  const auto host =
      std::make_shared<DesktopRunHost>(this, [this, id](RunNews news) { Take(id, std::move(news)); });
  if (undoing_.contains(id)) return emit Refused();
  std::uint64_t kept = 0;
  for (const auto& [other, undo] : undo_) kept += other == id ? 0 : undo->Kept();
  const auto undo = std::make_shared<RunUndo>(UndoDirectory(), kMostKept - std::min(kept, kMostKept));
  request.undo = undo;
  panels_.Of(job).SetFilter(work.filter);
  panels_.Of(job).Reset();
  if (!application_.Runner().Start(work, std::move(request), host, desk_)) {
    emit Refused();
    return;
  }
  going_[id] = {host, std::make_shared<const Job>(work)};
  // Until now the run before could be undone; what only plays leaves it so.
  std::vector<JobId> gone;
  for (const auto& [other, one] : undo_) {
    if (Find(other) == nullptr) gone.push_back(other);
  }
  for (const JobId other : gone) ForgetUndo(other);
  if (!IsPlayer(work.filter)) {
    ForgetUndo(id);
    undo_[id] = undo;
  }
  clock_.start();
  if (&work == &job) active_.SetDestinationName(job.destinationName);
  active_.ChangeRun();
  emit Progressed();
}

void RunCommands::GoOn(const std::shared_ptr<RunJournal>& run) {
  const RunPlan& plan = run->Plan();
  Jobs& jobs = application_.GetJobs();
  const bool there = plan.number <= jobs.Count() && jobs[plan.number].title == plan.job.title;
  Job& job = jobs[there ? plan.number : 0];
  if (!job.MayChange() || !active_.Activate(job.Id()))
    return desk_.TellLater(Text(texts::RunWaitsForJob), MessageIcon::Information);
  Job work = plan.job;
  work.run = JobRunHandle(job.run.Shared());
  RunRequest request = Request(job, work, plan.destination.origin);
  request.destination = plan.destination;
  request.devices = plan.devices;
  request.goesOn = run;
  Launch(job, work, std::move(request));
}

void RunCommands::Stop() {
  if (const auto status = application_.Runner().Stop(*active_)) panels_.Current().SetStatus(QtText(*status));
}

bool RunCommands::MayUndo(JobId id) const {
  const Job* const job = Find(id);
  const auto undo = undo_.find(id);
  return job != nullptr && job->MayChange() && undo != undo_.end() && !undoing_.contains(id) &&
         undo->second->Any();
}

void RunCommands::Undo(JobId id) {
  if (!MayUndo(id)) return;
  undoing_.insert(id);
  desk_.ShowPrompt(QtText(texts::Undoing));
  active_.Refresh();
  worker_.Start([this, id, undo = undo_.at(id), stop = stopUndoing_]() -> BackgroundWorker::Done {
    const std::string text = UndoText(undo->Undo([stop] { return stop->load(); }));
    return [this, id, text] {
      undoing_.erase(id);
      desk_.ShowPrompt({});
      if (active_->Id() == id && active_->Mode() == SourceMode::Directory) emit DirectoryChanged();
      active_.ChangeFiles();
      desk_.TellLater(text, MessageIcon::Information);
    };
  });
}

std::optional<UndoOwner> RunCommands::OwnerOf(JobId id) const {
  const auto number = application_.GetJobs().Find(id);
  if (!number || application_.Journals().empty()) return std::nullopt;
  return UndoOwner{application_.RegistryPath(), static_cast<std::uint32_t>(*number),
                   application_.GetJobs()[*number].title};
}

void RunCommands::KeepUndo(JobId id) {
  const auto undo = undo_.find(id);
  const auto owner = OwnerOf(id);
  if (undo == undo_.end() || !owner) return;
  noting_.insert(id);
  worker_.Start([this, id, undo = undo->second, owner]() -> BackgroundWorker::Done {
    (void)undo->KeepFor(*owner);
    return [this, id] { noting_.erase(id); };
  });
}

// Behind what is being noted of it.
void RunCommands::ForgetUndo(JobId id) {
  auto undo = undo_.extract(id);
  if (undo.empty()) return;
  worker_.Start([undo = std::move(undo.mapped())]() -> BackgroundWorker::Done {
    undo->Forget();
    return {};
  });
}

void RunCommands::TakeKept(const std::vector<std::shared_ptr<RunUndo>>& kept) {
  const Jobs& jobs = application_.GetJobs();
  for (const auto& undo : kept) {
    const UndoOwner owner = *undo->Owner();
    std::optional<std::size_t> number;
    for (std::size_t i = 0; i <= jobs.Count(); ++i) {
      if (jobs[i].title == owner.title && (!number || i == owner.number)) number = i;
    }
    if (!number || !undo_.try_emplace(jobs[*number].Id(), undo).second) undo->Forget();
  }
}

// --- what the runs report

void RunCommands::Take(JobId id, RunNews news) {
  if (Job* const job = Find(id)) ShowNews(*job, news);
  for (const auto& [text, icon] : news.notices) desk_.TellLater(text, icon);
  for (const auto& question : news.questions)
    desk_.Queue().Add([this, question] { return MakeQuestionDialog(question, desk_); });
  if (news.result) Finish(id, *std::move(news.result));
}

void RunCommands::ShowNews(Job& job, RunNews& news) {
  const bool stopping = job.run->Cancelled() && !news.result;
  if (stopping) news.status.reset();  // "Breche ab" stays until the end
  const auto going = going_.find(job.Id());
  RunPanel& panel = panels_.Of(job);
  const bool recorded = panel.Recording();
  if (!panel.Take(news) && going != going_.end()) going->second.host->RefuseHits();
  if (&job == &*active_) {
    if (news.status && IsSearch(job.filter)) emit ProtocolLine(ToQt(*news.status));
    if (news.state || !news.hits.empty() || recorded != panel.Recording()) active_.Refresh();
  }
  if (news.state) emit Progressed();
}

void RunCommands::Finish(JobId id, RunResult result) {
  std::shared_ptr<const Job> work;
  if (const auto going = going_.find(id); going != going_.end()) {
    work = going->second.work;
    if (const Job* const job = Find(id)) NotifyOfEnd(*job, result, going->second.begun);
    going_.erase(going);
  }
  if (going_.empty()) clock_.stop();
  if (Job* const job = Find(id)) {
    RunPanel& panel = panels_.Of(*job);
    panel.Reset();
    if (panel.Searching()) panel.EndSearch(result);
    if (job == &*active_) {
      emit ProtocolLine({});
      active_.ChangeFiles();
      const std::string& directory = job->directory.path;
      const bool beside = std::ranges::any_of(result.items, [&](const RunItem& item) {
        return DirectoryOf(item.destination) == directory ||
               (job->subdirectories && PathBelow(directory, item.destination));
      });
      if (job->Mode() == SourceMode::Directory && beside) emit DirectoryChanged();
    }
    emit Progressed();
    KeepUndo(id);
  }
  if (!result.show) return;
  desk_.Queue().Add([this, result = std::move(result), id, work]() -> QDialog* {
    return MakeResultsDialog(result, id, work);
  });
}

void RunCommands::NotifyOfEnd(const Job& job, const RunResult& result,
                              std::chrono::steady_clock::time_point begun) {
  using std::chrono::milliseconds;
  const auto took = std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - begun);
  const bool watched = QApplication::activeWindow() != nullptr;
  const auto notice = EndNoticeOf(result, job.title, took, watched);
  if (!notice) return;
  QApplication::alert(desk_.Window());
  notices_.Show(*notice);
}

ResultsDialog* RunCommands::MakeResultsDialog(RunResult result, JobId id,
                                              const std::shared_ptr<const Job>& work) {
  // A disc that failed is written anew, not in parts.
  const bool mayRepeat = work != nullptr && !Has(work->filter, kWritesDisc);
  auto* dialog = new ResultsDialog(std::move(result), mayRepeat, desk_, desk_.Window());
  dialog->OfferNotation([](const std::string& path) { return preview::IsScoreName(path); });
  if (MayUndo(id)) dialog->OfferUndo(undo_.at(id)->NotKept());
  connect(
      dialog, &ResultsDialog::UndoWanted, this, [this, id] { Undo(id); }, Qt::QueuedConnection);
  connect(dialog, &ResultsDialog::NotationWanted, this,
          [this](const std::string& path) { preview::ShowNotation(path, desk_, desk_.Window()); });
  connect(dialog, &ResultsDialog::FileChosen, this, [this, id](const std::string& path) {
    const Job* const job = Find(id);
    if (job != nullptr && job->MayChange() && active_.Activate(id)) emit FileChosen(path);
  });
  connect(
      dialog, &ResultsDialog::Repeat, this,
      [this, id, work](const std::vector<std::string>& sources) { Repeat(id, *work, sources); },
      Qt::QueuedConnection);
  return dialog;
}

void RunCommands::Repeat(JobId id, const Job& work, const std::vector<std::string>& sources) {
  Job* const job = Find(id);
  if (job == nullptr || !job->MayChange() || !active_.Activate(id)) return;
  Job again = WithOnly(work, sources);
  again.run = JobRunHandle(job->run.Shared());
  // A name that was chosen for one file holds for this file only.
  Begin(*job, again, ItemCount(work) == 1 ? NameOrigin::Field : NameOrigin::Automatic);
}

}  // namespace ts5
