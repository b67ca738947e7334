// The list of labels and values on the first page of an audio file's properties.
#pragma once

#include <QObject>
#include <string>
#include <vector>

#include "audio/audio_properties.h"
#include "frame/ui/qt_event_loop.h"
#include "platform/media/media_engine.h"

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

}  // namespace ts5
