// What the tests of runs share: a small filter of their own, a host that records and answers from a script,
// and dialogs that do the same for the thread that owns the jobs.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "frame/filter_module.h"
#include "frame/item_run.h"
#include "frame/job_dialogs.h"
#include "frame/player_parameters.h"
#include "frame/run.h"
#include "platform/files/files.h"

namespace ts5::test {

// Copies text files. What becomes of one is written in it: "ok", "wrong format", "read error", "flags",
// "slow" (a few milliseconds), "block" (until the run is stopped), "throw".
struct CopyParameters : ClonableParameters<CopyParameters> {
  std::string extension = "out";
  bool formatKept = false;
  std::int32_t device = -1;
};

inline Result<std::string> ReadText(const std::string& path) {
  const auto bytes = ReadFile(path);
  if (!bytes) return Failure(bytes.error());
  return std::string(AsText(*bytes));
}

inline Outcome CheckCopy(const std::string& source) {
  const auto text = ReadText(source);
  if (!text) return text.error();
  return text->starts_with("wrong format") ? Outcome::WrongFormat : Outcome::Success;
}

inline Outcome Copy(ItemWork& work) {
  const auto text = ReadText(work.source);
  if (!text) return text.error();
  work.progress(0.5);
  if (const Outcome written = work.target.Write(AsBytes(*text)); Failed(written)) return written;
  if (text->starts_with("read error")) return Outcome::ReadFailed;
  if (text->starts_with("flags")) return static_cast<Outcome>(0x840000);
  if (text->starts_with("throw")) throw std::bad_alloc();
  if (text->starts_with("slow")) std::this_thread::sleep_for(std::chrono::milliseconds(3));
  while (text->starts_with("block")) {
    if (work.Cancelled()) return Outcome::Cancelled;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  work.progress(1);
  return work.target.Write(AsBytes(" copied"));
}

inline FilterModule CopyModule(FilterId id = FilterId::MidiConverter, unsigned workers = 1) {
  FilterModule module;
  module.id = id;
  module.create = [] { return std::make_unique<CopyParameters>(); };
  module.fields = FieldTable<CopyParameters>()
                      .Text("Extension", &CopyParameters::extension, 10)
                      .Flag("Kept", &CopyParameters::formatKept)
                      .Integer("Device", &CopyParameters::device, -1, 99)
                      .Build();
  module.target = [](const FilterParameters& parameters, const std::string&) {
    const auto& copy = static_cast<const CopyParameters&>(parameters);
    return TargetRule{.extension = copy.extension, .formatKept = copy.formatKept};
  };
  module.run = [workers](Run& run) {
    RunItems(run, {.independent = workers > 1, .check = CheckCopy, .convert = Copy, .workers = workers});
  };
  return module;
}

// Answers in order; when the script is at its end, questions stay open.
class RecordingHost : public RunHost {
 public:
  explicit RecordingHost(std::deque<Answer> script = {}) : script_(std::move(script)) {}

  void Progress(const RunProgress& event) override {
    const std::lock_guard lock(mutex_);
    progress.push_back(event);
    changed_.notify_all();
  }
  void TaskText(std::string_view) override {}
  void StatusText(std::string_view text) override {
    const std::lock_guard lock(mutex_);
    status.emplace_back(text);
  }
  void ProtocolLine(std::string_view line) override {
    const std::lock_guard lock(mutex_);
    lines.emplace_back(line);
  }
  Outcome Hit(const SearchHit&) override { return Outcome::Success; }
  void Ask(std::shared_ptr<Question> question) override {
    std::optional<Answer> answer;
    {
      const std::lock_guard lock(mutex_);
      questions.push_back(question->Text().text);
      if (!script_.empty()) {
        answer = script_.front();
        script_.pop_front();
      } else if (!dropQuestions) {
        open.push_back(question);
      }
    }
    changed_.notify_all();
    if (answer) question->Reply(*answer);
  }
  void Notice(std::string_view text, MessageIcon) override {
    const std::lock_guard lock(mutex_);
    notices.emplace_back(text);
  }
  void StateChanged(RunState state) override {
    const std::lock_guard lock(mutex_);
    states.push_back(state);
  }
  void Finished(const RunResult& result) override {
    {
      const std::lock_guard lock(mutex_);
      results.push_back(result);
    }
    changed_.notify_all();
  }

  // False when it does not come about within ten seconds.
  template <typename Condition>
  bool WaitFor(Condition condition) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(10), condition);
  }
  bool WaitForResult() {
    return WaitFor([this] { return !results.empty(); });
  }
  bool WaitForQuestion() {
    return WaitFor([this] { return !questions.empty(); });
  }

  bool dropQuestions = false;
  std::vector<RunProgress> progress;
  std::vector<std::string> status;
  std::vector<std::string> lines;
  std::vector<std::string> notices;
  std::vector<std::string> questions;
  std::vector<std::shared_ptr<Question>> open;
  std::vector<RunState> states;
  std::vector<RunResult> results;

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Answer> script_;
};

class ScriptedDialogs : public JobDialogs {
 public:
  explicit ScriptedDialogs(std::deque<bool> answers = {}) : answers_(std::move(answers)) {}
  bool Confirm(std::string_view question, MessageIcon, Answer) override {
    asked.emplace_back(question);
    if (answers_.empty()) return false;
    const bool answer = answers_.front();
    answers_.pop_front();
    return answer;
  }
  void Tell(std::string_view text, MessageIcon) override { told.emplace_back(text); }

  std::vector<std::string> asked;
  std::vector<std::string> told;

 private:
  std::deque<bool> answers_;
};

inline void KeepFormat(Job& job, bool kept) {
  As<CopyParameters>(*job.parameters).formatKept = kept;
}

inline std::vector<std::int32_t> CodesOf(const RunResult& result) {
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  return codes;
}

inline Job ListJob(const std::vector<std::string>& files, const FilterModule& module) {
  Job job;
  job.sourceDrive = kListModeDrive;
  job.filter = module.id;
  job.parameters = LoadParameters(&module, {});
  for (const std::string& file : files) job.files.Append({.path = file});
  return job;
}

// One whole run on this thread.
inline RunResult RunJob(const Job& job, const FilterModule& module, const DestinationRules& rules = {},
                        const std::shared_ptr<RecordingHost>& host = std::make_shared<RecordingHost>(),
                        RunSetup setup = {}) {
  setup.job = job;
  setup.destination = rules;
  Run run(std::move(setup), module, job.run.Shared(), host);
  module.run(run);
  run.Finish();
  return host->results.back();
}

// The run of a player over the files on that device; meanwhile steers.
inline RunResult PlayFiles(const FilterModule& module, const std::vector<std::string>& files,
                           const std::string& device, const PlayerParameters& parameters,
                           const std::function<void(PlayerControl&)>& steer,
                           const std::shared_ptr<RecordingHost>& host) {
  Job job = ListJob(files, module);
  job.parameters = ParametersValue(std::make_unique<PlayerParameters>(parameters));
  RunSetup setup;
  setup.devices.output = device;
  std::jthread user;
  if (steer) user = std::jthread([&] { steer(job.run->player); });
  return RunJob(job, module, {}, host, std::move(setup));
}

}  // namespace ts5::test
