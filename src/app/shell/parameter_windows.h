// The windows of the filters' parameters: which filter has which. The one place that knows the windows of all
// rooms, as filter_modules.h is for their work.
#pragma once

#include <functional>

#include "app/run/job_windows.h"
#include "app/shell/active_job.h"
#include "app/shell/desk.h"
#include "app/shell/window_links.h"
#include "frame/filter_id.h"
#include "frame/job.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5 {

class Application;

struct ParameterDialog {
  FilterId filter;
  // Edits the job's parameters in a modal dialog; true when they were taken over. Of the page of a decoder
  // likewise.
  std::function<bool(Job& job, Application& application, DialogHost& host, QWidget* owner)> edit = {};
  // What there is to ask, or to be put into the job, before a run; false when the user does not want it then.
  // Empty: nothing.
  std::function<bool(Job& job, Application& application, DialogHost& host, QWidget* owner)> prepare = {};
  // In place of edit, for a filter whose window stays beside the main window: makes it. What is changed there
  // goes into the job that find gives, at once; without a job any more the window is closed.
  std::function<QWidget*(const JobFinder& find, const WindowLinks& links, Application& application,
                         DialogHost& host, QWidget* owner)>
      open = {};
};

// nullptr for a filter without one.
[[nodiscard]] const ParameterDialog* FindParameterDialog(FilterId filter);
// Edits the parameters of the active job, in its dialog or in a window that stays. True when they were taken
// over.
bool EditParameters(ActiveJob& active, Application& application, JobWindows& windows, Desk& desk);

}  // namespace ts5
