// Discs in the main window: putting one into the virtual CD drive and taking it out, blank discs for the
// virtual recorder, what is on a disc, erasing one, and the pauses of a project.
#pragma once

#include <QAction>
#include <QObject>
#include <QWidget>
#include <map>
#include <string>
#include <vector>

#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/source/project_view.h"
#include "app/source/source_area.h"
#include "app/source/source_commands.h"
#include "platform/base/outcome.h"

namespace ts5 {

class Application;

class DiscCommands : public QObject {
  Q_OBJECT

 public:
  DiscCommands(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source,
               Application& application);

  // Puts the actions into the context menu of a view: those of the virtual drive while it is the source,
  // those of the virtual recorder while it is the drive that is meant.
  void OfferDrive(QWidget& view);
  void OfferRecorder(QWidget& view);

  void Refresh();

 signals:
  // The machine has others than before, and the application knows them.
  void DrivesChanged();

 private:
  // The path of the recorder that is chosen, or of the drive that is the source; "" when there is none.
  [[nodiscard]] std::string CurrentDrive();
  // That of a recorder by its name.
  [[nodiscard]] const std::string& PathOf(const std::string& recorder);
  void WatchDrives();
  void TakeDrives();
  void TakeDisc(const std::string& drive);
  void ShowInformation();
  void Erase();
  void ChoosePause();
  void InsertBlank(int minutes, bool rewritable);
  void LoadRecorder();
  void EjectRecorder();
  void DiscsChanged();
  void TellOutcome(Outcome outcome, const std::string& path);
  void ShowRecorderFolder();
  void Eject();

  Desk& desk_;
  ActiveJob& active_;
  SourceArea& area_;
  SourceCommands& source_;
  Application& application_;
  std::vector<QAction*> drive_;               // of the virtual drive
  std::vector<QAction*> recorder_;            // of the virtual recorder
  std::map<std::string, std::string> paths_;  // of recorders by their names
  ProjectView project_;
};

}  // namespace ts5
