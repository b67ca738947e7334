// Several MIDI files side by side: what each of them holds, and how long they play together. Read in the
// background, one after another; a double click or Enter shows the properties of one.
#pragma once

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "frame/ui/dialog_host.h"
#include "frame/ui/properties_dialog.h"
#include "frame/ui/qt_event_loop.h"
#include "midi/midi_summary.h"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

namespace ts5 {

class MidiFilesPage : public QWidget {
  Q_OBJECT

 public:
  MidiFilesPage(std::vector<std::string> paths, DialogHost& host, QWidget* parent = nullptr);

 private:
  void Show(std::size_t file, const Result<MidiSummary>& summary);
  void ShowTotal();
  void OpenProperties(const QTreeWidgetItem& item);

  std::vector<std::string> paths_;
  DialogHost& host_;
  QTreeWidget* list_;
  QLabel* total_;
  std::size_t read_ = 0;
  std::size_t damaged_ = 0;
  std::chrono::nanoseconds length_{};
  QtEventLoop loop_;
  std::jthread reader_;  // the last: it ends before what it posts to
};

// paths: at least one.
[[nodiscard]] std::unique_ptr<PropertiesDialog> MidiFilesDialog(const std::vector<std::string>& paths,
                                                                DialogHost& host, QWidget* parent);

}  // namespace ts5
