// Draws the levels of both channels in one of three styles; a double click goes to the next one. What stands
// still is drawn once into a picture, and an update repaints only the strip in which a level has moved, so
// that sixty of them a second are not felt.
#pragma once

#include <QElapsedTimer>
#include <QPixmap>
#include <QWidget>
#include <array>

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
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  // Where the levels of a channel stand on the screen, in device pixels.
  struct Places {
    int peak = 0;
    int rms = 0;
    int hold = 0;
    bool over = false;

    bool operator==(const Places&) const = default;
  };
  using Level = MeterBallistics::Channel;

  [[nodiscard]] Places PlacesOf(const Level& level) const;
  [[nodiscard]] QRect Moved(std::size_t channel, const Places& from, const Places& to) const;
  [[nodiscard]] QRectF Half(std::size_t channel) const;  // of the needles
  [[nodiscard]] QRectF Bar(std::size_t channel) const;
  [[nodiscard]] QRectF Lamp(std::size_t channel) const;  // for what was too loud
  void PaintStill();
  void PaintBar(QPainter& painter, const QRectF& area, const Level& level) const;
  void PaintSegments(QPainter& painter, const QRectF& area, const Level* level) const;  // nullptr: all unlit
  void PaintDial(QPainter& painter, const QRectF& area) const;
  void PaintNeedles(QPainter& painter, const QRectF& area, const Level& level) const;
  void PaintScale(QPainter& painter) const;

  MeterBallistics ballistics_;
  MeterStyle style_ = MeterStyle::Bars;
  QElapsedTimer clock_;
  QPixmap still_;
  std::array<Places, kMeterChannels> places_{};  // as they are on the screen
};

}  // namespace ts5
