// The destination of the active job in its area: what the job says is shown there, what the user sets there
// is told, and a file is chosen in a dialog.
#pragma once

#include <QObject>

#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/target/target_area.h"

namespace ts5 {

class TargetCommands : public QObject {
 public:
  TargetCommands(Desk& desk, ActiveJob& active, TargetArea& area);

 private:
  void ShowDestination();
  void Browse();

  Desk& desk_;
  ActiveJob& active_;
  TargetArea& area_;
};

}  // namespace ts5
