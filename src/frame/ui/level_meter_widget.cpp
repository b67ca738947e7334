#include "frame/ui/level_meter_widget.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <numbers>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

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

// Where a level stands along a bar of so many pixels.
int PixelOf(double decibels, qreal length) {
  return static_cast<int>(std::lround(length * MeterPlace(decibels)));
}

// How many segments a peak lights, and the one that a held peak lies in.
constexpr double kSegmentStep = -kMeterFloor / kSegments;
int LitSegments(double peak) {
  return static_cast<int>(
      std::clamp(std::floor((peak - kMeterFloor) / kSegmentStep + 0.5), 0.0, kSegments * 1.0));
}
int SegmentOf(double hold) {
  return static_cast<int>(std::floor((hold - kMeterFloor) / kSegmentStep));
}

// A place on the dial, at a part of the needle's length.
QPointF OnDial(const QRectF& area, double decibels, qreal part) {
  const QPointF hub(area.center().x(), area.bottom() + area.height() * 0.4);
  const qreal radius = area.height() * 1.3 * part;
  const double angle = std::numbers::pi * (0.75 - 0.5 * MeterPlace(decibels));
  return hub + QPointF(std::cos(angle) * radius, -std::sin(angle) * radius);
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
  still_ = {};
  update();
}

void LevelMeterWidget::Advance(LevelTap& tap) {
  const std::chrono::milliseconds elapsed(clock_.restart());
  if (!ballistics_.Update(tap.Take(), elapsed)) return;
  for (std::size_t i = 0; i < places_.size(); ++i) {
    const Places now = PlacesOf(ballistics_.Levels()[i]);
    if (now == places_[i]) continue;
    update(Moved(i, places_[i], now));
    if (now.over != places_[i].over) update(Lamp(i).toAlignedRect());
    places_[i] = now;
  }
}

void LevelMeterWidget::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
  SetStyle(static_cast<MeterStyle>((static_cast<std::size_t>(style_) + 1) % kStyleNames.size()));
}

void LevelMeterWidget::resizeEvent(QResizeEvent* /*event*/) {
  still_ = {};
}

void LevelMeterWidget::changeEvent(QEvent* event) {
  QWidget::changeEvent(event);
  still_ = {};
  update();
}

// --- places

QRectF LevelMeterWidget::Half(std::size_t channel) const {
  return {width() * 0.5 * static_cast<qreal>(channel), 0, width() * 0.5, static_cast<qreal>(height())};
}

QRectF LevelMeterWidget::Bar(std::size_t channel) const {
  const qreal bar = (height() - fontMetrics().height() - 2.0) / 2;
  return {kNameWidth + 4, bar * static_cast<qreal>(channel) + 2, width() - kNameWidth - kOverWidth - 10,
          bar - 4};
}

QRectF LevelMeterWidget::Lamp(std::size_t channel) const {
  const QRectF bar = Bar(channel);
  return {width() - kOverWidth - 2, bar.top(), kOverWidth, bar.height()};
}

LevelMeterWidget::Places LevelMeterWidget::PlacesOf(const Level& level) const {
  const qreal length =
      (style_ == MeterStyle::Needle ? Half(0).width() : Bar(0).width()) * devicePixelRatioF();
  if (style_ == MeterStyle::Segments) {
    const auto behind = [length](int segments) { return static_cast<int>(length * segments / kSegments); };
    return {behind(LitSegments(level.peak)), 0, behind(SegmentOf(level.hold)), level.over};
  }
  return {PixelOf(level.peak, length), PixelOf(level.rms, length), PixelOf(level.hold, length), level.over};
}

// What must be painted anew: a needle sweeps over its whole half.
QRect LevelMeterWidget::Moved(std::size_t channel, const Places& from, const Places& to) const {
  if (style_ == MeterStyle::Needle) return Half(channel).toAlignedRect();
  int left = INT_MAX;
  int right = INT_MIN;
  for (const int Places::*place : {&Places::peak, &Places::rms, &Places::hold}) {
    if (from.*place == to.*place) continue;
    left = std::min({left, from.*place, to.*place});
    right = std::max({right, from.*place, to.*place});
  }
  if (left > right) return {};
  const QRectF bar = Bar(channel);
  const qreal scale = devicePixelRatioF();
  // A segment is lit as a whole.
  const qreal around = style_ == MeterStyle::Segments ? bar.width() / kSegments + 1 : 3;
  return QRectF(QPointF(bar.left() + left / scale - around, bar.top()),
                QPointF(bar.left() + right / scale + around, bar.bottom()))
      .intersected(bar)
      .toAlignedRect();
}

// --- painting

