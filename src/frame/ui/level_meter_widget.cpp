#include "frame/ui/level_meter_widget.h"

#include <QPainter>
#include <array>
#include <cmath>
#include <numbers>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/text.h"

namespace ts5 {
namespace {

constexpr std::array kMarks{-60, -40, -30, -20, -12, -6, -3, 0};
constexpr std::array kStyleNames{texts::MeterStyleBars, texts::MeterStyleSegments, texts::MeterStyleNeedle};
constexpr int kSegments = 40;
constexpr double kYellow = -9;  // dB
constexpr double kRed = -3;
constexpr qreal kNameWidth = 16;
constexpr qreal kOverWidth = 10;

QColor ColourOf(double decibels) {
  if (decibels >= kRed) return {220, 60, 50};
  if (decibels >= kYellow) return {230, 180, 40};
  return {60, 170, 80};
}

}  // namespace

LevelMeterWidget::LevelMeterWidget(QWidget* parent) : QWidget(parent) {
  setMinimumHeight(56);
  setAccessibleName(QtText(texts::PlaybackMeterName));
  setAttribute(Qt::WA_OpaquePaintEvent);
  SetStyle(MeterStyle::Bars);
  clock_.start();
}

void LevelMeterWidget::SetStyle(MeterStyle style) {
  style_ = style;
  setToolTip(QtText(kStyleNames.at(static_cast<std::size_t>(style))));
  update();
}

void LevelMeterWidget::Advance(LevelTap& tap) {
  const std::chrono::milliseconds elapsed(clock_.restart());
  if (ballistics_.Update(tap.Take(), elapsed)) update();
}

void LevelMeterWidget::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
  SetStyle(static_cast<MeterStyle>((static_cast<std::size_t>(style_) + 1) % kStyleNames.size()));
}

void LevelMeterWidget::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  const auto& levels = ballistics_.Levels();
  const std::array names{texts::MeterChannelLeft, texts::MeterChannelRight};
  if (style_ == MeterStyle::Needle) {
    painter.setRenderHint(QPainter::Antialiasing);
    for (std::size_t i = 0; i < levels.size(); ++i) {
      const QRectF area(width() * 0.5 * static_cast<qreal>(i), 0, width() * 0.5, height());
      PaintNeedle(painter, area.adjusted(6, 4, -6, -4), levels[i]);
      painter.setPen(palette().text().color());
      painter.drawText(area.adjusted(6, 2, 0, 0), Qt::AlignLeft | Qt::AlignTop, QtText(names[i]));
    }
    return;
  }
  const qreal scale = fontMetrics().height() + 2.0;
  const qreal bar = (height() - scale) / 2;
  for (std::size_t i = 0; i < levels.size(); ++i) {
    const qreal top = bar * static_cast<qreal>(i);
    painter.setPen(palette().text().color());
    painter.drawText(QRectF(2, top, kNameWidth, bar), Qt::AlignCenter, QtText(names[i]));
    PaintBar(painter, QRectF(kNameWidth + 4, top + 2, width() - kNameWidth - kOverWidth - 10, bar - 4),
             levels[i], style_ == MeterStyle::Segments);
    painter.fillRect(QRectF(width() - kOverWidth - 2, top + 2, kOverWidth, bar - 4),
                     levels[i].over ? QColor(220, 30, 30) : palette().mid().color());
  }
  PaintScale(painter,
             QRectF(kNameWidth + 4, height() - scale, width() - kNameWidth - kOverWidth - 10, scale));
}

void LevelMeterWidget::PaintBar(QPainter& painter, const QRectF& area, const MeterBallistics::Channel& level,
                                bool segments) const {
  painter.fillRect(area, palette().alternateBase());
  const auto at = [&](double decibels) { return area.left() + area.width() * MeterPlace(decibels); };
  if (segments) {
    const double step = -kMeterFloor / kSegments;
    for (int i = 0; i < kSegments; ++i) {
      const double low = kMeterFloor + step * i;
      QColor colour = ColourOf(low + step / 2);
      if (level.peak < low + step / 2 && !(level.hold >= low && level.hold < low + step)) colour.setAlpha(40);
      painter.fillRect(QRectF(at(low) + 1, area.top(), area.width() / kSegments - 2, area.height()), colour);
    }
    return;
  }
  double from = kMeterFloor;
  for (const double to : {kYellow, kRed, 0.0}) {
    const double end = std::min(to, level.peak);
    if (end > from)
      painter.fillRect(QRectF(QPointF(at(from), area.top()), QPointF(at(end), area.bottom())),
                       ColourOf(from));
    from = to;
  }
  // The RMS as a darker core.
  painter.fillRect(QRectF(QPointF(area.left(), area.top() + area.height() / 3),
                          QPointF(at(level.rms), area.bottom() - area.height() / 3)),
                   QColor(0, 0, 0, 90));
  if (level.hold > kMeterFloor) {
    painter.fillRect(QRectF(at(level.hold) - 2, area.top(), 2, area.height()), ColourOf(level.hold));
  }
}

void LevelMeterWidget::PaintNeedle(QPainter& painter, const QRectF& area,
                                   const MeterBallistics::Channel& level) const {
  const QPointF hub(area.center().x(), area.bottom() + area.height() * 0.4);
  const qreal length = area.height() * 1.3;
  const auto point = [&](double decibels, qreal radius) {
    const double angle = std::numbers::pi * (0.75 - 0.5 * MeterPlace(decibels));
    return hub + QPointF(std::cos(angle) * radius, -std::sin(angle) * radius);
  };
  for (const int mark : kMarks) {
    painter.setPen(QPen(mark > kRed ? ColourOf(mark) : palette().text().color(), 1.5));
    painter.drawLine(point(mark, length * 0.92), point(mark, length));
  }
  painter.setPen(QPen(ColourOf(level.hold), 1));
  painter.drawLine(point(level.hold, length * 0.6), point(level.hold, length * 0.9));
  painter.setPen(QPen(palette().text().color(), 2));
  painter.drawLine(point(level.rms, length * 0.35), point(level.rms, length * 0.9));
}

void LevelMeterWidget::PaintScale(QPainter& painter, const QRectF& area) const {
  painter.setPen(palette().text().color());
  for (const int mark : kMarks) {
    const qreal x = area.left() + area.width() * MeterPlace(mark);
    painter.drawText(QRectF(x - 20, area.top(), 40, area.height()), Qt::AlignCenter, QString::number(mark));
  }
}

}  // namespace ts5
