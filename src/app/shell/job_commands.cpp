#include "app/shell/job_commands.h"

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/job_dialog.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

JobCommands::JobCommands(Desk& desk, ActiveJob& active, Jobs& jobs, JobBar& bar, RunPanels& panels)
    : desk_(desk), active_(active), jobs_(jobs), bar_(bar), panels_(panels) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::NewJob, [this] { Create(); });
  actions.On(CommandId::RenameJob, [this] { Rename(); });
  actions.On(CommandId::DeleteJob, [this] { Remove(); });
  actions.On(CommandId::RestoreJob, [this] { active_.RestoreRemoved(); });
  connect(&active_, &ActiveJob::JobShown, this, &JobCommands::ShowJobs);
  connect(&active_, &ActiveJob::Changed, this, &JobCommands::Refresh);
  connect(&bar_, &JobBar::JobChosen, this, [this](int number) {
    active_.Activate(static_cast<std::size_t>(number));
    ShowJobs();  // also the job that is active already: its button was pressed out
  });
  connect(&bar_, &JobBar::NewJobChosen, this, [this] { desk_.Actions().Trigger(CommandId::NewJob); });
}

void JobCommands::ShowJobs() {
  std::vector<JobBar::Button> buttons;
  for (std::size_t i = 0; i <= jobs_.Count(); ++i) {
    const Job& job = jobs_[i];
    const bool running = job.State() != RunState::Idle;
    const RunPanel* const panel = panels_.Find(job.Id());
    buttons.push_back({ToQt(job.title), ToQt(job.description), running,
                       running && panel != nullptr ? panel->BriefProgress() : QString()});
  }
  // While a disc is written, its job stays in view.
  const bool switchable = !Has(active_->filter, kWritesDisc) || active_->State() == RunState::Idle;
  bar_.Show(buttons, static_cast<int>(jobs_.ActiveNumber()), switchable, jobs_.MayCreate());
}

void JobCommands::Refresh() {
  desk_.Actions().SetEnabled(CommandId::NewJob, jobs_.MayCreate());
  desk_.Actions().SetEnabled(CommandId::RestoreJob, jobs_.MayRestore());
  desk_.Actions().SetEnabled(CommandId::DeleteJob, jobs_.MayRemove(jobs_.ActiveNumber()));
}

void JobCommands::Create() {
  active_.CommitDestination();
  const JobTitle preset = jobs_.NewTitle();
  JobDialog dialog(JobDialog::Purpose::Create, {preset.title, preset.description}, desk_, desk_.Window());
  if (dialog.exec() != QDialog::Accepted) return;
  const JobNames names = dialog.Names();
  if (!jobs_.Create({names.title, names.description})) ShowWarning(desk_.Window(), texts::JobNotCreated);
  ShowJobs();
  Refresh();
}

void JobCommands::Rename() {
  const JobId job = active_->Id();
  JobDialog dialog(JobDialog::Purpose::Rename, {active_->title, active_->description}, desk_, desk_.Window());
  if (dialog.exec() != QDialog::Accepted) return;
  const auto number = jobs_.Find(job);
  if (!number) return;
  const JobNames names = dialog.Names();
  jobs_.Rename(*number, {names.title, names.description});
  ShowJobs();
}

void JobCommands::Remove() {
  if (!active_.Remove()) return;
  panels_.DropOrphans(jobs_);
  ShowJobs();
}

}  // namespace ts5