void LevelMeterWidget::paintEvent(QPaintEvent* /*event*/) {
  if (still_.isNull()) PaintStill();
  QPainter painter(this);
  painter.drawPixmap(0, 0, still_);
  const auto& levels = ballistics_.Levels();
  for (std::size_t i = 0; i < levels.size(); ++i) {
    if (style_ == MeterStyle::Needle) {
      PaintNeedles(painter, Half(i).adjusted(6, 4, -6, -4), levels[i]);
      continue;
    }
    if (style_ == MeterStyle::Segments) {
      PaintSegments(painter, Bar(i), &levels[i]);
    } else {
      PaintBar(painter, Bar(i), levels[i]);
    }
    if (levels[i].over) painter.fillRect(Lamp(i), QColor(220, 30, 30));
  }
}

// With all that is painted anew, so what stands there from now on is known as well.
void LevelMeterWidget::PaintStill() {
  for (std::size_t i = 0; i < places_.size(); ++i) places_[i] = PlacesOf(ballistics_.Levels()[i]);
  still_ = QPixmap(size() * devicePixelRatioF());
  still_.setDevicePixelRatio(devicePixelRatioF());
  still_.fill(palette().base().color());
  QPainter painter(&still_);
  painter.setFont(font());
  const std::array names{texts::MeterChannelLeft, texts::MeterChannelRight};
  for (std::size_t i = 0; i < names.size(); ++i) {
    painter.setPen(palette().text().color());
    if (style_ == MeterStyle::Needle) {
      painter.drawText(Half(i).adjusted(6, 2, 0, 0), Qt::AlignLeft | Qt::AlignTop, QtText(names[i]));
      PaintDial(painter, Half(i).adjusted(6, 4, -6, -4));
      continue;
    }
    const QRectF bar = Bar(i);
    painter.drawText(QRectF(2, bar.top(), kNameWidth, bar.height()), Qt::AlignCenter, QtText(names[i]));
    painter.fillRect(bar, palette().alternateBase());
    if (style_ == MeterStyle::Segments) PaintSegments(painter, bar, nullptr);
    painter.fillRect(Lamp(i), palette().mid().color());
  }
  if (style_ != MeterStyle::Needle) PaintScale(painter);
}

void LevelMeterWidget::PaintSegments(QPainter& painter, const QRectF& area, const Level* level) const {
  for (int i = 0; i < kSegments; ++i) {
    const double low = kMeterFloor + kSegmentStep * i;
    QColor colour = ColourOf(low + kSegmentStep / 2);
    if (level == nullptr) {
      colour.setAlpha(40);
    } else if (i >= LitSegments(level->peak) && i != SegmentOf(level->hold)) {
      continue;
    }
    painter.fillRect(QRectF(area.left() + area.width() * MeterPlace(low) + 1, area.top(),
                            area.width() / kSegments - 2, area.height()),
                     colour);
  }
}

void LevelMeterWidget::PaintBar(QPainter& painter, const QRectF& area, const Level& level) const {
  const qreal scale = devicePixelRatioF();
  const auto at = [&](double decibels) {
    return area.left() + PixelOf(decibels, area.width() * scale) / scale;
  };
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
  if (at(level.hold) - 2 >= area.left()) {
    painter.fillRect(QRectF(at(level.hold) - 2, area.top(), 2, area.height()), ColourOf(level.hold));
  }
}

void LevelMeterWidget::PaintDial(QPainter& painter, const QRectF& area) const {
  painter.setRenderHint(QPainter::Antialiasing);
  for (const int mark : kMarks) {
    painter.setPen(QPen(mark > kRed ? ColourOf(mark) : palette().text().color(), 1.5));
    painter.drawLine(OnDial(area, mark, 0.92), OnDial(area, mark, 1));
  }
}

void LevelMeterWidget::PaintNeedles(QPainter& painter, const QRectF& area, const Level& level) const {
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(ColourOf(level.hold), 1));
  painter.drawLine(OnDial(area, level.hold, 0.6), OnDial(area, level.hold, 0.9));
  painter.setPen(QPen(palette().text().color(), 2));
  painter.drawLine(OnDial(area, level.rms, 0.35), OnDial(area, level.rms, 0.9));
}

void LevelMeterWidget::PaintScale(QPainter& painter) const {
  const QRectF bar = Bar(1);
  const QRectF area(bar.left(), bar.bottom() + 2, bar.width(), height() - bar.bottom() - 2);
  painter.setPen(palette().text().color());
  for (const int mark : kMarks) {
    const qreal x = area.left() + area.width() * MeterPlace(mark);
    painter.drawText(QRectF(x - 20, area.top(), 40, area.height()), Qt::AlignCenter, QString::number(mark));
  }
}

}  // namespace ts5
