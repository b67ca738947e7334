// Starts and stops the runs of jobs: one worker thread per running job, several jobs at once. Used from the
// thread that owns the jobs only.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_module.h"
#include "frame/job.h"
#include "frame/job_dialogs.h"
#include "frame/run.h"
#include "frame/run_host.h"

namespace ts5 {

struct RunRequest {
  Settings settings = {};
  RunDevices devices = {};
  DestinationRules destination = {};
  DestinationFiles files = SystemDestinationFiles();
  std::size_t number = 0;  // of the job among all; 0: the default job
  RunShare share = {};
  std::string journals = {};                     // where runs keep their journals; "" for none
  std::shared_ptr<RunJournal> goesOn = {};       // the interrupted run that this one goes on with
  std::shared_ptr<RunUndo> undo = {};            // notes what the run makes and replaces; may be empty
  std::shared_ptr<PracticeBook> practices = {};  // how files were practised; nullptr: titles play plainly
  std::function<void()> begin =
      {};  // called when nothing keeps the run from starting any more, before it does
};

class JobRunner {
 public:
  explicit JobRunner(ModuleFinder modules);
  // Stops what still runs and waits for it; see Shutdown.
  ~JobRunner();
  JobRunner(const JobRunner&) = delete;
  JobRunner& operator=(const JobRunner&) = delete;

  // Checks the sources, the destination (SettleDestination: a name that the user may edit must be there, as
  // OfferTarget gives it), devices and discs that other runs hold, and starts the
  // worker on a copy of the job. False when it did not start; the user has been told why then, and the host
  // has not been called.
  [[nodiscard]] bool Start(Job& job, RunRequest request, std::shared_ptr<RunHost> host, JobDialogs& dialogs);

  // Asks the run of the job to end. What to show until it does, if anything. A second stop changes nothing.
  std::optional<TextId> Stop(const Job& job);

  [[nodiscard]] bool AnyRunning() const;
  // Waits until the job's run has ended and its thread is gone.
  void Wait(const Job& job);

  // Stops all runs for good: open questions are answered with Cancelled. True when all have ended within the
  // time; otherwise those left own all that they use, and the program may save and leave without them.
  bool Shutdown(std::chrono::milliseconds patience = std::chrono::seconds(5));

 private:
  struct Worker;
  [[nodiscard]] Worker* FindWorker(const Job& job) const;
  [[nodiscard]] bool HoldsDevice(const Worker& starting) const;
  void Reap();

  ModuleFinder modules_;
  bool closed_ = false;
  std::vector<std::unique_ptr<Worker>> workers_;
};

}  // namespace ts5
