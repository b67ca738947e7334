// The commands on jobs: switching, creating, renaming, deleting.
#pragma once

#include <QObject>

namespace ts5 {

class MainWindow;

class JobCommands : public QObject {
 public:
  explicit JobCommands(MainWindow& window);

  // 0: the default job.
  void Activate(int number);

 private:
  void Create();
  void Rename();
  void Remove();

  MainWindow& window_;
};

}  // namespace ts5
