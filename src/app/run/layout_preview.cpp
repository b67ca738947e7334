#include "app/run/layout_preview.h"

#include <QPainter>
#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "app/run/disc_at_hand.h"
#include "app/shell/application.h"
#include "app/texts.h"
#include "artworker/artworker_parameters.h"
#include "artworker/object_picture.h"
#include "artworker/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using artworker::ArtworkObjectId;

constexpr auto kPause = 120ms;
constexpr double kGap = 10;  // pixels between objects
constexpr std::array kNames = {texts::ArtworkLabel, texts::ArtworkInlay, texts::ArtworkBooklet};
constexpr std::array kInOrder = {ArtworkObjectId::Booklet, ArtworkObjectId::Label, ArtworkObjectId::Inlay};

const artworker::ArtworkerParameters* ParametersOf(const Job& job) {
  const auto* const parameters = job.parameters.If<artworker::ArtworkerParameters>();
  return parameters != nullptr && !parameters->layout.elements.empty() ? parameters : nullptr;
}

}  // namespace

LayoutPreview::LayoutPreview(ActiveJob& active, Application& application, QWidget* parent)
    : QWidget(parent), active_(active), application_(application) {
  setObjectName("layoutPreview");
  setToolTip(QtText(texts::LayoutPreviewTip));
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
  setMinimumWidth(sizeHint().width());
  soon_.setSingleShot(true);
  connect(&soon_, &QTimer::timeout, this, [this] { LookAgain(); });
  for (const auto signal : {&ActiveJob::FilterChanged, &ActiveJob::JobShown, &ActiveJob::Changed})
    connect(&active_, signal, this, [this] { Look(); });
  hide();
}

QSize LayoutPreview::sizeHint() const {
  return {300, 120};
}

void LayoutPreview::Look() {
  const auto* const parameters = ParametersOf(*active_);
  setVisible(parameters != nullptr && parameters->printWhat != 0);
  if (isVisibleTo(parentWidget())) soon_.start(kPause);
}

void LayoutPreview::LookAgain() {
  const auto* const parameters = ParametersOf(*active_);
  if (parameters == nullptr) return;
  // The files are asked for their titles only where they are to be read.
  artworker::DiscFacts facts;
  if (HasFields(parameters->layout)) facts = DiscAtHand(*active_, application_.GetJobs());
  std::vector<ArtworkBackground> backgrounds = LoadBackgrounds(application_.GetRegistry());
  const bool same = layout_ == parameters->layout && chosen_ == parameters->printWhat && facts_ == facts &&
                    backgrounds_ == backgrounds;
  if (same) return;
  layout_ = parameters->layout;
  chosen_ = parameters->printWhat;
  facts_ = std::move(facts);
  backgrounds_ = std::move(backgrounds);
  picture_ = {};
  QStringList names;
  for (const ArtworkObjectId id : artworker::kObjectIds) {
    if (artworker::Holds(chosen_, id)) names << QtText(kNames[artworker::IndexOf(id)]);
  }
  setAccessibleName(ToQt(Format(Text(texts::LayoutPreviewName), FromQt(names.join(QStringLiteral(", "))))));
  update();
}

// Side by side, all at one scale.
QPixmap LayoutPreview::Drawn() {
  const double dots = devicePixelRatioF();
  QPixmap picture(size() * dots);
  picture.setDevicePixelRatio(dots);
  picture.fill(Qt::transparent);
  std::vector<ArtworkObjectId> objects;
  double width = 0;
  double height = 1;
  for (const ArtworkObjectId id : kInOrder) {
    if (!artworker::Holds(chosen_, id)) continue;
    const QSizeF extent = ExtentOf(layout_.Object(id), id);
    objects.push_back(id);
    width += extent.width();
    height = std::max(height, extent.height());
  }
  const double gaps = kGap * static_cast<double>(objects.size() + 1);
  const double scale = std::min((this->width() - gaps) / std::max(width, 1.0), (this->height() - 2) / height);
  if (scale <= 0) return picture;
  const artworker::ArtworkLayout filled = FilledLayout(layout_, facts_);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  double x = kGap;
  for (const ArtworkObjectId id : objects) {
    const QSizeF extent = ExtentOf(layout_.Object(id), id) * scale;
    const QRectF place(QPointF(x, (this->height() - extent.height()) / 2), extent);
    PaintInto(painter, {filled, backgrounds_, pictures_}, id, place);
    x += extent.width() + kGap;
  }
  return picture;
}

void LayoutPreview::paintEvent(QPaintEvent* /*event*/) {
  if (chosen_ == 0) return;
  if (picture_.isNull()) picture_ = Drawn();
  QPainter(this).drawPixmap(0, 0, picture_);
}

void LayoutPreview::resizeEvent(QResizeEvent* event) {
  picture_ = {};
  QWidget::resizeEvent(event);
}

void LayoutPreview::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
  emit Opened();
}

}  // namespace ts5
