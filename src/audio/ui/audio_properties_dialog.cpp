#include "audio/ui/audio_properties_dialog.h"

#include <QTreeWidget>
#include <utility>

#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "frame/ui/message_box.h"
#include "frame/ui/properties_dialog.h"
#include "frame/ui/qt_text.h"
#include "midi/texts.h"
#include "ui_AUDIOPROPS.h"
#include "ui_FILEPROPS_WAVE.h"

namespace ts5 {
namespace {

// Beside the labels of what is measured, until it is.
std::vector<PropertyRow> Unmeasured(TextId value) {
  std::vector<PropertyRow> rows = LoudnessRows({});
  for (PropertyRow& row : rows) row.value = Text(value);
  return rows;
}

class CompressedDialog final : public HostedDialog {
 public:
  CompressedDialog(const AudioProperties& properties, const std::string& path, DialogHost& host,
                   QWidget* parent)
      : HostedDialog(host, QtText(texts::PropertiesPrompt), parent) {
    ui_.setupUi(this);
    ConnectButtons();
    setWindowTitle(ToQt(properties.title));
    new AudioPropertyList(*ui_.propertyList, properties.rows, path);
  }

  QString HelpTopic() const override { return QStringLiteral("Befehle-Datei-Eigenschaften.htm"); }

 private:
  Ui::AUDIOPROPS ui_;
};

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

std::unique_ptr<HostedDialog> AudioPropertiesDialog(const AudioProperties& properties,
                                                    const std::string& path, DialogHost& host,
                                                    QWidget* parent) {
  if (!IsWaveKind(properties.kind)) return std::make_unique<CompressedDialog>(properties, path, host, parent);
  auto page = std::make_unique<QWidget>();
  Ui::FILEPROPS_WAVE ui;
  ui.setupUi(page.get());
  new AudioPropertyList(*ui.propertyList, properties.rows, path);
  return std::make_unique<PropertiesDialog>(ToQt(properties.title), QtText(texts::PropertiesPrompt),
                                            std::move(page), host, parent);
}

void ShowAudioProperties(const std::string& path, DialogHost& host, QWidget* owner) {
  const auto properties = ReadAudioProperties(path);
  if (!properties) {
    ShowWarning(owner, properties.error() == Outcome::WrongFormat ? texts::PropertyUnknownFormat
                                                                  : texts::PropertyFileNotOpened);
    return;
  }
  AudioPropertiesDialog(*properties, path, host, owner)->exec();
}

}  // namespace ts5
