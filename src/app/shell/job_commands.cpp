#include "app/shell/job_commands.h"

#include <QMenu>

#include "app/texts.h"
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
  actions.On(CommandId::RenameJob, [this] { Rename(jobs_.ActiveNumber()); });
  actions.On(CommandId::DeleteJob, [this] { Remove(jobs_.ActiveNumber()); });
  actions.On(CommandId::RestoreJob, [this] { active_.RestoreRemoved(); });
  connect(&active_, &ActiveJob::JobShown, this, &JobCommands::ShowJobs);
  connect(&active_, &ActiveJob::Changed, this, &JobCommands::Refresh);
  connect(&bar_, &JobBar::JobChosen, this, [this](int number) {
    active_.Activate(static_cast<std::size_t>(number));
    ShowJobs();  // also the job that is active already: its button was pressed out
  });
  connect(&bar_, &JobBar::MenuWanted, this,
          [this](int number, const QPoint& place) { ShowMenu(static_cast<std::size_t>(number), place); });
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

// What is saved is the default job's, so that is shown first.
void JobCommands::Create() {
  const JobId before = active_->Id();
  active_.Activate(0);
  if (jobs_.ActiveNumber() != 0) return;
  active_.CommitDestination();
  const JobTitle preset = jobs_.NewTitle();
  JobDialog dialog(JobDialog::Purpose::Create, {preset.title, preset.description}, desk_, desk_.Window());
  if (dialog.exec() != QDialog::Accepted) {
    (void)active_.Activate(before);
    return;
  }
  const JobNames names = dialog.Names();
  if (!jobs_.Create({names.title, names.description})) ShowWarning(desk_.Window(), texts::JobNotCreated);
  ShowJobs();
  Refresh();
}

void JobCommands::Rename(std::size_t number) {
  const Job& named = jobs_[number];
  const JobId job = named.Id();
  JobDialog dialog(JobDialog::Purpose::Rename, {named.title, named.description}, desk_, desk_.Window());
  if (dialog.exec() != QDialog::Accepted) return;
  const auto now = jobs_.Find(job);
  if (!now) return;
  const JobNames names = dialog.Names();
  jobs_.Rename(*now, {names.title, names.description});
  ShowJobs();
}

void JobCommands::Remove(std::size_t number) {
  if (!active_.Remove(number)) return;
  panels_.DropOrphans(jobs_);
  ShowJobs();
  Refresh();
}

void JobCommands::ShowMenu(std::size_t number, const QPoint& place) {
  if (number > jobs_.Count()) return;
  const JobId job = jobs_[number].Id();
  QMenu menu(desk_.Window());
  menu.setObjectName("jobContextMenu");
  const auto add = [&](TextId text, bool enabled, auto act) {
    QAction* const action = menu.addAction(QtText(text));
    action->setEnabled(enabled);
    // Jobs may come and go while the menu is open.
    connect(action, &QAction::triggered, this, [this, job, act] {
      if (const auto now = jobs_.Find(job)) act(*now);
    });
  };
  const bool active = number == jobs_.ActiveNumber();
  add(texts::JobMenuShow, !active && bar_.JobButton(static_cast<int>(number))->isEnabled(),
      [this](std::size_t now) { active_.Activate(now); });
  add(texts::JobMenuRename, true, [this](std::size_t now) { Rename(now); });
  add(texts::JobMenuDelete, jobs_.MayRemove(number), [this](std::size_t now) { Remove(now); });
  menu.addAction(desk_.Actions().Action(CommandId::RestoreJob));
  menu.exec(place);
}

}  // namespace ts5
