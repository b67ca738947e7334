// The properties of an audio file: FILEPROPS with the wave page. What takes a moment to measure is filled in
// when it is there; closing the dialog ends the measuring.
#pragma once

#include <QWidget>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "audio/audio_properties.h"
#include "frame/ui/dialog_host.h"
#include "frame/ui/properties_dialog.h"

namespace Ui {
class FILEPROPS_WAVE;
}

namespace ts5 {

class WavePropertiesPage : public QWidget {
  Q_OBJECT

 public:
  // path: what to measure; "" for nothing.
  WavePropertiesPage(const std::vector<PropertyRow>& rows, std::string path);
  ~WavePropertiesPage() override;

 private:
  void Measure(const std::string& path);
  void ShowMeasured(const std::vector<PropertyRow>& rows);
  void AddRow(const PropertyRow& row);

  std::unique_ptr<Ui::FILEPROPS_WAVE> ui_;
  std::atomic<bool> stop_ = false;
  std::thread measuring_;
};

[[nodiscard]] std::unique_ptr<PropertiesDialog> WavePropertiesDialog(const AudioProperties& properties,
                                                                     const std::string& path,
                                                                     DialogHost& host, QWidget* parent);

// Reads the file and shows the dialog until it is closed, or a message when it is no audio file.
void ShowWaveProperties(const std::string& path, DialogHost& host, QWidget* owner);

}  // namespace ts5
