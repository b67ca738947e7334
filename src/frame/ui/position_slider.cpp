#include "frame/ui/position_slider.h"

#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <array>

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

constexpr float kSoftest = 0.001F;  // what is below all the time looks like silence

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
  const qreal middle = height() * 0.5;
  // The loudest part fills the height, so that the outline of a soft piece can be seen as well.
  const qreal loudest = std::max(*std::ranges::max_element(*waveform_), kSoftest);
  for (int x = 0; x < width(); ++x) {
    const auto part = static_cast<std::size_t>(x) * waveform_->size() / static_cast<std::size_t>(width());
    const qreal half = middle * (*waveform_)[part] / loudest;
    painter.drawLine(QPointF(x, middle - half), QPointF(x, middle + half));
  }
}

void PositionSlider::changeEvent(QEvent* event) {
  outline_ = QPixmap();
  QSlider::changeEvent(event);
}

void PositionSlider::paintEvent(QPaintEvent* event) {
  if (waveform_ && !waveform_->empty()) {
    if (outline_.size() != size() * devicePixelRatioF()) DrawOutline();
    QPainter(this).drawPixmap(0, 0, outline_);
  }
  QSlider::paintEvent(event);
}

}  // namespace ts5
