#include "artworker/ui/measure_boxes.h"

#include <QRegularExpression>
#include <cmath>

#include "artworker/layout.h"
#include "artworker/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5::artworker {

CentimetreBox::CentimetreBox(QWidget* parent) : QSpinBox(parent) {
  setRange(0, kMaxSheet);
  setKeyboardTracking(false);  // a number counts when it is whole
}

QString CentimetreBox::textFromValue(int value) const {
  return ToQt(Format(Text(texts::MeasureCentimetres), value / 10, value % 10));
}

int CentimetreBox::valueFromText(const QString& text) const {
  QString number = text;
  number.remove(QRegularExpression(QStringLiteral("[^0-9.,]"))).replace(',', '.');
  return static_cast<int>(std::lround(number.toDouble() * 10));
}

QValidator::State CentimetreBox::validate(QString& text, int& /*position*/) const {
  static const QRegularExpression whole(QStringLiteral("^\\s*\\d{1,3}([.,]\\d?)?\\s*(cm)?\\s*$"));
  static const QRegularExpression begun(QStringLiteral("^\\s*\\d{0,3}([.,]\\d?)?\\s*c?m?\\s*$"));
  if (whole.match(text).hasMatch()) return QValidator::Acceptable;
  return begun.match(text).hasMatch() ? QValidator::Intermediate : QValidator::Invalid;
}

}  // namespace ts5::artworker
