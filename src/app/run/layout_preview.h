// The layout of the active job beside its destination, while it is there to be printed: the chosen objects as
// they will look, with the fields of their texts filled.
#pragma once

#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include "app/shell/active_job.h"
#include "artworker/filled_text.h"
#include "artworker/pictures.h"
#include "frame/backgrounds.h"

namespace ts5 {

class Application;

class LayoutPreview : public QWidget {
  Q_OBJECT

 public:
  LayoutPreview(ActiveJob& active, Application& application, QWidget* parent);

  [[nodiscard]] QSize sizeHint() const override;

 signals:
  void Opened();  // the user wants to edit what he sees

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  void Look();       // whether there is something to show
  void LookAgain();  // at the layout, the disc and the backgrounds
  [[nodiscard]] QPixmap Drawn();

  ActiveJob& active_;
  Application& application_;
  QTimer soon_;  // several changes at once are drawn once
  artworker::ArtworkLayout layout_;
  artworker::DiscFacts facts_;
  std::vector<ArtworkBackground> backgrounds_;
  std::int32_t chosen_ = 0;  // the objects that are printed
  artworker::Pictures pictures_;
  QPixmap picture_;
};

}  // namespace ts5
