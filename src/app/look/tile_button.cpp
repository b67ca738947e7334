#include "app/look/tile_button.h"

#include <QPainter>
#include <QPainterPath>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace ts5 {
namespace {

QColor Mix(const QColor& a, const QColor& b, double share) {
  const auto channel = [share](int from, int to) {
    return std::clamp(static_cast<int>(std::lround(from + (to - from) * share)), 0, 255);
  };
  return {channel(a.red(), b.red()), channel(a.green(), b.green()), channel(a.blue(), b.blue())};
}

// As bright as the eye sees a colour, 0 to 1.
double Luminance(const QColor& colour) {
  return 0.299 * colour.redF() + 0.587 * colour.greenF() + 0.114 * colour.blueF();
}

QLinearGradient Vertical(const QRect& area, const QColor& top, const QColor& bottom) {
  QLinearGradient gradient(area.topLeft(), area.bottomLeft());
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  return gradient;
}

// The lines of a text that fit the area, the last one with an ellipsis when there is more.
void DrawWrapped(QPainter& painter, const QRect& area, const QString& text,
                 const std::function<void(const QPoint&, const QString&)>& draw) {
  const QFontMetrics metrics = painter.fontMetrics();
  const int lines = area.height() / metrics.lineSpacing();
  if (lines < 1) return;
  QTextLayout layout(text, painter.font());
  layout.beginLayout();
  int y = area.top() + metrics.ascent();
  for (int i = 0; i < lines; ++i) {
    QTextLine line = layout.createLine();
    if (!line.isValid()) break;
    line.setLineWidth(area.width());
    const auto start = line.textStart();
    const bool last = i == lines - 1;
    const QString part = last ? metrics.elidedText(text.mid(start), Qt::ElideRight, area.width())
                              : text.mid(start, line.textLength());
    draw({area.left(), y}, part.trimmed());
    y += metrics.lineSpacing();
  }
  layout.endLayout();
}

}  // namespace

TileButton::TileButton(Look look, TileStyle style, QWidget* parent)
    : QAbstractButton(parent), look_(std::move(look)), style_(style) {
  setText(look_.name);
  setAccessibleName(look_.name);
  setAccessibleDescription(look_.description);
  // For screen readers: one of several, and whether it is the current one.
  setCheckable(true);
  setAutoExclusive(true);
  setAttribute(Qt::WA_Hover);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
  SetExpanded(true);
}

void TileButton::SetExpanded(bool expanded) {
  expanded_ = expanded;
  ShowTexts();
}

void TileButton::SetState(const QString& reason, const QString& help, bool compact) {
  reason_ = reason;
  help_ = help;
  compact_ = compact;
  ShowTexts();
}

// The tooltip is the name while the tile is collapsed, else the description; what there is to say follows.
void TileButton::ShowTexts() {
  QString more = reason_.isEmpty() ? QString() : look_.name + QLatin1Char(' ') + reason_ + QLatin1Char('.');
  if (!help_.isEmpty()) more += (more.isEmpty() ? QString() : QStringLiteral("\n")) + help_;
  const QString behind = more.isEmpty() ? QString() : QLatin1Char('\n') + more;
  setToolTip((expanded_ ? look_.description : look_.name) + behind);
  setAccessibleDescription(look_.description + behind);
  updateGeometry();
  update();
}

void TileButton::SetCurrent(bool current) {
  if (current_ == current) return;
  current_ = current;
  setChecked(current);
  update();
}

QSize TileButton::sizeHint() const {
  const int tall = compact_ ? kCompactTileHeight : ExpandedTileHeight(style_);
  return {180, expanded_ ? tall : kCollapsedTileHeight};
}
QSize TileButton::minimumSizeHint() const {
  return {60, sizeHint().height()};
}

void TileButton::enterEvent(QEnterEvent* event) {
  update();
  QAbstractButton::enterEvent(event);
}
void TileButton::leaveEvent(QEvent* event) {
  update();
  QAbstractButton::leaveEvent(event);
}

void TileButton::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing, style_ != TileStyle::Plain);
  switch (style_) {
    case TileStyle::Plain:
      PaintPlain(painter);
      break;
    case TileStyle::Classic:
      PaintClassic(painter);
      break;
    case TileStyle::Modern:
      PaintModern(painter);
      break;
  }
}

