// The commands on the source files of the active job: the free file list and the files of the directory.
#pragma once

#include <QObject>
#include <cstddef>
#include <string>
#include <vector>

#include "app/shell/active_job.h"
#include "app/shell/background_worker.h"
#include "app/shell/desk.h"
#include "app/source/source_area.h"
#include "app/source/source_commands.h"

namespace ts5 {

class Application;

class ListCommands : public QObject {
 public:
  ListCommands(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source,
               Application& application);

  // Files from outside: a directory becomes the source, what is no music is a file list and is loaded, all
  // else comes into the free file list.
  void OpenFiles(const std::vector<std::string>& files);
  // Loads a file-list file into the free file list and says what could not be loaded.
  void Load(const std::string& path, bool replace);
  // Files from outside or from the directory view go to the free file list.
  void Drop(const std::vector<std::string>& paths);

 private:
  void Open();
  void OpenList(const std::string& path);
  void SaveAs();
  void Clear(bool ask);
  void Delete();
  void RemoveEntries(const std::vector<std::size_t>& entries);
  void DeleteFiles(std::vector<std::string> paths);
  void Move(bool up);
  void Rename();
  void TakeLabel(std::size_t row, const QString& label);
  void PickFiles();
  void FindFiles();
  void ShowProperties();
  void ShowNotation();
  void Refresh();  // the commands

  Desk& desk_;
  ActiveJob& active_;
  SourceArea& area_;
  SourceCommands& source_;
  Application& application_;
  BackgroundWorker worker_;
};

}  // namespace ts5
