#include "midi/ui/time_base_box.h"

#include <algorithm>
#include <cstdlib>

#include "midi/converter_fields.h"

namespace ts5 {

TimeBaseBox::TimeBaseBox(QWidget* parent) : QSpinBox(parent) {
  setRange(0, static_cast<int>(kTimeBases.size()) - 1);
  setKeyboardTracking(false);
}

QString TimeBaseBox::textFromValue(int value) const {
  return QString::number(kTimeBases.at(static_cast<std::size_t>(value)));
}

int TimeBaseBox::valueFromText(const QString& text) const {
  const int ticks = text.toInt();
  const auto nearest = std::min_element(kTimeBases.begin(), kTimeBases.end(), [ticks](int a, int b) {
    return std::abs(a - ticks) < std::abs(b - ticks);
  });
  return static_cast<int>(nearest - kTimeBases.begin());
}

QValidator::State TimeBaseBox::validate(QString& text, int& /*position*/) const {
  if (text.isEmpty()) return QValidator::Intermediate;
  bool number = false;
  const int ticks = text.toInt(&number);
  if (!number || ticks < 0 || text.size() > 4) return QValidator::Invalid;
  return std::find(kTimeBases.begin(), kTimeBases.end(), ticks) != kTimeBases.end()
             ? QValidator::Acceptable
             : QValidator::Intermediate;
}

void TimeBaseBox::fixup(QString& text) const {
  if (!text.isEmpty()) text = textFromValue(valueFromText(text));
}

}  // namespace ts5
