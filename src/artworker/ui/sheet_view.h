// The sheets of a printing side by side, as large as there is room for them.
#pragma once

#include <QWidget>

#include "artworker/artworker_parameters.h"
#include "artworker/pictures.h"

namespace ts5::artworker {

class SheetView : public QWidget {
  Q_OBJECT

 public:
  explicit SheetView(QWidget* parent = nullptr);

  // What would be printed; its fields and backgrounds are those of the parameters.
  void Show(ArtworkerParameters parameters);
  [[nodiscard]] QSize sizeHint() const override;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  ArtworkerParameters parameters_;  // with the fields of its layout filled
  Pictures pictures_;
};

}  // namespace ts5::artworker
