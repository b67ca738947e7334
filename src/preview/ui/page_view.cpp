#include "preview/ui/page_view.h"

#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>

#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "preview/texts.h"
#include "preview/ui/sketch_painter.h"

namespace ts5::preview {
namespace {

constexpr double kSmallest = 2;  // pixels of a space
constexpr double kLargest = 40;
constexpr double kStep = 1.25;
constexpr int kMargin = 12;  // around the sheet
const QColor kPaper(Qt::white);
const QColor kInk(20, 20, 24);

}  // namespace

// The paper. It is white in a dark desktop, too, as a printed page is.
class PageView::Sheet : public QWidget {
 public:
  explicit Sheet(QWidget* parent) : QWidget(parent) {}

  void Show(Sketch sketch, PageSize size, double scale) {
    sketch_ = std::move(sketch);
    size_ = size;
    Resize(scale);
  }
  void Resize(double scale) {
    scale_ = scale;
    resize(static_cast<int>(size_.width * scale) + 2 * kMargin,
           static_cast<int>(size_.height * scale) + 2 * kMargin);
    update();
  }

 protected:
  void paintEvent(QPaintEvent* /*event*/) override {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF paper(kMargin, kMargin, size_.width * scale_, size_.height * scale_);
    painter.fillRect(paper.translated(2, 2), QColor(0, 0, 0, 60));
    painter.fillRect(paper, kPaper);
    painter.setClipRect(paper);
    painter.translate(kMargin, kMargin);
    painter.scale(scale_, scale_);
    PaintSketch(painter, sketch_, kInk);
  }

 private:
  Sketch sketch_;
  PageSize size_;
  double scale_ = 6;
};

PageView::PageView(QWidget* parent) : QScrollArea(parent), sheet_(new Sheet(this)) {
  setWidget(sheet_);
  setAlignment(Qt::AlignCenter);
  setBackgroundRole(QPalette::Mid);
  setFocusPolicy(Qt::StrongFocus);
  sheet_->hide();
}

PageView::~PageView() = default;

void PageView::SetPages(const ScorePages* pages) {
  pages_ = pages;
  page_ = 0;
  sheet_->setVisible(pages != nullptr && pages->Count() > 0);
  if (sheet_->isVisibleTo(this)) ShowPage(0);
}

void PageView::ShowSystem(const SystemPlace& place) {
  ShowPage(place.page);
  wanted_ = place;
  ScrollToSystem();
}

// In the middle, or from its top on where it is higher than the view.
void PageView::ScrollToSystem() {
  if (!wanted_) return;
  const double top = wanted_->top * scale_ + kMargin;
  const double bottom = wanted_->bottom * scale_ + kMargin;
  const double room = viewport()->height() - (bottom - top);
  verticalScrollBar()->setValue(static_cast<int>(top - std::max(room / 2, 0.0)));
}

// The view gets its size, and the page its scale, only now.
void PageView::showEvent(QShowEvent* event) {
  QScrollArea::showEvent(event);
  ScrollToSystem();
}

void PageView::ShowPage(std::size_t page) {
  if (pages_ == nullptr || pages_->Count() == 0) return;
  wanted_.reset();
  page_ = std::min(page, pages_->Count() - 1);
  Resize();
  sheet_->Show(pages_->Draw(page_), pages_->Size(), scale_);
  verticalScrollBar()->setValue(0);
  const auto [first, last] = pages_->Bars(page_);
  sheet_->setAccessibleName(ToQt(Format(Text(texts::PreviewBar), first, last)));
  setAccessibleName(sheet_->accessibleName());
  emit PageChanged();
}

void PageView::SetFit(Fit fit) {
  fit_ = fit;
  Resize();
}

void PageView::Zoom(double factor) {
  fit_ = Fit::Free;
  scale_ = std::clamp(scale_ * factor, kSmallest, kLargest);
  Resize();
}

void PageView::Resize() {
  if (pages_ == nullptr) return;
  const PageSize size = pages_->Size();
  const double width = (viewport()->width() - 2 * kMargin) / size.width;
  const double height = (viewport()->height() - 2 * kMargin) / size.height;
  if (fit_ == Fit::Width) scale_ = width;
  if (fit_ == Fit::Page) scale_ = std::min(width, height);
  scale_ = std::clamp(scale_, kSmallest, kLargest);
  sheet_->Resize(scale_);
}

void PageView::resizeEvent(QResizeEvent* event) {
  QScrollArea::resizeEvent(event);
  if (fit_ != Fit::Free) Resize();
  ScrollToSystem();
}

void PageView::wheelEvent(QWheelEvent* event) {
  wanted_.reset();
  const int turned = event->angleDelta().y();
  if (event->modifiers().testFlag(Qt::ControlModifier)) {
    if (turned != 0) Zoom(turned > 0 ? kStep : 1 / kStep);
    return event->accept();
  }
  // At the end of a page the wheel goes on to the next one.
  const QScrollBar& bar = *verticalScrollBar();
  if (turned < 0 && bar.value() == bar.maximum() && pages_ != nullptr && page_ + 1 < pages_->Count()) {
    ShowPage(page_ + 1);
    return event->accept();
  }
  if (turned > 0 && bar.value() == bar.minimum() && page_ > 0) {
    ShowPage(page_ - 1);
    verticalScrollBar()->setValue(verticalScrollBar()->maximum());
    return event->accept();
  }
  QScrollArea::wheelEvent(event);
}

void PageView::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_PageDown:
      return ShowPage(page_ + 1);
    case Qt::Key_PageUp:
      return ShowPage(page_ == 0 ? 0 : page_ - 1);
    case Qt::Key_Home:
      return ShowPage(0);
    case Qt::Key_End:
      return ShowPage(SIZE_MAX);
    case Qt::Key_Plus:
      return Zoom(kStep);
    case Qt::Key_Minus:
      return Zoom(1 / kStep);
    default:
      QScrollArea::keyPressEvent(event);
  }
}

}  // namespace ts5::preview
