// The source of the active job in the main window: its drive, directory and files, read in the background,
// and the selection that goes into the job.
#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <optional>
#include <string>

#include "app/source_reader.h"
#include "frame/file_list.h"
#include "frame/filter_bar.h"
#include "frame/job.h"
#include "platform/outcome.h"

namespace ts5 {

class MainWindow;

class SourceCommands : public QObject {
 public:
  explicit SourceCommands(MainWindow& window);

  // The source of a job that becomes the active one.
  void Show(Job& job);
  // What is being read or selected is of no interest any more.
  void Leave();
  // Reads the files of the job's directory after it was changed.
  void Read();
  // Reads the source directory again, or shows the list again.
  void Reload();
  // The selection of the file view goes into the active job at once.
  void TakeSelection();
  // What the filters look at.
  [[nodiscard]] SourceContext Context() const;
  // The source is a directory, and that an audio CD.
  [[nodiscard]] bool IsAudioCd() const;

 private:
  void SwitchMode();
  void TakeDrive(std::int32_t drive);
  void TakeDirectory(const std::string& path);
  void TakeDone(Outcome outcome);
  [[nodiscard]] bool GoesBack(Outcome read);
  void SelectStored();
  [[nodiscard]] bool StoreSelection();

  MainWindow& window_;
  SourceReader reader_;
  QTimer selectionTimer_;
  bool shown_ = false;  // a job has been
  // The source before a disc drive was taken whose disc is still being read.
  struct BeforeDisc {
    std::int32_t drive = 0;
    DirectorySelection directory;
  };
  std::optional<BeforeDisc> beforeDisc_;
};

}  // namespace ts5
