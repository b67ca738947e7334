#include "frame/job_runner.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/item_run.h"
#include "frame/remarks.h"
#include "frame/texts.h"
#include "platform/text.h"

namespace ts5 {
namespace {

// Set once when a worker has done its last step.
class Ending {
 public:
  void Set() {
    {
      const std::lock_guard lock(mutex_);
      ended_ = true;
    }
    changed_.notify_all();
  }
  [[nodiscard]] bool IsSet() const {
    const std::lock_guard lock(mutex_);
    return ended_;
  }
  bool WaitUntil(std::chrono::steady_clock::time_point end) {
    std::unique_lock lock(mutex_);
    return changed_.wait_until(lock, end, [this] { return ended_; });
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool ended_ = false;
};

// The whole life of a worker. Whatever it uses, it holds itself.
void Work(const std::shared_ptr<Run>& run, const std::shared_ptr<Ending>& ending) {
  std::optional<Outcome> broken;
  try {
    run->Module().run(*run);
  } catch (const std::bad_alloc&) {
    broken = Outcome::OutOfMemory;
  } catch (const std::exception&) {
    broken = Outcome::LibraryFailed;
  }
  if (broken) {
    run->AddCode(*broken);
    run->Result().remarks = run->Remarks();
  }
  run->Finish();
  ending->Set();
}

bool WritesDisc(FilterId filter) {
  return filter == FilterId::CdBurner || filter == FilterId::CdCopier;
}

std::optional<TextId> MissingSources(const Job& job, const FilterModule& module) {
  const bool needsNone = job.filter == FilterId::Artworker || job.filter == FilterId::CdCopier;
  if (needsNone || ItemCount(job) > 0) return std::nullopt;
  if (job.Mode() == SourceMode::List) return texts::NoFilesInList;
  // Searches walk the directory, a disc is taken whole.
  if (module.target && job.filter != FilterId::CdGrabber) return texts::NoFilesSelected;
  return std::nullopt;
}

// What keeps the run from its destination; a name that is completed goes into the job.
std::optional<TextId> SettleDestination(Job& job, const FilterModule& module, const RunRequest& request) {
  if (!Descriptor(job.filter).Shows(kPanelFile)) return std::nullopt;
  if (IsSearch(job.filter) && job.destinationIsScreen) return std::nullopt;
  const DestinationRules& rules = request.destination;
  if (rules.chosenName || DestinationModeOf(job, rules.noPreset).editable) {
    const DestinationCheck check =
        CheckDestination(job.destinationName, rules, ItemSource(job, 0), request.files);
    if (!check.message) job.destinationName = check.name;
    return check.message;
  }
  if (!rules.sourceDirectory && !rules.directory.empty() && !request.files.isDirectory(rules.directory)) {
    return texts::InvalidTargetDirectory;
  }
  if (IsSearch(job.filter)) job.destinationName = AutomaticDestination(job, module, rules, request.files);
  return std::nullopt;
}

}  // namespace

struct JobRunner::Worker {
  const FilterModule* module;
  std::shared_ptr<JobRun> state;
  std::optional<std::int32_t> midiDevice;
  std::shared_ptr<Ending> ending = std::make_shared<Ending>();
  std::jthread thread;
};

JobRunner::JobRunner(ModuleFinder modules) : modules_(std::move(modules)) {}

JobRunner::~JobRunner() {
  (void)Shutdown();
}

bool JobRunner::Start(Job& job, RunRequest request, std::shared_ptr<RunHost> host, JobDialogs& dialogs) {
  Reap();
  if (closed_ || !job.MayChange() || FindWorker(job) != nullptr) return false;
  const FilterModule* const module = modules_(job.filter);
  if (module == nullptr || !module->run || !job.parameters) {
    const std::string_view name =
        IsFilter(job.filter) ? Descriptor(job.filter).Name() : std::string_view("-");
    dialogs.Tell(Format(Text(texts::FilterMissing), name), MessageIcon::Exclamation);
    return false;
  }
  std::optional<TextId> problem = MissingSources(job, *module);
  if (!problem && module->missing) problem = module->missing(job);
  if (!problem) problem = SettleDestination(job, *module, request);
  if (problem) {
    dialogs.Tell(Text(*problem), MessageIcon::Information);
    return false;
  }

  auto worker = std::make_unique<Worker>();
  worker->module = module;
  worker->state = job.run.Shared();
  if (module->midiDevice) worker->midiDevice = module->midiDevice(job);
  if (HoldsDevice(*worker)) {
    dialogs.Tell(Text(texts::MidiDeviceInUse), MessageIcon::Exclamation);
    return false;
  }
  if (WritesDisc(job.filter) && AnyRunning() &&
      !dialogs.Confirm(Text(texts::AskStartBurning), MessageIcon::Exclamation, Answer::No)) {
    return false;
  }

  if (request.begin) request.begin();
  JobRun& state = *worker->state;
  auto run = std::make_shared<Run>(RunSetup{.job = job,
                                            .settings = std::move(request.settings),
                                            .devices = std::move(request.devices),
                                            .destination = std::move(request.destination),
                                            .files = std::move(request.files)},
                                   *module, worker->state, std::move(host));
  state.cancelRequest = kNoCancel;
  state.currentItem = 0;
  state.state = RunState::Running;
  try {
    worker->thread = std::jthread([run, ending = worker->ending] { Work(run, ending); });
  } catch (const std::system_error&) {
    state.state = RunState::Idle;
    dialogs.Tell(Text(texts::RunNotStarted), MessageIcon::Exclamation);
    return false;
  }
  workers_.push_back(std::move(worker));
  return true;
}

// A conversion through a MIDI device needs the device for itself.
bool JobRunner::HoldsDevice(const Worker& starting) const {
  if (starting.module->id != FilterId::MidiToWave || !starting.midiDevice) return false;
  return std::ranges::any_of(workers_, [&](const auto& other) {
    return !other->ending->IsSet() && other->midiDevice == starting.midiDevice;
  });
}

JobRunner::Worker* JobRunner::FindWorker(const Job& job) const {
  const auto found = std::ranges::find_if(workers_, [&](const auto& worker) {
    return worker->state == job.run.Shared() && !worker->ending->IsSet();
  });
  return found == workers_.end() ? nullptr : found->get();
}

std::optional<TextId> JobRunner::Stop(const Job& job) {
  const Worker* const worker = FindWorker(job);
  if (worker == nullptr) return std::nullopt;
  const StopRule& rule = worker->module->stop;
  std::int32_t none = kNoCancel;
  worker->state->cancelRequest.compare_exchange_strong(
      none, rule.request ? rule.request(worker->state->state) : kUserStop);
  return rule.status;
}

bool JobRunner::AnyRunning() const {
  return std::ranges::any_of(workers_, [](const auto& worker) { return !worker->ending->IsSet(); });
}

void JobRunner::Wait(const Job& job) {
  const auto found =
      std::ranges::find_if(workers_, [&](const auto& worker) { return worker->state == job.run.Shared(); });
  if (found != workers_.end()) workers_.erase(found);  // a jthread that goes is joined
}

void JobRunner::Reap() {
  std::erase_if(workers_, [](const auto& worker) { return worker->ending->IsSet(); });
}

bool JobRunner::Shutdown(std::chrono::milliseconds patience) {
  closed_ = true;
  for (const auto& worker : workers_) {
    worker->state->closing = true;
    std::int32_t none = kNoCancel;
    worker->state->cancelRequest.compare_exchange_strong(none, kUserStop);
  }
  const auto end = std::chrono::steady_clock::now() + patience;
  bool all = true;
  for (const auto& worker : workers_) {
    if (worker->ending->WaitUntil(end)) continue;
    all = false;
    worker->thread.detach();
  }
  workers_.clear();
  return all;
}

}  // namespace ts5
