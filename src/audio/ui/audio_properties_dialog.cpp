#include "audio/ui/audio_properties_dialog.h"

#include <QWidget>
#include <utility>

#include "audio/texts.h"
#include "audio/ui/attributes_dialog.h"
#include "audio/ui/audio_property_list.h"
#include "frame/ui/message_box.h"
#include "frame/ui/properties_dialog.h"
#include "frame/ui/qt_text.h"
#include "midi/texts.h"
#include "platform/base/text.h"
#include "ui_FILEPROPS_WAVE.h"

namespace ts5 {

std::unique_ptr<HostedDialog> AudioPropertiesDialog(const AudioProperties& properties,
                                                    const std::string& path, DialogHost& host,
                                                    QWidget* parent, unsigned id3Version) {
  if (!IsWaveKind(properties.kind)) {
    const std::vector<std::string> files(path.empty() ? 0 : 1, path);
    auto dialog = std::make_unique<AttributesDialog>(properties, path, files, host, parent);
    dialog->SetId3Version(id3Version);
    return dialog;
  }
  auto page = std::make_unique<QWidget>();
  Ui::FILEPROPS_WAVE ui;
  ui.setupUi(page.get());
  new AudioPropertyList(*ui.propertyList, properties.rows, path);
  return std::make_unique<PropertiesDialog>(ToQt(properties.title), QtText(texts::PropertiesPrompt),
                                            std::move(page), host, parent);
}

void ShowAudioProperties(const std::string& path, DialogHost& host, QWidget* owner, unsigned id3Version) {
  const auto properties = ReadAudioProperties(path);
  if (!properties) {
    ShowWarning(owner, properties.error() == Outcome::WrongFormat ? texts::PropertyUnknownFormat
                                                                  : texts::PropertyFileNotOpened);
    return;
  }
  AudioPropertiesDialog(*properties, path, host, owner, id3Version)->exec();
}

void ShowAudioProperties(const std::vector<std::string>& paths, DialogHost& host, QWidget* owner,
                         unsigned id3Version) {
  AudioProperties properties;
  properties.title = Format(Text(texts::PropertiesTitle), Format(Text(texts::AttributesFiles), paths.size()));
  properties.rows = SummaryRows(paths);
  AttributesDialog dialog(properties, "", paths, host, owner);
  dialog.SetId3Version(id3Version);
  dialog.exec();
}

}  // namespace ts5
