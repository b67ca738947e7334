// A ruler along a canvas: centimetres of the object, and where the mouse is.
#pragma once

#include <QWidget>
#include <optional>

namespace ts5::artworker {

class LayoutRuler : public QWidget {
  Q_OBJECT

 public:
  static constexpr int kBreadth = 22;  // pixels

  explicit LayoutRuler(Qt::Orientation direction, QWidget* parent = nullptr);

  struct Measures {
    double start = 0;   // pixels of the ruler where the object begins
    double scale = 1;   // pixels to a millimetre
    double length = 0;  // of the object, millimetres
    bool originInMiddle = false;
    bool divide = true;  // marks for millimetres
  };
  void Show(const Measures& measures);
  void ShowMouse(std::optional<double> millimetres);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  Qt::Orientation direction_;
  Measures measures_;
  std::optional<double> mouse_;
};

}  // namespace ts5::artworker
