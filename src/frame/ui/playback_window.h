// PLAYBACK: the window of the players with its page PLAYBACK1. It stays open while titles play; what is
// changed here takes effect at once.
#pragma once

#include <QTimer>
#include <functional>
#include <memory>
#include <optional>

#include "frame/playback_form.h"
#include "frame/ui/hosted_dialog.h"

class QTabWidget;

namespace Ui {
class PLAYBACK;
}

namespace ts5 {

class LevelMeterWidget;
class PositionSlider;
class PracticePanel;

class PlaybackWindow : public HostedDialog {
  Q_OBJECT

 public:
  struct Subject {
    FilterId filter = FilterId::None;
    std::string title;  // of the job
    std::shared_ptr<JobRun> run;
    // The options of the job; nullptr once the job has gone or has another filter: the window closes then.
    std::function<PlayerOptions*()> options;
    std::function<void()> play;  // starts, or pauses and goes on
    std::function<void()> stop;
  };
  PlaybackWindow(Subject subject, DialogHost& host, QWidget* parent);
  ~PlaybackWindow() override;

  [[nodiscard]] QString HelpTopic() const override;
  [[nodiscard]] const std::shared_ptr<JobRun>& Run() const { return subject_.run; }

  // For the players that have more: pages behind PLAYBACK1, and controls below the position.
  [[nodiscard]] QTabWidget& Pages();
  void AddExtras(QWidget* extras);

 signals:
  void Refreshed();  // as often as the window looks at the player

 protected:
  // The page keys move the position wherever the focus is.
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void TakeOptions();
  void TakeSound();
  void Refresh();
  void Show(const PlaybackForm& form);

  Subject subject_;
  std::unique_ptr<Ui::PLAYBACK> ui_;
  PositionSlider* position_;
  LevelMeterWidget* meter_;
  PracticePanel* practice_;
  QTimer timer_;
  std::optional<PlaybackForm> shown_;
  unsigned refreshes_ = 0;
};

}  // namespace ts5
