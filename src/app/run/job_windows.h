// The windows that belong to jobs and stay beside the main window: of each job at most one, for its filter.
// It is closed when the job goes or gets another filter.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <map>

#include "frame/filter_id.h"
#include "frame/job.h"

namespace ts5 {

class Jobs;

// The job while it is there and has the filter that it had, nullptr after that.
using JobFinder = std::function<Job*()>;

class JobWindows {
 public:
  explicit JobWindows(Jobs& jobs);

  // Brings the window of the job to the front. When there is none for its filter, make gives it; a null
  // pointer is no window. One that is of use while the job is idle cannot be used while it runs.
  enum class Use : std::uint8_t { Always, WhileIdle };
  void Open(const Job& job, Use use, const std::function<QWidget*(const JobFinder& find)>& make);
  // nullptr when none is open.
  [[nodiscard]] QWidget* Find(const Job& job) const;

 private:
  struct Window {
    FilterId filter = FilterId::None;
    QPointer<QWidget> widget;
    Use use = Use::Always;
  };
  void Watch();

  Jobs& jobs_;
  std::map<JobId, Window> windows_;
  QTimer watch_;
};

}  // namespace ts5
