// The commands on the source files of the active job: the free file list and the files of the directory.
#pragma once

#include <QObject>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "app/background_worker.h"
#include "frame/file_list.h"
#include "platform/outcome.h"

namespace ts5 {

class MainWindow;

class ListCommands : public QObject {
 public:
  explicit ListCommands(MainWindow& window);

  // Loads a file-list file into the free file list and says what could not be loaded.
  void Load(const std::string& path, bool replace);
  // How the reading of the source ended. When that is a disc drive that the user has just taken and that
  // cannot be read, says so and shows the source before it: true.
  [[nodiscard]] bool GoesBack(Outcome read);
  // Files from outside or from the directory view go to the free file list.
  void Drop(const std::vector<std::string>& paths);

 private:
  void Open();
  void SaveAs();
  void Clear(bool ask);
  void Delete();
  void RemoveEntries();
  void DeleteFiles();
  void Move(bool up);
  void Rename();
  void TakeLabel(std::size_t row, const QString& label);
  void SwitchMode();
  void TakeDrive(std::int32_t drive);
  void TakeDirectory(const std::string& path);
  void ToggleMaximised();
  void PickFiles();
  void FindFiles();
  void ShowProperties();
  void ListChanged();

  MainWindow& window_;
  BackgroundWorker worker_;
  // The source before a disc drive was taken whose disc is still being read.
  struct BeforeDisc {
    std::int32_t disc = 0;
    std::int32_t drive = 0;
    DirectorySelection directory;
  };
  std::optional<BeforeDisc> beforeDisc_;
};

}  // namespace ts5