// A bare rectangle with the gradient in its inner rows; the current tile has a 3-pixel yellow frame, combined
// by XOR so that it stands out on every colour.
void TileButton::PaintPlain(QPainter& painter) const {
  QImage image(size(), QImage::Format_RGB32);
  image.fill(palette().color(QPalette::Dark));
  QPainter inner(&image);
  const QRect area = rect().adjusted(1, 1, -1, -1);
  const int rows = std::max(area.height() - 1, 1);
  for (int y = 0; y < area.height(); ++y) {
    QColor colour = Mix(look_.top, look_.bottom, static_cast<double>(y) / rows);
    if (!isEnabled()) colour = Mix(colour, palette().color(QPalette::Window), 0.6);
    inner.fillRect(area.left(), area.top() + y, area.width(), 1, colour);
  }
  if (current_) {
    inner.setCompositionMode(QPainter::RasterOp_SourceXorDestination);
    const QColor yellow(255, 255, 0);
    inner.fillRect(0, 0, width(), 3, yellow);
    inner.fillRect(0, height() - 3, width(), 3, yellow);
    inner.fillRect(0, 3, 3, height() - 6, yellow);
    inner.fillRect(width() - 3, 3, 3, height() - 6, yellow);
  }
  inner.end();
  painter.drawImage(0, 0, image);
  if (isEnabled()) {
    PaintTexts(painter, rect().adjusted(8, 4, -8, -4), Qt::white, Qt::white, true);
  } else {
    const bool dark = Luminance(palette().color(QPalette::Window)) < 0.5;
    const QColor ink = dark ? QColor(190, 190, 190) : QColor(70, 70, 70);
    PaintTexts(painter, rect().adjusted(8, 4, -8, -4), ink, ink, false);
  }
  if (hasFocus()) {
    painter.setPen(QPen(Qt::white, 1, Qt::DotLine));
    painter.drawRect(rect().adjusted(4, 4, -5, -5));
  }
}

// A dark, gently shining plate in the filter's colours.
void TileButton::PaintClassic(QPainter& painter) const {
  const QRect area = rect().adjusted(1, 1, -1, -1);
  QColor top = Mix(look_.top, QColor(40, 44, 52), 0.35);
  QColor bottom = Mix(look_.top, look_.bottom, 0.4);
  while (Luminance(bottom) > 0.42) bottom = bottom.darker(112);
  while (Luminance(top) > 0.42) top = top.darker(112);
  if (underMouse() && isEnabled()) {
    top = top.lighter(115);
    bottom = bottom.lighter(115);
  }
  if (!isEnabled()) {
    const QColor grey(110, 114, 120);
    top = Mix(top, grey, 0.7);
    bottom = Mix(bottom, grey, 0.7);
  }
  painter.setPen(QPen(QColor(20, 22, 26), 1));
  painter.setBrush(Vertical(area, top, bottom));
  painter.drawRoundedRect(QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
  painter.setPen(QPen(QColor(255, 255, 255, 60), 1));
  painter.drawLine(area.left() + 4, area.top() + 1, area.right() - 4, area.top() + 1);
  if (current_ || hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(current_ ? QColor(255, 214, 92) : QColor(255, 255, 255, 190), current_ ? 2 : 1));
    painter.drawRoundedRect(QRectF(area).adjusted(1.5, 1.5, -1.5, -1.5), 3, 3);
  }
  const QColor ink = isEnabled() ? QColor(Qt::white) : QColor(205, 208, 212);
  PaintTexts(painter, rect().adjusted(10, 4, -10, -4), ink, Mix(ink, bottom, 0.12), false);
}

