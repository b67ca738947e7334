// The commands on the source files of the active job: the free file list and the files of the directory.
#pragma once

#include <QObject>
#include <cstddef>
#include <string>
#include <vector>

#include "app/background_worker.h"

namespace ts5 {

class MainWindow;

class ListCommands : public QObject {
 public:
  explicit ListCommands(MainWindow& window);

  // Loads a file-list file into the free file list and says what could not be loaded.
  void Load(const std::string& path, bool replace);
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
  void ToggleMaximised();
  void PickFiles();
  void FindFiles();
  void ShowProperties();
  void ListChanged();

  MainWindow& window_;
  BackgroundWorker worker_;
};

}  // namespace ts5
