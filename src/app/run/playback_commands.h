// The players: their windows, one per job, and the commands that steer what plays.
#pragma once

#include <QObject>

#include "app/run/job_windows.h"
#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "frame/job.h"
#include "frame/settings.h"

namespace ts5 {

class PlaybackWindow;

class PlaybackCommands : public QObject {
 public:
  PlaybackCommands(Desk& desk, ActiveJob& active, JobWindows& windows, const Settings& settings);

  // Opens the playback window of a job whose filter is a player, or brings it to the front.
  void Open(const Job& job);

 private:
  void Refresh();  // the commands
  // The commands act on the active job, so the job of the window becomes that.
  void Act(JobId job, CommandId command);
  void Step(PlayerStep step);
  // What the window of the score player has beside the others'.
  void AddScorePlayback(PlaybackWindow& window, const JobFinder& find);

  Desk& desk_;
  ActiveJob& active_;
  JobWindows& windows_;
  const Settings& settings_;
};

}  // namespace ts5
