// The properties of an audio file: FILEPROPS with the wave page for plain wave and AIFF files, AUDIOPROPS for
// all other kinds.
#pragma once

#include <QObject>
#include <memory>
#include <string>
#include <vector>

#include "audio/audio_properties.h"
#include "frame/ui/hosted_dialog.h"
#include "frame/ui/qt_event_loop.h"
#include "platform/media_engine.h"

class QTreeWidget;

namespace ts5 {

// Fills a list of labels and values. What takes a moment to measure is measured in the background and filled
// in when it is there; the end of the list ends the measuring.
class AudioPropertyList : public QObject {
  Q_OBJECT

 public:
  // The list becomes the owner. path: what to measure; "" for nothing.
  AudioPropertyList(QTreeWidget& list, const std::vector<PropertyRow>& rows, const std::string& path);

 private:
  void Measure(const std::string& path);
  void ShowMeasured(const std::vector<PropertyRow>& rows);
  void AddRow(const PropertyRow& row);

  QTreeWidget& list_;
  QtEventLoop loop_;
  MediaEngine engine_;
};

[[nodiscard]] std::unique_ptr<HostedDialog> AudioPropertiesDialog(const AudioProperties& properties,
                                                                  const std::string& path, DialogHost& host,
                                                                  QWidget* parent);

// Reads the file and shows the dialog until it is closed, or a message when it is no audio file.
void ShowAudioProperties(const std::string& path, DialogHost& host, QWidget* owner);

}  // namespace ts5
