#include "frame/ui/position_slider.h"

#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <algorithm>
#include <array>
#include <chrono>

#include "frame/playback_form.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

struct StepKey {
  Qt::Key key;
  PositionKey step;
};
constexpr std::array kStepKeys{
    StepKey{Qt::Key_Left, PositionKey::Left}, StepKey{Qt::Key_Right, PositionKey::Right},
    StepKey{Qt::Key_PageUp, PositionKey::PageUp}, StepKey{Qt::Key_PageDown, PositionKey::PageDown}};

constexpr double kLeastBarWidth = 4;  // pixels
constexpr float kSoftest = 0.001F;    // what is below all the time looks like silence

int Milliseconds(std::chrono::nanoseconds time) {
  return static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(time).count());
}

}  // namespace

PositionSlider::PositionSlider(QWidget* parent) : QSlider(Qt::Horizontal, parent) {
  setMinimumHeight(48);
  setAccessibleName(QtText(texts::PlaybackPositionName));
}

void PositionSlider::SetWaveform(std::shared_ptr<const Waveform> waveform) {
  if (waveform == waveform_) return;
  waveform_ = std::move(waveform);
  outline_ = QPixmap();
  setAccessibleDescription(waveform_ ? QtText(texts::PlaybackWaveformName) : QString());
  update();
}

void PositionSlider::SetScore(std::shared_ptr<const PlayerScore> score) {
  if (score == score_) return;
  score_ = std::move(score);
  outline_ = QPixmap();
  update();
}

void PositionSlider::Show(const PlayerStatus& status, const std::optional<PracticePassage>& passage) {
  if (!isSliderDown()) {
    const QSignalBlocker quiet(this);
    setMaximum(std::max(Milliseconds(status.duration), 1));
    setValue(Milliseconds(status.position));
  }
  SetWaveform(status.waveform);
  SetScore(status.score);
  if (passage == passage_) return;
  passage_ = passage;
  update();
}

void PositionSlider::keyPressEvent(QKeyEvent* event) {
  for (const StepKey& row : kStepKeys) {
    if (event->key() != row.key) continue;
    const bool control = event->modifiers().testFlag(Qt::ControlModifier);
    emit Stepped(static_cast<int>(PositionStep(row.step, control).count()));
    return;
  }
  QSlider::keyPressEvent(event);
}

// Drawn once for each title, size and palette: the position moves 60 times a second over it.
void PositionSlider::DrawOutline() {
  outline_ = QPixmap(size() * devicePixelRatioF());
  outline_.setDevicePixelRatio(devicePixelRatioF());
  outline_.fill(Qt::transparent);
  QPainter painter(&outline_);
  QColor colour = palette().highlight().color();
  colour.setAlpha(110);
  painter.setPen(colour);
  if (!waveform_ || waveform_->empty()) return DrawBars(painter);
  const qreal middle = height() * 0.5;
  // The loudest part fills the height, so that the outline of a soft piece can be seen as well.
  const qreal loudest = std::max(*std::ranges::max_element(*waveform_), kSoftest);
  for (int x = 0; x < width(); ++x) {
    const auto part = static_cast<std::size_t>(x) * waveform_->size() / static_cast<std::size_t>(width());
    const qreal half = middle * (*waveform_)[part] / loudest;
    painter.drawLine(QPointF(x, middle - half), QPointF(x, middle + half));
  }
}

// A line for each bar, or for each of a row of bars where they would lie too close.
void PositionSlider::DrawBars(QPainter& painter) const {
  const auto& bars = score_->bars;
  std::size_t each = 1;
  const auto lines = [&] { return static_cast<double>(bars.size()) / static_cast<double>(each); };
  while (each < bars.size() && width() / lines() < kLeastBarWidth) each *= 2;
  for (std::size_t i = 0; i < bars.size(); i += each) {
    const double x = PlaceOf(bars[i]);
    painter.drawLine(QPointF(x, 0), QPointF(x, height()));
  }
}

double PositionSlider::PlaceOf(std::chrono::nanoseconds time) const {
  const double milliseconds = std::chrono::duration<double, std::milli>(time).count();
  return width() * milliseconds / std::max(maximum(), 1);
}

void PositionSlider::changeEvent(QEvent* event) {
  outline_ = QPixmap();
  QSlider::changeEvent(event);
}

void PositionSlider::paintEvent(QPaintEvent* event) {
  const bool outlined = (waveform_ && !waveform_->empty()) || (score_ && !score_->bars.empty());
  if (passage_) {
    QColor ground = palette().highlight().color();
    ground.setAlpha(60);
    const double left = PlaceOf(passage_->from);
    QPainter(this).fillRect(QRectF(left, 0, PlaceOf(passage_->to) - left, height()), ground);
  }
  if (outlined) {
    if (outline_.size() != size() * devicePixelRatioF()) DrawOutline();
    QPainter(this).drawPixmap(0, 0, outline_);
  }
  QSlider::paintEvent(event);
}

}  // namespace ts5
