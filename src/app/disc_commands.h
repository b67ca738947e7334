// The disc of the virtual CD drive in the main window: put in and taken out by the context menus of tree and
// files while the drive is the source, by a CUE sheet that is dropped there, and asked for when an empty
// drive is chosen.
#pragma once

#include <QAction>
#include <QObject>
#include <string>
#include <vector>

namespace ts5 {

class MainWindow;

class DiscCommands : public QObject {
  Q_OBJECT

 public:
  explicit DiscCommands(MainWindow& window);

  // Whether the source of the active job is the virtual drive.
  [[nodiscard]] bool DriveIsSource() const;
  void Refresh();  // the menus
  // Asks for a disc unless there is one. False: the user has none.
  [[nodiscard]] bool HasDisc();
  // A CUE sheet dropped while the drive is the source; false when it is something else.
  [[nodiscard]] bool TakeDrop(const std::vector<std::string>& paths);

 private:
  [[nodiscard]] bool AskDisc();
  bool Insert(const std::string& cuePath);
  void Eject();

  MainWindow& window_;
  QAction* insert_;
  QAction* eject_;
};

}  // namespace ts5
