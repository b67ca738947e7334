// A button that shows a colour and lets the user choose another one.
#pragma once

#include <QPushButton>
#include <cstdint>

namespace ts5::artworker {

class ColourButton : public QPushButton {
  Q_OBJECT

 public:
  explicit ColourButton(QWidget* parent = nullptr);

  [[nodiscard]] std::uint32_t Colour() const { return colour_; }  // 0x00BBGGRR
  void SetColour(std::uint32_t colour);

 signals:
  void ColourChosen(std::uint32_t colour);

 private:
  void Choose();

  std::uint32_t colour_ = 0;
};

}  // namespace ts5::artworker
