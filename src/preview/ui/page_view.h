// One page of a score, to be scrolled and made larger: Ctrl and the wheel or + and - change the size, PgUp
// and PgDown the page.
#pragma once

#include <QScrollArea>
#include <optional>

#include "preview/score_pages.h"

namespace ts5::preview {

class PageView : public QScrollArea {
  Q_OBJECT

 public:
  enum class Fit { Free, Width, Page };

  explicit PageView(QWidget* parent = nullptr);
  ~PageView() override;

  // pages must outlive the view, or be taken away with nullptr.
  void SetPages(const ScorePages* pages);
  void ShowPage(std::size_t page);
  // Its page, with the system in sight.
  void ShowSystem(const SystemPlace& place);
  [[nodiscard]] std::size_t Page() const { return page_; }
  void SetFit(Fit fit);
  // Relative to now.
  void Zoom(double factor);
  // Pixels of a staff space.
  [[nodiscard]] double Scale() const { return scale_; }

 signals:
  void PageChanged();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  class Sheet;
  void Resize();
  void ScrollToSystem();

  const ScorePages* pages_ = nullptr;
  Sheet* sheet_;
  std::size_t page_ = 0;
  std::optional<SystemPlace> wanted_;  // to be scrolled to until the user goes elsewhere
  Fit fit_ = Fit::Width;
  double scale_ = 6;
};

}  // namespace ts5::preview
