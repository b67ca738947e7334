// The players: their windows, one per job, and the commands that steer what plays.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>
#include <map>

#include "app/command_table.h"
#include "frame/job.h"
#include "frame/player_control.h"

namespace ts5 {

class MainWindow;
class PlaybackWindow;

class PlaybackCommands : public QObject {
 public:
  explicit PlaybackCommands(MainWindow& window);

  // Opens the playback window of a job whose filter is a player, or brings it to the front.
  void Open(Job& job);
  // A second Run while a title plays: pauses, or goes on. False when the job does not play.
  [[nodiscard]] static bool TogglePause(Job& job);

 private:
  void Act(const JobRun* run, CommandId command);
  void Step(PlayerStep step);
  // What the window of the score player has beside the others'. find: the window's job, nullptr once it has
  // gone.
  void AddScorePlayback(PlaybackWindow& window, const std::function<Job*()>& find);

  MainWindow& window_;
  std::map<const JobRun*, QPointer<PlaybackWindow>> windows_;
};

}  // namespace ts5
