#include "score/ui/staff_lights.h"

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <utility>

#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "score/texts.h"

namespace ts5 {
namespace {

constexpr int kCellWidth = 130;

}  // namespace

StaffLights::StaffLights(QWidget* parent) : QWidget(parent) {
  QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  policy.setHeightForWidth(true);
  setSizePolicy(policy);
}

void StaffLights::SetStaves(QStringList names) {
  if (names_ == names) return;
  names_ = std::move(names);
  lit_.assign(static_cast<std::size_t>(names_.size()), false);
  updateGeometry();
  update();
}

void StaffLights::SetLit(const std::vector<bool>& lit) {
  if (lit.size() != lit_.size() || lit == lit_) return;
  lit_ = lit;
  QStringList sounding;
  for (std::size_t i = 0; i < lit_.size(); ++i) {
    if (lit_[i]) sounding << names_[static_cast<qsizetype>(i)];
  }
  setAccessibleDescription(sounding.join(QStringLiteral(", ")));
  update();
}

int StaffLights::RowHeight() const {
  return fontMetrics().height() + 6;
}

int StaffLights::Columns(int width) const {
  return std::max(width / kCellWidth, 1);
}

QSize StaffLights::sizeHint() const {
  const int width = 3 * kCellWidth;
  return {width, heightForWidth(width)};
}

int StaffLights::heightForWidth(int width) const {
  const int columns = Columns(width);
  const int rows = (static_cast<int>(names_.size()) + columns - 1) / columns;
  return rows * RowHeight();
}

void StaffLights::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  const int columns = Columns(width());
  const int cell = width() / columns;
  const int height = RowHeight();
  const int lamp = fontMetrics().ascent();
  for (int i = 0; i < static_cast<int>(names_.size()); ++i) {
    const QRect place(i % columns * cell, i / columns * height, cell, height);
    const bool lit = lit_[static_cast<std::size_t>(i)];
    const QRect circle(place.left() + 2, place.top() + (height - lamp) / 2, lamp, lamp);
    painter.setPen(palette().color(QPalette::PlaceholderText));
    painter.setBrush(lit ? palette().color(QPalette::Highlight) : palette().color(QPalette::Base));
    painter.drawEllipse(circle);
    painter.setPen(palette().color(QPalette::WindowText));
    QFont font = painter.font();
    font.setBold(lit);
    painter.setFont(font);
    const QRect text = place.adjusted(lamp + 8, 0, -4, 0);
    painter.drawText(text, Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(names_[i], Qt::ElideRight, text.width()));
  }
}

// A long name that is cut in its place.
bool StaffLights::event(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QWidget::event(event);
  const auto* const help = static_cast<QHelpEvent*>(event);
  const int columns = Columns(width());
  const int column = std::min(help->pos().x() / std::max(width() / columns, 1), columns - 1);
  const qsizetype index = help->pos().y() / RowHeight() * columns + column;
  if (index < 0 || index >= names_.size()) return false;
  const TextId text =
      lit_[static_cast<std::size_t>(index)] ? texts::ScoreStaffSounds : texts::ScoreStaffSilent;
  QToolTip::showText(help->globalPos(), ToQt(Format(Text(text), FromQt(names_[index]))), this);
  return true;
}

}  // namespace ts5
