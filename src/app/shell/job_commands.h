// The jobs in their bar, and the commands on them: switching, creating, renaming, deleting.
#pragma once

#include <QObject>

#include "app/run/run_panels.h"
#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/shell/job_bar.h"
#include "frame/jobs.h"

namespace ts5 {

class JobCommands : public QObject {
 public:
  JobCommands(Desk& desk, ActiveJob& active, Jobs& jobs, JobBar& bar, RunPanels& panels);

  // The bar after jobs came, went or went on.
  void ShowJobs();

 private:
  void Refresh();  // the commands
  void Create();
  void Rename(std::size_t number);
  void Remove(std::size_t number);
  // What can be done with a job, whichever is on show.
  void ShowMenu(std::size_t number, const QPoint& place);

  Desk& desk_;
  ActiveJob& active_;
  Jobs& jobs_;
  JobBar& bar_;
  RunPanels& panels_;
};

}  // namespace ts5
