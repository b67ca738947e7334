#include "app/run/playback_commands.h"

#include "frame/filter_catalogue.h"
#include "frame/ui/playback_window.h"
#include "score/ui/score_playback.h"

namespace ts5 {

PlaybackCommands::PlaybackCommands(Desk& desk, ActiveJob& active, JobWindows& windows,
                                   const Settings& settings)
    : desk_(desk), active_(active), windows_(windows), settings_(settings) {
  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::PlayerRestart, [this] { Step(PlayerStep::Restart); });
  actions.On(CommandId::PlayerPrevious, [this] { Step(PlayerStep::Previous); });
  actions.On(CommandId::PlayerNext, [this] { Step(PlayerStep::Next); });
  connect(&active_, &ActiveJob::Changed, this, &PlaybackCommands::Refresh);
}

void PlaybackCommands::Refresh() {
  const bool plays = active_->State() != RunState::Idle && IsPlayer(active_->filter);
  for (const CommandId step : {CommandId::PlayerRestart, CommandId::PlayerPrevious, CommandId::PlayerNext})
    desk_.Actions().SetEnabled(step, plays);
}

void PlaybackCommands::Open(const Job& job) {
  windows_.Open(job, JobWindows::Use::Always, [&](const JobFinder& find) -> QWidget* {
    auto* open =
        new PlaybackWindow({.filter = job.filter,
                            .title = job.title,
                            .run = job.run.Shared(),
                            .options = [find]() -> PlayerOptions* {
                              Job* const found = find();
                              return found != nullptr ? found->parameters.If<PlayerOptions>() : nullptr;
                            },
                            .play = [this, id = job.Id()] { Act(id, CommandId::Run); },
                            .stop = [this, id = job.Id()] { Act(id, CommandId::Stop); }},
                           desk_, desk_.Window());
    if (job.parameters.If<ScorePlayerParameters>() != nullptr) AddScorePlayback(*open, find);
    return open;
  });
}

void PlaybackCommands::Act(JobId job, CommandId command) {
  if (active_.Activate(job)) desk_.Actions().Trigger(command);
}

void PlaybackCommands::AddScorePlayback(PlaybackWindow& window, const JobFinder& find) {
  new ScorePlayback(window,
                    {.parameters = [find]() -> ScorePlayerParameters* {
                       Job* const job = find();
                       return job != nullptr ? job->parameters.If<ScorePlayerParameters>() : nullptr;
                     },
                     .source =
                         [find] {
                           const Job* const job = find();
                           return job != nullptr ? ItemSource(*job, 0) : std::string();
                         },
                     .setDirectory = settings_.playbackParameterDirectory},
                    desk_);
}

void PlaybackCommands::Step(PlayerStep step) {
  if (IsPlayer(active_->filter) && !active_->MayChange()) active_->run->player.Step(step);
}

}  // namespace ts5
