// Number fields for the measures of a layout.
#pragma once

#include <QSpinBox>

namespace ts5::artworker {

// Millimetres, shown and typed in centimetres with one decimal.
class CentimetreBox : public QSpinBox {
  Q_OBJECT

 public:
  explicit CentimetreBox(QWidget* parent = nullptr);

 protected:
  [[nodiscard]] QString textFromValue(int value) const override;
  [[nodiscard]] int valueFromText(const QString& text) const override;
  QValidator::State validate(QString& text, int& position) const override;
};

}  // namespace ts5::artworker
