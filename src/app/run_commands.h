// Running and stopping the jobs, and what the runs report: progress into the panel of their job, questions
// and results as dialogs over the window.
#pragma once

#include <QObject>
#include <map>
#include <memory>

#include "app/desktop_run_host.h"

class QDialog;

namespace ts5 {

class MainWindow;
struct Job;
struct JobRun;

class RunCommands : public QObject {
 public:
  explicit RunCommands(MainWindow& window);

  // The window goes: no run is listened to any more, open questions are answered with Cancelled.
  void Close();

 private:
  void Start();
  void Stop();
  void Take(const std::shared_ptr<JobRun>& run, RunNews news);
  void Finish(Job* job, const RunResult& result);
  void Ask(const std::shared_ptr<Question>& question);
  [[nodiscard]] QDialog* QuestionDialog(const std::shared_ptr<Question>& question);
  [[nodiscard]] Job* Find(const JobRun* run) const;

  MainWindow& window_;
  std::map<const JobRun*, std::shared_ptr<DesktopRunHost>> hosts_;
};

}  // namespace ts5
