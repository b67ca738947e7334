// Signals that ask the program to end (SIGTERM, SIGINT, SIGHUP) arrive as a call on the window's thread, so
// that settings and jobs are saved as at any other end.
#pragma once

#include <functional>
#include <memory>

class QSocketNotifier;

namespace ts5 {

// One at a time.
class EndSignals {
 public:
  explicit EndSignals(std::function<void()> end);
  ~EndSignals();
  EndSignals(const EndSignals&) = delete;
  EndSignals& operator=(const EndSignals&) = delete;

 private:
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace ts5
