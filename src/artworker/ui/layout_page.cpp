#include "artworker/ui/layout_page.h"

#include <QApplication>
#include <QSignalBlocker>

#include "artworker/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_ARTLAYOUT.h"
#include "ui_ARTOBJECT.h"

namespace ts5::artworker {
namespace {

constexpr std::array kObjectNames = {texts::ArtworkLabel, texts::ArtworkInlay, texts::ArtworkBooklet};

}  // namespace

ObjectGroup::ObjectGroup(Scene& scene, ArtworkObjectId id, QWidget* parent)
    : QGroupBox(parent), scene_(scene), id_(id), ui_(std::make_unique<Ui::ARTOBJECT>()) {
  ui_->setupUi(this);
  setTitle(QtText(kObjectNames[IndexOf(id)]));
  if (id == ArtworkObjectId::Label) {
    ui_->widthLabel->setText(QtText(texts::DiameterLabel));
    ui_->heightLabel->setText(QtText(texts::HoleLabel));
  }
  const std::array boxes = {std::pair(ui_->sheetWidthBox, Measure::SheetWidth),
                            std::pair(ui_->sheetHeightBox, Measure::SheetHeight),
                            std::pair(ui_->xBox, Measure::X),
                            std::pair(ui_->yBox, Measure::Y),
                            std::pair(ui_->widthBox, Measure::Width),
                            std::pair(ui_->heightBox, Measure::Height)};
  for (const auto& row : boxes) {
    connect(row.first, &QSpinBox::valueChanged, this,
            [this, measure = row.second](int value) { TakeMeasure(measure, value); });
  }
  connect(ui_->portraitRadio, &QAbstractButton::clicked, this,
          [this] { Change([](ArtworkObject& object, ArtworkObjectId) { SetPortrait(object, true); }); });
  connect(ui_->landscapeRadio, &QAbstractButton::clicked, this,
          [this] { Change([](ArtworkObject& object, ArtworkObjectId) { SetPortrait(object, false); }); });
  connect(ui_->centreXButton, &QAbstractButton::clicked, this,
          [this] { Change([](ArtworkObject& object, ArtworkObjectId) { CentreAcross(object); }); });
  connect(ui_->centreYButton, &QAbstractButton::clicked, this,
          [this] { Change([](ArtworkObject& object, ArtworkObjectId) { CentreDown(object); }); });
  connect(ui_->normButton, &QAbstractButton::clicked, this, [this] { Change(SetNormSize); });
  Refresh();
}

ObjectGroup::~ObjectGroup() = default;

void ObjectGroup::Refresh() {
  const ArtworkLayout& layout = scene_.editor.Layout();
  const ArtworkObject& object = layout.Object(id_);
  const std::array values = {std::pair(ui_->sheetWidthBox, object.sheet.width),
                             std::pair(ui_->sheetHeightBox, object.sheet.height),
                             std::pair(ui_->xBox, object.x),
                             std::pair(ui_->yBox, object.y),
                             std::pair(ui_->widthBox, object.size.width),
                             std::pair(ui_->heightBox, object.size.height)};
  for (const auto& [box, value] : values) {
    const QSignalBlocker quiet(box);
    box->setValue(value);
  }
  const bool custom = layout.paper == PaperFormat::Custom;
  ui_->sheetWidthBox->setEnabled(custom);
  ui_->sheetHeightBox->setEnabled(custom);
  ui_->portraitRadio->setChecked(object.portrait);
  ui_->landscapeRadio->setChecked(!object.portrait);
}

void ObjectGroup::TakeMeasure(Measure measure, int value) {
  bool fits = false;
  const bool changed = scene_.editor.Apply(
      [&](ArtworkLayout& layout, Selection&) { fits = SetMeasure(layout, id_, measure, value); });
  if (!fits) QApplication::beep();
  Refresh();
  if (changed) emit Edited();
}

void ObjectGroup::Change(void (*change)(ArtworkObject& object, ArtworkObjectId id)) {
  const bool changed =
      scene_.editor.Apply([&](ArtworkLayout& layout, Selection&) { change(layout.Object(id_), id_); });
  Refresh();
  if (changed) emit Edited();
}

LayoutPage::LayoutPage(Scene& scene, QWidget* parent)
    : QWidget(parent), scene_(scene), ui_(std::make_unique<Ui::ARTLAYOUT>()) {
  ui_->setupUi(this);
  for (const ArtworkObjectId id : kObjectIds) {
    ObjectGroup*& group = groups_[IndexOf(id)];
    group = new ObjectGroup(scene, id, this);
    ui_->objectsLayout->addWidget(group);
    connect(group, &ObjectGroup::Edited, this, &LayoutPage::Edited);
  }
  connect(ui_->paperBox, &QComboBox::activated, this, [this](int format) {
    const bool changed = scene_.editor.Apply(
        [format](ArtworkLayout& layout, Selection&) { SetPaper(layout, static_cast<PaperFormat>(format)); });
    Refresh();
    if (changed) emit Edited();
  });
  connect(ui_->templatesButton, &QAbstractButton::clicked, this, &LayoutPage::TemplateWanted);
  connect(ui_->loadButton, &QAbstractButton::clicked, this, &LayoutPage::LoadWanted);
  connect(ui_->saveButton, &QAbstractButton::clicked, this, &LayoutPage::SaveWanted);
  Refresh();
}

LayoutPage::~LayoutPage() = default;

void LayoutPage::Refresh() {
  ui_->paperBox->setCurrentIndex(static_cast<int>(scene_.editor.Layout().paper));
  for (ObjectGroup* group : groups_) group->Refresh();
}

void LayoutPage::ShowFile(const std::string& path) {
  ui_->fileLabel->setText(path.empty() ? QtText(texts::LayoutNotLoaded) : ToQt(path));
}

}  // namespace ts5::artworker
