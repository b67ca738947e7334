// The commands of the filter bar: choosing a filter and its parameters, collapsing tiles, fixing the filter.
#pragma once

#include <QObject>

#include "frame/filter_id.h"

namespace ts5 {

class MainWindow;

class FilterCommands : public QObject {
 public:
  explicit FilterCommands(MainWindow& window);

 private:
  void Choose(FilterId filter);
  void EditParameters();
  void ToggleTile(FilterId filter);
  void Fix(bool fixed);

  MainWindow& window_;
};

}  // namespace ts5
