#include "app/run/job_windows.h"

#include <chrono>

#include "frame/jobs.h"

namespace ts5 {
namespace {

constexpr std::chrono::milliseconds kWatchInterval{250};

Job* FindJob(Jobs& jobs, JobId id, FilterId filter) {
  const auto number = jobs.Find(id);
  return number && jobs[*number].filter == filter ? &jobs[*number] : nullptr;
}

}  // namespace

JobWindows::JobWindows(Jobs& jobs) : jobs_(jobs) {
  watch_.setInterval(kWatchInterval);
  QObject::connect(&watch_, &QTimer::timeout, &watch_, [this] { Watch(); });
}

void JobWindows::Open(const Job& job, Use use, const std::function<QWidget*(const JobFinder& find)>& make) {
  const JobId id = job.Id();
  Window& window = windows_[id];
  if (window.widget != nullptr && window.filter != job.filter) window.widget->close();
  if (window.widget == nullptr || window.filter != job.filter) {
    const FilterId filter = job.filter;
    window = {filter, make([this, id, filter] { return FindJob(jobs_, id, filter); }), use};
    if (window.widget == nullptr) return;
    window.widget->setAttribute(Qt::WA_DeleteOnClose);
    watch_.start();
  }
  window.widget->show();
  window.widget->raise();
  window.widget->activateWindow();
}

QWidget* JobWindows::Find(const Job& job) const {
  const auto found = windows_.find(job.Id());
  return found != windows_.end() && found->second.filter == job.filter ? found->second.widget.data()
                                                                       : nullptr;
}

void JobWindows::Watch() {
  std::erase_if(windows_, [this](auto& entry) {
    auto& [id, window] = entry;
    const Job* const job = FindJob(jobs_, id, window.filter);
    if (window.widget != nullptr && job == nullptr) window.widget->close();
    if (window.widget != nullptr && job != nullptr && window.use == Use::WhileIdle)
      window.widget->setEnabled(job->MayChange());
    return window.widget == nullptr;
  });
  if (windows_.empty()) watch_.stop();
}

}  // namespace ts5
