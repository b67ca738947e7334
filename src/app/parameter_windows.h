// The windows of the filters' parameters: which filter has which. The one place that knows the windows of all
// rooms, as filter_modules.h is for their work.
#pragma once

#include <functional>

#include "frame/filter_id.h"
#include "frame/job.h"
#include "frame/ui/dialog_host.h"

class QWidget;

namespace ts5 {

class Application;

struct ParameterDialog {
  FilterId filter;
  // Edits the job's parameters in a modal dialog; true when they were taken over.
  std::function<bool(Job& job, Application& application, DialogHost& host, QWidget* owner)> edit;
  // What there is to ask before a run; false when the user does not want it then. Empty: nothing.
  std::function<bool(const Job& job, Application& application, DialogHost& host, QWidget* owner)> prepare =
      {};
};

// nullptr for a filter without one.
[[nodiscard]] const ParameterDialog* FindParameterDialog(FilterId filter);

}  // namespace ts5
