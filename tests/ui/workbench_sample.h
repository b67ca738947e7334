// A workbench with the demo files, for pictures and measurements.
#pragma once

#include <QTemporaryDir>
#include <memory>

#include "app/shell/main_window.h"

namespace ts5 {

class SampleWorkbench {
 public:
  // demo: the directory with the demo files. list: shows them as a free file list.
  SampleWorkbench(const std::string& demo, SkinLayout layout, bool list);
  ~SampleWorkbench();

  [[nodiscard]] MainWindow& Window() { return *window_; }

 private:
  QTemporaryDir directory_;
  std::unique_ptr<Application> application_;
  std::unique_ptr<MainWindow> window_;
};

}  // namespace ts5
