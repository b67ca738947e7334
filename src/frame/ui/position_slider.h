// The position of a player, over the outline of what is played. Keys move it by the steps of playback_form.h.
#pragma once

#include <QPixmap>
#include <QSlider>
#include <memory>

#include "frame/player_control.h"

namespace ts5 {

class PositionSlider : public QSlider {
  Q_OBJECT

 public:
  explicit PositionSlider(QWidget* parent = nullptr);
  void SetWaveform(std::shared_ptr<const Waveform> waveform);

 signals:
  void Stepped(int milliseconds);

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  void changeEvent(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void DrawOutline();

  std::shared_ptr<const Waveform> waveform_;
  QPixmap outline_;  // of the waveform
};

}  // namespace ts5
