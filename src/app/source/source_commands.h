// The source of the active job in the main window: its drive, directory and files, read in the background,
// and the selection that goes into the job.
#pragma once

#include <QObject>
#include <QTimer>
#include <cstdint>
#include <optional>
#include <string>

#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/source/source_area.h"
#include "app/source/source_reader.h"
#include "frame/file_list.h"
#include "frame/settings.h"
#include "platform/base/outcome.h"
#include "platform/disc/volumes.h"

namespace ts5 {

class SourceCommands : public QObject {
 public:
  SourceCommands(Desk& desk, ActiveJob& active, SourceArea& area, const VolumeTable& volumes,
                 Settings& settings);

  // What is being read or selected is of no interest any more.
  void Leave();
  // Reads the files of the job's directory after it was changed.
  void Read();
  // Reads the source directory again, or shows the list again.
  void Reload();
  // Selects a file, or a CD track, in the list or its directory, and brings it into view.
  void ShowFile(const std::string& path);
  // Shows another directory.
  void ShowFolder(const std::string& path);
  // The selection of the file view goes into the active job at once.
  void TakeSelection();

 private:
  void Show();
  void Refresh();  // the commands
  void ShowNote();
  void ChooseMusic();
  void ShowExamples();
  void SwitchMode();
  void TakeDrive(std::int32_t drive);
  void TakeDirectory(const std::string& path);
  void TakeDone(Outcome outcome);
  [[nodiscard]] bool GoesBack(Outcome read);
  void SelectStored();
  [[nodiscard]] bool StoreSelection();

  Desk& desk_;
  ActiveJob& active_;
  SourceArea& area_;
  const VolumeTable& volumes_;
  Settings& settings_;
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
