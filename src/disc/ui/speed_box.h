// A spin field over the reading speeds: "1", "2", "4", "max" for its positions.
#pragma once

#include <QSpinBox>

#include "disc/grab_parameters.h"
#include "disc/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5::disc {

class SpeedBox : public QSpinBox {
 public:
  using QSpinBox::QSpinBox;

 protected:
  [[nodiscard]] QString textFromValue(int value) const override {
    const std::uint32_t speed = kGrabSpeeds.at(static_cast<std::size_t>(value));
    return speed == 0 ? QtText(texts::SpeedMax) : QString::number(speed);
  }
  [[nodiscard]] int valueFromText(const QString& text) const override {
    for (std::size_t i = 0; i < kGrabSpeeds.size(); ++i)
      if (textFromValue(static_cast<int>(i)) == text) return static_cast<int>(i);
    return value();
  }
  QValidator::State validate(QString& text, int& /*position*/) const override {
    return valueFromText(text) == value() && text != textFromValue(value()) ? QValidator::Intermediate
                                                                            : QValidator::Acceptable;
  }
};

}  // namespace ts5::disc
