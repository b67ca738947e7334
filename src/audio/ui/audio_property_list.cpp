#include "audio/ui/audio_property_list.h"

#include <QTreeWidget>
#include <utility>

#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

// Beside the labels of what is measured, until it is.
std::vector<PropertyRow> Unmeasured(TextId value) {
  std::vector<PropertyRow> rows = LoudnessRows({});
  for (PropertyRow& row : rows) row.value = Text(value);
  return rows;
}

}  // namespace

AudioPropertyList::AudioPropertyList(QTreeWidget& list, const std::vector<PropertyRow>& rows,
                                     const std::string& path)
    : QObject(&list), list_(list), engine_(loop_) {
  for (const PropertyRow& row : rows) AddRow(row);
  if (!path.empty()) {
    for (const PropertyRow& row : Unmeasured(texts::AudioPropertyMeasuring)) AddRow(row);
    Measure(path);
  }
  list_.resizeColumnToContents(0);
  list_.setColumnWidth(0, list_.columnWidth(0) + list_.fontMetrics().averageCharWidth() * 2);
  list_.setCurrentItem(list_.topLevelItem(0));
}

void AudioPropertyList::Measure(const std::string& path) {
  auto source = OpenPcm(path);
  if (!source) return ShowMeasured(Unmeasured(texts::AudioPropertyNotMeasured));
  auto sink = std::make_unique<LoudnessSink>((*source)->Shape());
  const LoudnessSink* const meter = sink.get();
  engine_.Build(*std::move(source), std::move(sink));
  (void)engine_.Start({.finished = [this, meter](Outcome outcome) {
    ShowMeasured(Succeeded(outcome) ? LoudnessRows(meter->Measured())
                                    : Unmeasured(texts::AudioPropertyNotMeasured));
  }});
}

void AudioPropertyList::ShowMeasured(const std::vector<PropertyRow>& rows) {
  for (const PropertyRow& row : rows) {
    for (QTreeWidgetItem* item : list_.findItems(ToQt(row.label), Qt::MatchExactly, 0))
      item->setText(1, ToQt(row.value));
  }
}

void AudioPropertyList::AddRow(const PropertyRow& row) {
  auto* const item = new QTreeWidgetItem(&list_, {ToQt(row.label), ToQt(row.value)});
  item->setToolTip(1, ToQt(row.value).toHtmlEscaped());
}

}  // namespace ts5
