// What the score player adds to the playback window: its parameter pages, the tempo, and the staves that
// sound. Changes reach the job and the score that plays at once.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>

#include "frame/ui/playback_window.h"
#include "score/score_player.h"
#include "score/score_stage.h"

namespace Ui {
class PLAYBACKSCORE;
}

namespace ts5 {

class ScorePages;
class StaffLights;

class ScorePlayback : public QObject {
  Q_OBJECT

 public:
  struct Subject {
    // The parameters of the job; nullptr once it has gone or has another filter.
    std::function<ScorePlayerParameters*()> parameters;
    std::function<std::string()> source;  // the job's first item, "" for none
    std::string setDirectory;
  };
  // Lives as long as the window.
  ScorePlayback(PlaybackWindow& window, Subject subject, DialogHost& host);
  ~ScorePlayback() override;

 private:
  void Refresh();
  void ShowTitle(const ScoreStage::View& view);
  void ShowSource();
  void Take();

  PlaybackWindow& window_;
  Subject subject_;
  std::unique_ptr<Ui::PLAYBACKSCORE> ui_;
  StaffLights* lights_;
  ScorePages* pages_;
  std::shared_ptr<ScoreStage> stage_;
  std::uint32_t shownTitle_ = 0;
  std::string shownSource_;
  bool sourceShown_ = false;
};

}  // namespace ts5
