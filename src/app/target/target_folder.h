// Where the files of several sources go, as the active job has it, and what would happen to what is there.
#pragma once

#include <QObject>
#include <QTimer>
#include <optional>

#include "app/shell/active_job.h"
#include "app/shell/background_worker.h"
#include "app/shell/desk.h"
#include "app/target/target_area.h"
#include "frame/target_naming.h"

namespace ts5 {

class Application;

// "82 neu, 1 ersetzt"
[[nodiscard]] QString ForecastText(const TargetForecast& forecast);

class TargetFolder : public QObject {
 public:
  TargetFolder(Desk& desk, ActiveJob& active, TargetArea& area, Application& application);

 private:
  void Show();
  void Choose();
  void Forecast();
  // Whether the job makes a file of each of several sources.
  [[nodiscard]] bool Applies() const;

  Desk& desk_;
  ActiveJob& active_;
  TargetArea& area_;
  Application& application_;
  QTimer timer_;  // until the selection rests
  BackgroundWorker worker_;
  std::size_t foretold_ = 0;  // so many items the forecast on show is about
};

}  // namespace ts5
