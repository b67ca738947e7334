#include "app/playback_commands.h"

#include <optional>

#include "app/job_commands.h"
#include "app/main_window.h"
#include "frame/ui/playback_window.h"
#include "score/ui/score_playback.h"

namespace ts5 {
namespace {

std::optional<std::size_t> NumberOf(Jobs& jobs, const JobRun* run) {
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    if (jobs[i].run.Shared().get() == run) return i;
  }
  return std::nullopt;
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
    const auto find = [this, run = run.get()]() -> Job* {
      Jobs& jobs = window_.App().GetJobs();
      const auto number = NumberOf(jobs, run);
      return number ? &jobs[*number] : nullptr;
    };
    open = new PlaybackWindow({.filter = filter,
                               .title = job.title,
                               .run = run,
                               .options = [find, filter]() -> PlayerOptions* {
                                 Job* const found = find();
                                 if (found == nullptr || found->filter != filter) return nullptr;
                                 return dynamic_cast<PlayerOptions*>(found->parameters.Get());
                               },
                               .play = [this, run = run.get()] { Act(run, CommandId::Run); },
                               .stop = [this, run = run.get()] { Act(run, CommandId::Stop); }},
                              window_, &window_);
    open->setAttribute(Qt::WA_DeleteOnClose);
    if (filter == FilterId::ScorePlayer) AddScorePlayback(*open, find);
  }
  open->show();
  open->raise();
  open->activateWindow();
}

// The commands act on the active job, so the job of the window becomes that.
void PlaybackCommands::Act(const JobRun* run, CommandId command) {
  Jobs& jobs = window_.App().GetJobs();
  const auto number = NumberOf(jobs, run);
  if (!number) return;
  if (*number != jobs.ActiveNumber()) window_.JobActions().Activate(static_cast<int>(*number));
  if (*number == jobs.ActiveNumber()) window_.Trigger(command);
}

void PlaybackCommands::AddScorePlayback(PlaybackWindow& window, const std::function<Job*()>& find) {
  new ScorePlayback(window,
                    {.parameters = [find]() -> ScorePlayerParameters* {
                       Job* const job = find();
                       return job != nullptr ? dynamic_cast<ScorePlayerParameters*>(job->parameters.Get())
                                             : nullptr;
                     },
                     .source =
                         [find] {
                           const Job* const job = find();
                           return job != nullptr ? ItemSource(*job, 0) : std::string();
                         },
                     .setDirectory = window_.App().GetSettings().playbackParameterDirectory},
                    window_);
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
