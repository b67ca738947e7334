#include "app/job_commands.h"

#include "app/main_window.h"
#include "app/source_commands.h"
#include "frame/texts.h"
#include "frame/ui/job_dialog.h"
#include "frame/ui/message_box.h"

namespace ts5 {

JobCommands::JobCommands(MainWindow& window) : window_(window) {
  window_.On(CommandId::NewJob, [this] { Create(); });
  window_.On(CommandId::RenameJob, [this] { Rename(); });
  window_.On(CommandId::DeleteJob, [this] { Remove(); });
  connect(&window_.JobButtons(), &JobBar::JobChosen, this, [this](int number) { Activate(number); });
  connect(&window_.JobButtons(), &JobBar::NewJobChosen, this, [this] { window_.Trigger(CommandId::NewJob); });
}

void JobCommands::Activate(int number) {
  window_.Sources().TakeSelection();
  Jobs& jobs = window_.App().GetJobs();
  if (static_cast<std::size_t>(number) != jobs.ActiveNumber()) {
    (void)jobs.Activate(static_cast<std::size_t>(number), window_.App().GetSettings().jobSaving, window_);
  }
  window_.RefreshJobBar();
  window_.RefreshCommands();
}

void JobCommands::Create() {
  Jobs& jobs = window_.App().GetJobs();
  if (const auto panel = window_.Panel()) CommitDestination(window_.ActiveJob(), *panel);
  const JobTitle preset = jobs.NewTitle();
  JobDialog dialog(JobDialog::Purpose::Create, {preset.title, preset.description}, window_, &window_);
  if (dialog.exec() != QDialog::Accepted) return;
  const JobNames names = dialog.Names();
  if (!jobs.Create({names.title, names.description})) ShowWarning(&window_, texts::JobNotCreated);
  window_.RefreshJobBar();
  window_.RefreshCommands();
}

void JobCommands::Rename() {
  Jobs& jobs = window_.App().GetJobs();
  const std::size_t number = jobs.ActiveNumber();
  JobDialog dialog(JobDialog::Purpose::Rename, {jobs[number].title, jobs[number].description}, window_,
                   &window_);
  if (dialog.exec() != QDialog::Accepted || number > jobs.Count()) return;
  const JobNames names = dialog.Names();
  jobs.Rename(number, {names.title, names.description});
  window_.RefreshJobBar();
}

void JobCommands::Remove() {
  Jobs& jobs = window_.App().GetJobs();
  const std::size_t number = jobs.ActiveNumber();
  const auto run = jobs[number].run.Shared();
  if (!jobs.Remove(number, window_)) return;
  window_.DropPanel(run.get());
  window_.RefreshJobBar();
  window_.RefreshCommands();
}

}  // namespace ts5
