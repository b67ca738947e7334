// Practising the title that plays: the passage from A to B, tempo, key, and the tracks that sound. What is
// changed takes effect at once and is remembered for the file.
#pragma once

#include <QLabel>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>
#include <QWidget>
#include <functional>
#include <optional>
#include <string>

#include "frame/player_control.h"
#include "platform/base/strings.h"

class QMenu;

namespace ts5 {

class PracticePanel : public QWidget {
  Q_OBJECT

 public:
  // control: of what plays; nullptr while there is nothing to steer.
  explicit PracticePanel(std::function<PlayerControl*()> control, QWidget* parent = nullptr);

  // As often as the window looks at the player.
  void Show(const PlayerStatus& status);
  // The title that plays is not played plainly.
  [[nodiscard]] bool Practises() const { return practice_ != Practice{}; }

 private:
  [[nodiscard]] QToolButton* MakeButton(const char* name, TextId text, TextId tip);
  // Of the title that has begun.
  void TakeTitle(const PlayerStatus& status);
  void ShowPractice();
  void SetFrom();
  void SetTo();
  void Give();  // the practice to the player
  void FillTracks();

  std::function<PlayerControl*()> control_;
  QToolButton* from_;
  QToolButton* to_;
  QToolButton* whole_;
  QSlider* speed_;
  QLabel* speedText_;
  QSpinBox* shift_;
  QToolButton* tracks_;
  QMenu* trackMenu_;
  std::string title_;
  std::shared_ptr<const PlayerScore> score_;
  Practice practice_;
  std::optional<std::chrono::nanoseconds> begun_;  // A, as long as there is no B
};

}  // namespace ts5
