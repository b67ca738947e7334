// A number field for the ticks per quarter note: its arrows move through the values there are. The value is
// the index in kTimeBases; the field shows and takes the ticks, and takes the nearest value for any other.
#pragma once

#include <QSpinBox>

namespace ts5 {

class TimeBaseBox : public QSpinBox {
  Q_OBJECT

 public:
  explicit TimeBaseBox(QWidget* parent = nullptr);

 protected:
  [[nodiscard]] QString textFromValue(int value) const override;
  [[nodiscard]] int valueFromText(const QString& text) const override;
  [[nodiscard]] QValidator::State validate(QString& text, int& position) const override;
  void fixup(QString& text) const override;  // any number becomes the nearest value
};

}  // namespace ts5
