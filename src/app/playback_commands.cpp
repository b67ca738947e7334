#include "app/playback_commands.h"

#include "app/main_window.h"
#include "frame/ui/playback_window.h"

namespace ts5 {
namespace {

Job* FindJob(Jobs& jobs, const JobRun* run) {
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    if (jobs[i].run.Shared().get() == run) return &jobs[i];
  }
  return nullptr;
}

}  // namespace

PlaybackCommands::PlaybackCommands(MainWindow& window) : window_(window) {
  window_.On(CommandId::PlayerRestart, [this] { Step(PlayerStep::Restart); });
  window_.On(CommandId::PlayerPrevious, [this] { Step(PlayerStep::Previous); });
  window_.On(CommandId::PlayerNext, [this] { Step(PlayerStep::Next); });
}

void PlaybackCommands::Open(Job& job) {
  auto& open = windows_[job.run.Shared().get()];
  if (open == nullptr) {
    const auto run = job.run.Shared();
    const FilterId filter = job.filter;
    const auto find = [this, run = run.get()] { return FindJob(window_.App().GetJobs(), run); };
    // The buttons work on the job of the window, which becomes the active one.
    const auto act = [this, find](CommandId command) {
      if (find() == &window_.ActiveJob()) window_.Trigger(command);
    };
    open = new PlaybackWindow({.filter = filter,
                               .title = job.title,
                               .run = run,
                               .options = [find, filter]() -> PlayerOptions* {
                                 Job* const found = find();
                                 if (found == nullptr || found->filter != filter) return nullptr;
                                 return dynamic_cast<PlayerOptions*>(found->parameters.Get());
                               },
                               .play = [act] { act(CommandId::Run); },
                               .stop = [act] { act(CommandId::Stop); }},
                              window_, &window_);
    open->setAttribute(Qt::WA_DeleteOnClose);
  }
  open->show();
  open->raise();
  open->activateWindow();
}

bool PlaybackCommands::TogglePause(Job& job) {
  if (!IsPlayer(job.filter) || job.MayChange()) return false;
  job.run->player.TogglePause();
  return true;
}

void PlaybackCommands::Step(PlayerStep step) {
  const Job& job = window_.ActiveJob();
  if (IsPlayer(job.filter) && !job.MayChange()) job.run->player.Step(step);
}

}  // namespace ts5
