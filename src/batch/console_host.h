// The surroundings of a run on the console: what the worker says is queued and printed by the main thread.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "batch/console.h"
#include "batch/console_question.h"
#include "batch/output_options.h"
#include "batch/progress_line.h"
#include "frame/job_dialogs.h"
#include "frame/run.h"
#include "frame/run_host.h"
#include "platform/base/strings.h"
#include "search/search_record.h"
#include "search/search_results.h"

namespace ts5::batch {

class ConsoleHost final : public RunHost {
 public:
  // kind: of the search whose hits will come.
  ConsoleHost(Console& console, OutputOptions options, SearchKind kind = SearchKind::Midi);

  // On the main thread: prints what comes until the run has ended. stop is called once, when Ctrl+C is
  // pressed; its text, if any, is shown from then on.
  void PrintUntilFinished(const std::function<std::optional<TextId>()>& stop);

  // After the end.
  [[nodiscard]] const RunResult& Result() const { return result_; }
  // Kept only for JSON.
  [[nodiscard]] const SearchResults& Hits() const { return hits_; }

  void Progress(const RunProgress& progress) override;
  void TaskText(std::string_view text) override;
  void StatusText(std::string_view text) override;
  void ProtocolLine(std::string_view line) override;
  Outcome Hit(const SearchHit& hit) override;
  void Ask(std::shared_ptr<Question> question) override;
  void Notice(std::string_view text, MessageIcon icon) override;
  void StateChanged(RunState state) override;
  void Finished(const RunResult& result) override;

 private:
  using Action = std::function<void()>;
  void Queue(Action action);
  // The same for what comes without end: waits while much is still to be printed, so that a slow reader of
  // the output slows the run and does not fill the memory.
  void QueueWhenRoom(Action action);
  void ShowProgress();
  [[nodiscard]] bool Talks() const { return !options_.json && !options_.quiet; }

  Console& console_;
  OutputOptions options_;

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::condition_variable room_;
  std::deque<Action> actions_;  // guarded by mutex_

  // Used by the main thread only.
  ProgressLine line_;
  RunProgress progress_;
  std::string task_;
  std::string status_;
  bool stopping_ = false;
  bool finished_ = false;
  RunResult result_;

  SearchResults hits_;  // filled by the worker, read after the end
  SearchKind kind_;
};

// The same for what is asked before a run starts.
class ConsoleDialogs final : public JobDialogs {
 public:
  explicit ConsoleDialogs(Console& console, OutputOptions options) : console_(console), options_(options) {}
  [[nodiscard]] bool Confirm(std::string_view question, MessageIcon icon, Answer preset) override;
  void Tell(std::string_view text, MessageIcon icon) override;

 private:
  Console& console_;
  OutputOptions options_;
};

}  // namespace ts5::batch
