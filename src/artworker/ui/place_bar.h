// ARTPLACE: where the selected element is, in numbers, and what is to be known of it before it is printed.
#pragma once

#include <QWidget>
#include <memory>

#include "artworker/ui/scene.h"

class QDoubleSpinBox;

namespace Ui {
class ARTPLACE;
}

namespace ts5::artworker {

class PlaceBar : public QWidget {
  Q_OBJECT

 public:
  // The scene outlives the bar.
  explicit PlaceBar(Scene& scene, QWidget* parent = nullptr);
  ~PlaceBar() override;

  // After every change of the layout or the selection.
  void Refresh();

 signals:
  void Edited();

 private:
  void Take();
  void TakeFixed(bool fixed);

  Scene& scene_;
  std::unique_ptr<Ui::ARTPLACE> ui_;
};

}  // namespace ts5::artworker
