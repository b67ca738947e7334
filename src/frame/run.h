// A run as its filter sees it: the job (a copy of its own), the items, the way out to the user, the cancel
// request and the list of outcomes. The filter fills Result() and returns; whatever happens, the run ends
// with exactly one RunHost::Finished.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/destination.h"
#include "frame/filter_module.h"
#include "frame/job.h"
#include "frame/remarks.h"
#include "frame/run_host.h"
#include "frame/run_result.h"
#include "frame/run_time.h"
#include "frame/settings.h"
#include "platform/base/outcome.h"

namespace ts5 {

class PracticeBook;
class RunJournal;
class RunUndo;

// Progress events closer together than this are left out.
inline constexpr std::chrono::milliseconds kProgressInterval{50};

// Devices by name, for runs that sound, record or use discs; "" leaves the choice to the job's parameters.
struct RunDevices {
  std::string output = {};
  std::string input = {};
  std::string recorder = {};  // the disc drive that writes, by name or path
  std::string source = {};    // the one that is read
};

// Which of the items a run takes, where several machines share them: of every `parts` items the one with the
// number `part`, from 1.
struct RunShare {
  std::uint32_t part = 1;
  std::uint32_t parts = 1;

  [[nodiscard]] constexpr bool Takes(std::uint64_t item) const { return item % parts == part - 1; }
};

struct RunSetup {
  Job job;  // the run's own copy
  Settings settings = {};
  RunDevices devices = {};
  DestinationRules destination = {};
  DestinationFiles files = SystemDestinationFiles();
  std::size_t number = 0;  // of the job among all; 0: the default job
  RunShare share =
      {};  // of what the run itself finds, as a search of a tree; the items of the job are its own
  std::string journals = {};                     // where runs keep their journals; "" for none
  std::shared_ptr<RunJournal> goesOn = {};       // the interrupted run that this one goes on with
  std::shared_ptr<RunUndo> undo = {};            // notes what the run makes and replaces; may be empty
  std::shared_ptr<PracticeBook> practices = {};  // how files were practised; nullptr: titles play plainly
};

class Run {
 public:
  // state: the run fields of the job that was copied into setup.
  Run(RunSetup setup, const FilterModule& module, std::shared_ptr<JobRun> state,
      std::shared_ptr<RunHost> host);

  [[nodiscard]] const Job& GetJob() const { return setup_.job; }
  [[nodiscard]] std::size_t JobNumber() const { return setup_.number; }
  [[nodiscard]] const FilterModule& Module() const { return *module_; }
  [[nodiscard]] const Settings& GetSettings() const { return setup_.settings; }
  [[nodiscard]] const DestinationRules& Destination() const { return setup_.destination; }
  [[nodiscard]] const DestinationFiles& Files() const { return setup_.files; }
  [[nodiscard]] const RunDevices& Devices() const { return setup_.devices; }
  [[nodiscard]] const RunShare& Share() const { return setup_.share; }
  [[nodiscard]] const std::string& Journals() const { return setup_.journals; }
  [[nodiscard]] const std::shared_ptr<RunJournal>& GoesOn() const { return setup_.goesOn; }
  [[nodiscard]] const std::shared_ptr<PracticeBook>& Practices() const { return setup_.practices; }
  [[nodiscard]] PlayerControl& Player() const { return state_->player; }
  // For the undoing of the run: a file is about to be replaced, was made, was changed once more.
  [[nodiscard]] Outcome KeepReplaced(const std::string& target);
  void Made(const std::string& target, std::size_t newDirectories = 0);
  void Changed(const std::string& target);

  [[nodiscard]] std::size_t ItemCount() const { return ts5::ItemCount(setup_.job); }
  [[nodiscard]] std::string Source(std::size_t index) const { return ItemSource(setup_.job, index); }

  // May be called from any thread of the run, and often.
  [[nodiscard]] bool Cancelled() const { return state_->Cancelled(); }
  // It is the end of the program that ends it, not the user's Stop.
  [[nodiscard]] bool Closing() const { return state_->closing.load(); }
  [[nodiscard]] std::int32_t CancelRequest() const { return state_->cancelRequest.load(); }
  // Sleeps; false as soon as the run is cancelled.
  [[nodiscard]] bool Sleep(std::chrono::milliseconds duration) const;
  void SetState(RunState state);
  [[nodiscard]] RunState State() const { return state_->state.load(); }

  // From any thread of the run. item counts from 1.
  void Progress(std::uint32_t item, std::uint32_t items, double fraction = 0);
  // The same for runs that know more: how much of the whole is done, what is in the buffer of a recording.
  // The times are filled in.
  void Progress(const RunProgress& progress);
  void TaskText(std::string_view text);
  void StatusText(std::string_view text);
  void ProtocolLine(std::string_view line);
  void Notice(std::string_view text, MessageIcon icon = MessageIcon::Exclamation);
  Outcome Hit(const SearchHit& hit);

  // Blocks until the user answered. Cancelled when the run is stopped meanwhile or there is no window any
  // more.
  [[nodiscard]] Answer Ask(QuestionText question);
  // For filters that ask before they obey a stop: takes the request back and asks; true when the run is to
  // end (the request is set again then), false when it goes on. Without a request it is false at once.
  [[nodiscard]] bool ConfirmStop(std::string_view question);

  // Adds an outcome to the status list unless its kind is there already.
  void AddStatus(const RunStatus& status);
  void AddCode(Outcome outcome, std::int32_t number = 0) { AddStatus({Code(outcome), false, number}); }

  // The remark lines of the status list, by the filter's table.
  [[nodiscard]] std::vector<std::string> Remarks() const;
  // Its titles are those of the filter from the start.
  [[nodiscard]] RunResult& Result() { return result_; }

  // The end: the last progress event, the job idle, the result out. Called once by whoever made the run.
  void Finish();

 private:
  // Both under hostMutex_.
  void SendProgress();
  void MeasureSources();
  [[nodiscard]] std::string RemarkOf(const RunItem& item) const;

  RunSetup setup_;
  const FilterModule* module_;
  std::shared_ptr<JobRun> state_;
  std::shared_ptr<RunHost> host_;
  std::vector<RunStatus> statusList_;
  RunResult result_;

  std::mutex hostMutex_;  // guards the host and what follows
  RunProgress lastProgress_;
  bool progressPending_ = false;
  bool progressSent_ = false;
  bool measured_ = false;
  RunTime time_{std::chrono::steady_clock::now()};
  std::chrono::steady_clock::time_point lastSent_;
};

}  // namespace ts5
