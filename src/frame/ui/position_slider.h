// The position of a player, over the outline or the bars of what is played. Keys move it by the steps of
// playback_form.h.
#pragma once

#include <QPixmap>
#include <QSlider>
#include <memory>
#include <optional>

#include "frame/player_control.h"

namespace ts5 {

class PositionSlider : public QSlider {
  Q_OBJECT

 public:
  explicit PositionSlider(QWidget* parent = nullptr);
  // What plays and where; the handle stays with whoever holds it. passage: what is played over and over.
  void Show(const PlayerStatus& status, const std::optional<PracticePassage>& passage);

 signals:
  void Stepped(int milliseconds);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void SetWaveform(std::shared_ptr<const Waveform> waveform);
  // Music made of notes has bars in place of an outline.
  void SetScore(std::shared_ptr<const PlayerScore> score);
  void DrawOutline();
  void DrawBars(QPainter& painter) const;
  [[nodiscard]] double PlaceOf(std::chrono::nanoseconds time) const;  // pixels

  std::shared_ptr<const Waveform> waveform_;
  std::shared_ptr<const PlayerScore> score_;
  std::optional<PracticePassage> passage_;
  QPixmap outline_;  // of the waveform, or the bars
};

}  // namespace ts5
