// The filter bar for the active job: its tiles, choosing a filter, collapsing tiles, fixing the filter.
#pragma once

#include <QObject>

#include "app/shell/active_job.h"
#include "app/shell/filter_panel.h"
#include "frame/filter_id.h"

namespace ts5 {

class FilterCommands : public QObject {
  Q_OBJECT

 public:
  FilterCommands(ActiveJob& active, FilterPanel& panel);

 signals:
  // A filter was chosen that takes the whole list: its files are to be selected.
  void AllFilesWanted();
  // A tile was pressed: the parameters of the job's filter are to be set.
  void ParametersWanted();

 private:
  void ShowBar();
  void Choose(FilterId filter);

  ActiveJob& active_;
  FilterPanel& panel_;
};

}  // namespace ts5
