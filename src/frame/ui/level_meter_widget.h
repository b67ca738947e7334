// Draws the levels of both channels in one of three styles; a double click goes to the next one. It repaints
// only when something has changed, so that sixty updates a second cost next to nothing in silence.
#pragma once

#include <QElapsedTimer>
#include <QWidget>

#include "frame/level_meter.h"

namespace ts5 {

enum class MeterStyle : std::uint8_t { Bars, Segments, Needle };

class LevelMeterWidget : public QWidget {
  Q_OBJECT

 public:
  explicit LevelMeterWidget(QWidget* parent = nullptr);

  void SetStyle(MeterStyle style);
  [[nodiscard]] MeterStyle Style() const { return style_; }
  // Takes what has come since the last call.
  void Advance(LevelTap& tap);

  [[nodiscard]] QSize sizeHint() const override { return {320, 64}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void PaintBar(QPainter& painter, const QRectF& area, const MeterBallistics::Channel& level,
                bool segments) const;
  void PaintNeedle(QPainter& painter, const QRectF& area, const MeterBallistics::Channel& level) const;
  void PaintScale(QPainter& painter, const QRectF& area) const;

  MeterBallistics ballistics_;
  MeterStyle style_ = MeterStyle::Bars;
  QElapsedTimer clock_;
};

}  // namespace ts5
