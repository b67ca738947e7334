// Running and stopping the jobs, and what the runs report: progress into the panel of their job, questions
// and results as dialogs over the window.
#pragma once

#include <QObject>
#include <QTimer>
#include <atomic>
#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/run/desktop_run_host.h"
#include "app/run/end_notice.h"
#include "app/run/run_panels.h"
#include "app/shell/active_job.h"
#include "app/shell/background_worker.h"
#include "app/shell/desk.h"
#include "app/source/source_area.h"
#include "frame/destination.h"
#include "frame/job.h"
#include "frame/job_runner.h"
#include "frame/run_undo.h"

namespace ts5 {

class Application;
class ResultsDialog;

class RunCommands : public QObject {
  Q_OBJECT

 public:
  RunCommands(Desk& desk, ActiveJob& active, const SourceArea& source, RunPanels& panels,
              Application& application);

  // The window goes: no run is listened to any more, open questions are answered with Cancelled.
  void Close();
  // Goes on with a run that was interrupted, as one of the job that it was of, or of the default job when
  // that has gone.
  void GoOn(const std::shared_ptr<RunJournal>& run);

 signals:
  // A job runs now, does so no longer, or has come on.
  void Progressed();
  // The active job was not run, for a reason that has been told.
  void Refused();
  // The line of the active search; "" at its end.
  void ProtocolLine(const QString& line);
  // The run of the active job has made files beside its sources.
  void DirectoryChanged();
  // A file of the results is to be shown; its job is the active one now.
  void FileChosen(const std::string& path);
  // The user wants to see the window, after it was said that a run has ended.
  void NoticeChosen();

 private:
  void Start();
  // The job with only the files that are shown, where it would search a directory that is narrowed down.
  [[nodiscard]] std::optional<Job> Narrowed(const Job& job) const;
  // Runs what work says as the run of the job, which may be work itself.
  void Begin(Job& job, Job& work, NameOrigin origin);
  void Launch(Job& job, Job& work, RunRequest request);
  [[nodiscard]] RunRequest Request(Job& job, const Job& work, NameOrigin origin);
  // Once more with only these sources.
  void Repeat(JobId id, const Job& work, const std::vector<std::string>& sources);
  void Stop();
  // Takes back what the last run of a job did, away from the window's thread, and says what came of it.
  void Undo(JobId id);
  [[nodiscard]] bool MayUndo(JobId id) const;
  // What sessions before this one have kept goes to its jobs; where there is none, or it has run, it goes.
  void TakeKept(const std::vector<std::shared_ptr<RunUndo>>& kept);
  // The way back of a job's run is there after the next start, too.
  void KeepUndo(JobId id);
  [[nodiscard]] std::optional<UndoOwner> OwnerOf(JobId id) const;
  void ForgetUndo(JobId id);
  void Take(JobId id, RunNews news);
  void ShowNews(Job& job, RunNews& news);
  void Finish(JobId id, RunResult result);
  void NotifyOfEnd(const Job& job, const RunResult& result, std::chrono::steady_clock::time_point begun);
  [[nodiscard]] ResultsDialog* MakeResultsDialog(RunResult result, JobId id,
                                                 const std::shared_ptr<const Job>& work);
  // The job while it is there.
  [[nodiscard]] Job* Find(JobId id) const;

  Desk& desk_;
  ActiveJob& active_;
  const SourceArea& source_;
  RunPanels& panels_;
  Application& application_;
  // A run that has not ended, and what it was told to do.
  struct Going {
    std::shared_ptr<DesktopRunHost> host;
    std::shared_ptr<const Job> work;
    std::chrono::steady_clock::time_point begun = std::chrono::steady_clock::now();
  };
  std::map<JobId, Going> going_;
  std::map<JobId, std::shared_ptr<RunUndo>> undo_;  // of the last run of each job
  std::set<JobId> noting_;                          // of which it is just being noted down
  std::set<JobId> undoing_;
  std::shared_ptr<std::atomic<bool>> stopUndoing_ = std::make_shared<std::atomic<bool>>(false);
  DesktopNotices notices_;
  BackgroundWorker worker_;
  QTimer clock_;  // shows the time that goes by
};

}  // namespace ts5
