#include "frame/ui/elided_label.h"

#include <QStyle>
#include <QStylePainter>

namespace ts5 {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
}

void ElidedLabel::ShowLine(const QString& text, const QString& tip) {
  setWordWrap(false);
  setText(text);
  setToolTip(tip.isEmpty() ? text : tip);
}

void ElidedLabel::ShowParagraph(const QString& text) {
  setWordWrap(true);
  setText(text);
  setToolTip(text);
}

QSize ElidedLabel::sizeHint() const {
  return wordWrap() ? QLabel::sizeHint() : minimumSizeHint();
}

QSize ElidedLabel::minimumSizeHint() const {
  return {0, QLabel::minimumSizeHint().height()};
}

void ElidedLabel::paintEvent(QPaintEvent* event) {
  if (wordWrap()) return QLabel::paintEvent(event);
  QStylePainter painter(this);
  const QString fitting = fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width());
  painter.drawItemText(contentsRect(), static_cast<int>(alignment()), palette(), isEnabled(), fitting,
                       foregroundRole());
}

}  // namespace ts5
