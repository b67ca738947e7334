#include "midi/ui/midi_properties_dialog.h"

#include <QTreeWidget>
#include <QWidget>

#include "frame/ui/qt_text.h"
#include "midi/texts.h"
#include "ui_FILEPROPS_MIDI.h"

namespace ts5 {
namespace {

void Fill(QTreeWidget* list, const std::vector<PropertyRow>& rows) {
  for (const PropertyRow& row : rows) {
    auto* item = new QTreeWidgetItem(list, {ToQt(row.label), ToQt(row.value)});
    item->setToolTip(1, ToQt(row.value).toHtmlEscaped());
  }
  list->resizeColumnToContents(0);
  list->setColumnWidth(0, list->columnWidth(0) + list->fontMetrics().averageCharWidth() * 2);
  if (list->topLevelItemCount() > 0) list->setCurrentItem(list->topLevelItem(0));
}

}  // namespace

std::unique_ptr<QWidget> MidiPropertiesPage(const MidiProperties& properties) {
  auto page = std::make_unique<QWidget>();
  Ui::FILEPROPS_MIDI ui;
  ui.setupUi(page.get());
  Fill(ui.propertyList, properties.rows);
  Fill(ui.attributeList, properties.attributes);
  ui.attributesLabel->setVisible(properties.isRiff);
  ui.attributeList->setVisible(properties.isRiff);
  return page;
}

std::unique_ptr<PropertiesDialog> MidiPropertiesDialog(const MidiProperties& properties, DialogHost& host,
                                                       QWidget* parent) {
  return std::make_unique<PropertiesDialog>(ToQt(properties.title), QtText(texts::PropertiesPrompt),
                                            MidiPropertiesPage(properties), host, parent);
}

}  // namespace ts5
