#include "app/run/run_panels.h"

#include <algorithm>
#include <utility>

namespace ts5 {

RunPanels::RunPanels(ActiveJob& active, bool wholePaths, QWidget* parent)
    : QStackedWidget(parent), active_(active), wholePaths_(wholePaths) {
  setObjectName("runPanels");
  connect(&active_, &ActiveJob::FilterChanged, this, [this] {
    RunPanel& panel = Current();
    setCurrentWidget(&panel);
    if (active_->MayChange()) panel.SetFilter(active_->filter);  // a run that goes on may have another one
  });
}

RunPanel& RunPanels::Of(const Job& job) {
  RunPanel*& panel = panels_[job.Id()];
  if (panel == nullptr) {
    panel = new RunPanel(this);
    panel->Hits().SetWholePaths(wholePaths_);
    addWidget(panel);
    emit Made(panel);
  }
  return *panel;
}

const RunPanel* RunPanels::Find(JobId job) const {
  const auto found = panels_.find(job);
  return found == panels_.end() ? nullptr : found->second;
}

void RunPanels::SetWholePaths(bool wholePaths) {
  if (std::exchange(wholePaths_, wholePaths) == wholePaths) return;
  for (const auto& [job, panel] : panels_) panel->Hits().SetWholePaths(wholePaths);
}

bool RunPanels::Recording() const {
  return std::ranges::any_of(panels_, [](const auto& entry) { return entry.second->Recording(); });
}

void RunPanels::DropOrphans(const Jobs& jobs) {
  std::erase_if(panels_, [&](const auto& entry) {
    if (jobs.Find(entry.first)) return false;
    entry.second->deleteLater();
    removeWidget(entry.second);
    return true;
  });
}

}  // namespace ts5