// A quiet card: the filter's gradient as a band at the left and a breath of its colour over the card.
void TileButton::PaintModern(QPainter& painter) const {
  const QPalette& colours = palette();
  const QColor base = colours.color(QPalette::Base);
  const bool dark = Luminance(base) < 0.5;
  const QRect area = rect().adjusted(1, 1, -1, -1);
  QColor strong = Mix(look_.top, look_.bottom, 0.5);
  if (dark) strong = Mix(strong, Qt::white, 0.25);
  double tint = current_ ? 0.26 : 0.09;
  if (underMouse() && isEnabled()) tint += 0.07;
  if (!isEnabled()) tint = 0.02;

  const QRectF card = QRectF(area).adjusted(0.5, 0.5, -0.5, -0.5);
  QPainterPath shape;
  shape.addRoundedRect(card, 5, 5);
  painter.fillPath(shape, Vertical(area, Mix(base, strong, tint * 0.6), Mix(base, strong, tint * 1.3)));
  painter.save();
  painter.setClipPath(shape);
  QColor top = Mix(look_.top, strong, 0.35);
  QColor bottom = Mix(look_.bottom, strong, 0.35);
  if (!isEnabled()) {
    top = Mix(top, base, 0.7);
    bottom = Mix(bottom, base, 0.7);
  }
  painter.fillRect(QRect(area.left(), area.top(), current_ ? 9 : 6, area.height()),
                   Vertical(area, top, bottom));
  painter.restore();
  painter.setBrush(Qt::NoBrush);
  const QColor edge = Mix(base, colours.color(QPalette::Text), 0.22);
  painter.setPen(current_ ? QPen(colours.color(QPalette::Highlight), 2) : QPen(edge, 1));
  painter.drawPath(shape);
  if (hasFocus()) {
    painter.setPen(QPen(colours.color(QPalette::Highlight), 1, Qt::DashLine));
    painter.drawRoundedRect(card.adjusted(3, 3, -3, -3), 3, 3);
  }
  const auto group = isEnabled() ? QPalette::Active : QPalette::Disabled;
  const QColor ink = colours.color(group, QPalette::Text);
  PaintTexts(painter, rect().adjusted(16, 4, -8, -4), ink, Mix(ink, base, isEnabled() ? 0.25 : 0.0), false);
}

QRect TileButton::PaintIcon(QPainter& painter, const QRect& area) const {
  if (look_.icon.isNull()) return area;
  constexpr int kRim = 2;
  const int side = expanded_ ? std::min(28, height() - 8) : height() - 4;
  const QRect chip(area.left(), expanded_ ? area.top() + 1 : 2, side, side);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  QColor ground = palette().color(QPalette::Base);
  if (!isEnabled()) ground.setAlphaF(0.5F);
  painter.setBrush(ground);
  painter.drawRoundedRect(chip, 4, 4);
  painter.restore();
  look_.icon.paint(&painter, expanded_ ? chip.adjusted(kRim, kRim, -kRim, -kRim) : chip, Qt::AlignCenter,
                   isEnabled() ? QIcon::Normal : QIcon::Disabled);
  return area.adjusted(side + 7, 0, 0, 0);
}

void TileButton::PaintTexts(QPainter& painter, const QRect& whole, const QColor& ink, const QColor& faint,
                            bool halo) const {
  const QRect area = PaintIcon(painter, whole);
  const auto draw = [&](const QPoint& at, const QString& text, const QColor& colour) {
    if (halo) {
      QPainterPath outline;
      outline.addText(at, painter.font(), text);
      painter.setRenderHint(QPainter::Antialiasing);
      painter.strokePath(outline,
                         QPen(QColor(0, 0, 0, 170), 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
      painter.fillPath(outline, colour);
      painter.setRenderHint(QPainter::Antialiasing, false);
    } else {
      painter.setPen(colour);
      painter.drawText(at, text);
    }
  };
  QFont nameFont = font();
  nameFont.setBold(true);
  if (!expanded_) nameFont.setPixelSize(std::min(QFontInfo(font()).pixelSize(), 13));
  painter.setFont(nameFont);
  const QFontMetrics metrics = painter.fontMetrics();
  const QString name = metrics.elidedText(look_.name, Qt::ElideRight, area.width());
  if (!expanded_) {
    draw({area.left(), (height() + metrics.ascent() - metrics.descent()) / 2}, name, ink);
    return;
  }
  draw({area.left(), area.top() + metrics.ascent()}, name, ink);
  QFont small = font();
  small.setPixelSize(std::clamp(QFontInfo(font()).pixelSize() * 84 / 100, 9, 12));
  painter.setFont(small);
  DrawWrapped(painter, area.adjusted(0, metrics.lineSpacing(), 0, 2),
              reason_.isEmpty() ? look_.description : reason_,
              [&](const QPoint& at, const QString& line) { draw(at, line, faint); });
}

}  // namespace ts5
