#include "frame/job_runner.h"

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/remarks.h"
#include "frame/target_naming.h"
#include "frame/texts.h"
#include "platform/base/detached_task.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

// The whole life of a worker. Whatever it uses, it holds itself.
void Work(const std::shared_ptr<Run>& run) {
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
}

std::optional<TextId> MissingSources(const Job& job, const FilterModule& module) {
  const FilterDescriptor& filter = Descriptor(job.filter);
  if (filter.Has(kNeedsNoSources) || filter.Has(kTakesDisc) || ItemCount(job) > 0) return std::nullopt;
  if (job.Mode() == SourceMode::List) return texts::NoFilesInList;
  // Searches walk the directory, a disc is taken whole.
  if (module.target && !filter.Has(kTracksOnly)) return texts::NoFilesSelected;
  return std::nullopt;
}

}  // namespace

struct JobRunner::Worker {
  const FilterModule* module;
  std::shared_ptr<JobRun> state;
  std::optional<std::int32_t> midiDevice;
  std::optional<DetachedTask> task;  // of a worker that was started
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
  if (!problem) problem = SettleDestination(job, *module, request.destination, request.files);
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
  if (Has(job.filter, kWritesDisc) && AnyRunning() &&
      !dialogs.Confirm(Text(texts::AskStartBurning), MessageIcon::Exclamation, Answer::No)) {
    return false;
  }

  if (request.begin) request.begin();
  JobRun& state = *worker->state;
  auto run = std::make_shared<Run>(RunSetup{.job = job,
                                            .settings = std::move(request.settings),
                                            .devices = std::move(request.devices),
                                            .destination = std::move(request.destination),
                                            .files = std::move(request.files),
                                            .number = request.number,
                                            .share = request.share,
                                            .journals = std::move(request.journals),
                                            .goesOn = std::move(request.goesOn),
                                            .undo = std::move(request.undo),
                                            .practices = std::move(request.practices)},
                                   *module, worker->state, std::move(host));
  state.cancelRequest = kNoCancel;
  state.currentItem = 0;
  state.state = RunState::Running;
  worker->task = DetachedTask::Start([run = std::move(run)] { Work(run); });
  if (!worker->task) {
    state.state = RunState::Idle;
    dialogs.Tell(Text(texts::RunNotStarted), MessageIcon::Exclamation);
    return false;
  }
  workers_.push_back(std::move(worker));
  return true;
}

// A conversion through a MIDI device needs the device for itself.
bool JobRunner::HoldsDevice(const Worker& starting) const {
  if (starting.module->sharesMidiDevice || !starting.midiDevice) return false;
  return std::ranges::any_of(workers_, [&](const auto& other) {
    return !other->task->HasEnded() && other->midiDevice == starting.midiDevice;
  });
}

JobRunner::Worker* JobRunner::FindWorker(const Job& job) const {
  const auto found = std::ranges::find_if(workers_, [&](const auto& worker) {
    return worker->state == job.run.Shared() && !worker->task->HasEnded();
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
  return std::ranges::any_of(workers_, [](const auto& worker) { return !worker->task->HasEnded(); });
}

void JobRunner::Wait(const Job& job) {
  const auto found =
      std::ranges::find_if(workers_, [&](const auto& worker) { return worker->state == job.run.Shared(); });
  if (found == workers_.end()) return;
  (*found)->task->Wait();
  workers_.erase(found);
}

void JobRunner::Reap() {
  std::erase_if(workers_, [](const auto& worker) { return worker->task->HasEnded(); });
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
    if (!worker->task->WaitUntil(end)) all = false;
  }
  workers_.clear();
  return all;
}

}  // namespace ts5
