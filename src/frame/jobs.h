// The jobs of the program: the default job and the saved ones, which of them is active, and what may be done
// with them. Used from the thread that owns the jobs only.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/filter_module.h"
#include "frame/job.h"
#include "frame/job_dialogs.h"
#include "frame/job_store.h"
#include "frame/settings.h"
#include "platform/base/outcome.h"

namespace ts5 {

// What the destination panel of the main window holds.
struct DestinationPanel {
  std::string name;     // text of the destination field
  bool screen = false;  // the radio button
  // Selected rows of the device lists, -1 none.
  std::int32_t midiDevice = -1;
  std::int32_t audioDevice = -1;
  std::int32_t drive = -1;
  std::int32_t printer = -1;
};
// Takes the panel into the job, as the panels of the job's filter say.
void CommitDestination(Job& job, const DestinationPanel& panel);

// What the jobs need from the window that shows them.
class JobWindow : public JobDialogs {
 public:
  // The destination panel of the active job; nothing when it cannot be read.
  [[nodiscard]] virtual std::optional<DestinationPanel> Panel() = 0;
  // Shows the job: its filter, lists, panels, filter bar. False when that fails.
  [[nodiscard]] virtual bool Show(Job& job) = 0;
};

struct JobTitle {
  std::string title;
  std::string description;
};

class Jobs {
 public:
  Jobs(StoredJobs stored, ModuleFinder modules);

  // Number 0 is the default job, 1 to Count() are the saved ones.
  [[nodiscard]] std::size_t Count() const { return saved_.size(); }
  [[nodiscard]] Job& operator[](std::size_t number);
  [[nodiscard]] const Job& operator[](std::size_t number) const;
  [[nodiscard]] std::size_t ActiveNumber() const { return active_; }
  [[nodiscard]] Job& Active() { return (*this)[active_]; }
  // Any job in a state other than idle.
  [[nodiscard]] bool AnyRunning() const;

  // Makes job number active. What was edited in the job that is left is kept, undone or asked about as the
  // policy says; a running job stays as it is. False when the job could not be shown (said so) or there is
  // none.
  bool Activate(std::size_t number, JobSaving policy, JobWindow& window);
  // The active job at the end of the program.
  void CommitAtEnd(JobSaving policy, JobWindow& window);

  // What the dialog of a new job shows, and whether there may be one now.
  [[nodiscard]] bool MayCreate() const;
  [[nodiscard]] JobTitle NewTitle() const;
  // A saved job with the configuration of the default job; its number. Nothing when there may be none.
  std::optional<std::size_t> Create(const JobTitle& title);
  void Rename(std::size_t number, const JobTitle& title);

  [[nodiscard]] bool MayRemove(std::size_t number) const;
  // Asks; false when the answer is No or the job may not be removed. When the active job goes, the default
  // job becomes active.
  bool Remove(std::size_t number, JobWindow& window);
  // The job that was removed last, back in its place; its number. Nothing when there is none or no room.
  [[nodiscard]] bool MayRestore() const { return removed_ != nullptr && saved_.size() < kMaxJobs; }
  std::optional<std::size_t> Restore();

  // Gives the job another filter with the values stored for it, and the destination that it had when the job
  // left that filter; its name only for the same sources. Asks when the free file list would be lost (switch
  // to or from the burner). False when the job keeps the filter it had.
  bool SwitchFilter(Job& job, FilterId filter, JobDialogs& dialogs);

  // The number of a job by its name; nothing once it has gone.
  [[nodiscard]] std::optional<std::size_t> Find(JobId id) const;

  // Without a question, as when another program did it: a further job, and its number; a saved job that goes
  // and is not the active one.
  std::size_t Append(Job job);
  void Drop(std::size_t number);

  [[nodiscard]] std::vector<const Job*> Saved() const;
  [[nodiscard]] const ModuleFinder& Modules() const { return modules_; }

 private:
  void TakeSnapshot();
  void Commit(JobWindow& window);
  void Leave(JobSaving policy, JobWindow& window);
  void KeepDestination(const Job& job);
  void TakeKeptDestination(Job& job) const;

  ModuleFinder modules_;
  Job default_;
  std::vector<std::unique_ptr<Job>> saved_;  // references stay good while jobs come and go
  std::size_t active_ = 0;
  std::optional<Job> snapshot_;   // the active saved job as it was when it became active
  std::unique_ptr<Job> removed_;  // by the user, last
  std::size_t removedNumber_ = 0;
  // The destination of a job under a filter that it has left.
  struct Destination {
    std::size_t sources = 0;
    std::string source;  // the first one
    std::string name;
    bool screen = false;
    std::int32_t device = 0;
  };
  std::map<std::pair<JobId, FilterId>, Destination> kept_;
};

}  // namespace ts5
