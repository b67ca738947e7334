// The surroundings of a run on the desktop. What comes from the worker's thread is collected here and handed
// to the window's thread in batches, so that neither waits for the other and a busy run cannot flood the
// window.
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "frame/run_host.h"

namespace ts5 {

// What came since the last batch, in the order in which a window takes it.
struct RunNews {
  std::optional<RunState> state;
  std::optional<RunProgress> progress;
  std::optional<std::string> task;
  std::optional<std::string> status;
  std::vector<std::string> lines;
  std::vector<SearchHit> hits;
  std::vector<std::pair<std::string, MessageIcon>> notices;
  std::vector<std::shared_ptr<Question>> questions;
  std::optional<RunResult> result;
};

class DesktopRunHost : public RunHost {
 public:
  // deliver is called on the thread of context, never after Close.
  DesktopRunHost(QObject* context, std::function<void(RunNews)> deliver);

  // The window goes: nothing is delivered any more, and every question is answered with Cancelled.
  void Close();
  // The window has no room for more hits: the next one is refused with OutOfMemory.
  void RefuseHits();

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
  struct Mailbox;
  template <typename Put>
  void Post(Put put);

  std::shared_ptr<Mailbox> mailbox_;
};

}  // namespace ts5
