#include "artworker/ui/template_gallery.h"

#include <QPainter>

#include "artworker/object_picture.h"
#include "artworker/texts.h"
#include "artworker/ui/help_topics.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTGALLERY.h"

namespace ts5::artworker {
namespace {

constexpr QSize kPicture{300, 240};
constexpr QSize kWindow{1010, 640};
constexpr double kGap = 8;  // pixels

}  // namespace

TemplateGallery::TemplateGallery(std::vector<Template> templates, const DiscFacts& facts, DialogHost& host,
                                 QWidget* parent)
    : HostedDialog(host, QtText(texts::TemplatePrompt), parent),
      templates_(std::move(templates)),
      facts_(facts.Known() ? facts : SampleDisc()),
      ui_(std::make_unique<Ui::ARTGALLERY>()) {
  ui_->setupUi(this);
  ConnectButtons();
  QListWidget& list = *ui_->templateList;
  list.setViewMode(QListView::IconMode);
  list.setIconSize(kPicture);
  list.setResizeMode(QListView::Adjust);
  list.setMovement(QListView::Static);
  list.setSpacing(static_cast<int>(kGap));
  QPixmap empty(kPicture);
  empty.fill(Qt::transparent);
  for (const Template& row : templates_) list.addItem(new QListWidgetItem(empty, ToQt(row.name)));
  list.setCurrentRow(0);
  ui_->okButton->setEnabled(!templates_.empty());
  connect(&list, &QListWidget::itemDoubleClicked, this, [this] { Commit(); });
  connect(&timer_, &QTimer::timeout, this, [this] { DrawNext(); });
  timer_.start(0);
  resize(kWindow);
}

TemplateGallery::~TemplateGallery() = default;

QString TemplateGallery::HelpTopic() const {
  return kHelpEditor;
}

const Template* TemplateGallery::Chosen() const {
  const int row = ui_->templateList->currentRow();
  return row >= 0 ? &templates_[static_cast<std::size_t>(row)] : nullptr;
}

void TemplateGallery::DrawNext() {
  if (std::cmp_greater_equal(drawn_, templates_.size())) return timer_.stop();
  const Template& row = templates_[static_cast<std::size_t>(drawn_)];
  const ArtworkLayout layout = FilledLayout(row.layout, facts_);
  const ObjectPainting painting{layout, row.backgrounds, pictures_};
  const double dots = devicePixelRatioF();
  QPixmap picture(kPicture * dots);
  picture.setDevicePixelRatio(dots);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const double half = (kPicture.width() - kGap) / 2.0;
  const double top = kPicture.width() / 2.0;
  PaintInto(painter, painting, ArtworkObjectId::Booklet, QRectF(0, 0, kPicture.width(), top - kGap));
  PaintInto(painter, painting, ArtworkObjectId::Label, QRectF(0, top, half, kPicture.height() - top));
  PaintInto(painter, painting, ArtworkObjectId::Inlay,
            QRectF(half + kGap, top, half, kPicture.height() - top));
  painter.end();
  QIcon icon(picture);
  icon.addPixmap(picture, QIcon::Selected);  // in its own colours
  ui_->templateList->item(drawn_)->setIcon(icon);
  ++drawn_;
}

}  // namespace ts5::artworker
