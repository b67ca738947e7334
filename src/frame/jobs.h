// The jobs of the program: the default job and the saved ones, which of them is active, and what may be done
// with them. Used from the thread that owns the jobs only.
#pragma once

#include <cstddef>
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
#include "platform/outcome.h"

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

  // Gives the job another filter with the values stored for it. Asks when the free file list would be lost
  // (switch to or from the burner). False when the job keeps the filter it had.
  bool SwitchFilter(Job& job, FilterId filter, JobDialogs& dialogs);

  [[nodiscard]] std::vector<const Job*> Saved() const;
  [[nodiscard]] const ModuleFinder& Modules() const { return modules_; }

 private:
  void TakeSnapshot();
  void Commit(JobWindow& window);
  void Leave(JobSaving policy, JobWindow& window);

  ModuleFinder modules_;
  Job default_;
  std::vector<std::unique_ptr<Job>> saved_;  // references stay good while jobs come and go
  std::size_t active_ = 0;
  std::optional<Job> snapshot_;  // the active saved job as it was when it became active
};

}  // namespace ts5
