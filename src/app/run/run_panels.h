// The run panels of the jobs; that of the active job shows.
#pragma once

#include <QStackedWidget>
#include <map>

#include "app/run/run_panel.h"
#include "app/shell/active_job.h"
#include "frame/jobs.h"

namespace ts5 {

class RunPanels : public QStackedWidget {
  Q_OBJECT

 public:
  // wholePaths: in the lists of hits.
  RunPanels(ActiveJob& active, bool wholePaths, QWidget* parent);

  // Made when it is asked for first.
  [[nodiscard]] RunPanel& Of(const Job& job);
  // That of the active job.
  [[nodiscard]] RunPanel& Current() { return Of(*active_); }
  // Of a job that may not have one yet.
  [[nodiscard]] const RunPanel* Find(JobId job) const;
  void SetWholePaths(bool wholePaths);
  // A disc is being written by the run of any job.
  [[nodiscard]] bool Recording() const;
  // Forgets those whose jobs have gone.
  void DropOrphans(const Jobs& jobs);

 signals:
  void Made(ts5::RunPanel* panel);

 private:
  ActiveJob& active_;
  bool wholePaths_;
  std::map<JobId, RunPanel*> panels_;
};

}  // namespace ts5
