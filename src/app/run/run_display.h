// What the main window shows of the active job running or not: which of its areas can be used, how the run
// commands are called and whether they can be given, and where the focus is.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include "app/run/run_panels.h"
#include "app/shell/active_job.h"
#include "app/shell/command_actions.h"
#include "app/source/source_area.h"
#include "app/target/target_area.h"

namespace ts5 {

class RunDisplay : public QObject {
 public:
  RunDisplay(ActiveJob& active, SourceArea& source, TargetArea& target, RunPanels& panels,
             CommandActions& actions);

 private:
  void Show();
  void MoveFocus(bool idle);

  ActiveJob& active_;
  SourceArea& source_;
  TargetArea& target_;
  RunPanels& panels_;
  CommandActions& actions_;
  QPointer<QWidget> focusBeforeRun_;
};

}  // namespace ts5
