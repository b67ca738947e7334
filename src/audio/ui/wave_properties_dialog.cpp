#include "audio/ui/wave_properties_dialog.h"

#include <QMetaObject>
#include <QTreeWidget>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_FILEPROPS_WAVE.h"

namespace ts5 {
namespace {

// Beside the labels of what is measured, until it is.
std::vector<PropertyRow> Unmeasured(TextId value) {
  std::vector<PropertyRow> rows = LoudnessRows({});
  for (PropertyRow& row : rows) row.value = Text(value);
  return rows;
}

}  // namespace

WavePropertiesPage::WavePropertiesPage(const std::vector<PropertyRow>& rows, std::string path)
    : ui_(std::make_unique<Ui::FILEPROPS_WAVE>()) {
  ui_->setupUi(this);
  for (const PropertyRow& row : rows) AddRow(row);
  if (!path.empty()) {
    for (const PropertyRow& row : Unmeasured(TextId::AudioPropertyMeasuring)) AddRow(row);
    measuring_ = std::thread([this, path = std::move(path)] { Measure(path); });
  }
  QTreeWidget* const list = ui_->propertyList;
  list->resizeColumnToContents(0);
  list->setColumnWidth(0, list->columnWidth(0) + list->fontMetrics().averageCharWidth() * 2);
  if (list->topLevelItemCount() > 0) list->setCurrentItem(list->topLevelItem(0));
}

WavePropertiesPage::~WavePropertiesPage() {
  stop_ = true;
  if (measuring_.joinable()) measuring_.join();
}

// On a thread of its own; what it posts is dropped when the page has gone.
void WavePropertiesPage::Measure(const std::string& path) {
  const WorkWatch watch{[this] { return stop_.load(); }, {}};
  const auto measured = MeasureAudioProperties(path, watch);
  if (stop_) return;
  const auto rows = measured ? *measured : Unmeasured(TextId::AudioPropertyNotMeasured);
  QMetaObject::invokeMethod(
      this, [this, rows] { ShowMeasured(rows); }, Qt::QueuedConnection);
}

void WavePropertiesPage::ShowMeasured(const std::vector<PropertyRow>& rows) {
  for (const PropertyRow& row : rows) {
    for (QTreeWidgetItem* item : ui_->propertyList->findItems(ToQt(row.label), Qt::MatchExactly, 0))
      item->setText(1, ToQt(row.value));
  }
}

void WavePropertiesPage::AddRow(const PropertyRow& row) {
  auto* const item = new QTreeWidgetItem(ui_->propertyList, {ToQt(row.label), ToQt(row.value)});
  item->setToolTip(1, ToQt(row.value).toHtmlEscaped());
}

std::unique_ptr<PropertiesDialog> WavePropertiesDialog(const AudioProperties& properties,
                                                       const std::string& path, DialogHost& host,
                                                       QWidget* parent) {
  return std::make_unique<PropertiesDialog>(ToQt(properties.title), QtText(TextId::PropertiesPrompt),
                                            std::make_unique<WavePropertiesPage>(properties.rows, path), host,
                                            parent);
}

void ShowWaveProperties(const std::string& path, DialogHost& host, QWidget* owner) {
  const auto properties = ReadAudioProperties(path);
  if (!properties) {
    ShowWarning(owner, properties.error() == Outcome::WrongFormat ? TextId::PropertyUnknownFormat
                                                                  : TextId::PropertyFileNotOpened);
    return;
  }
  WavePropertiesDialog(*properties, path, host, owner)->exec();
}

}  // namespace ts5
