#include "app/shell/end_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <array>
#include <csignal>

namespace ts5 {
namespace {

constexpr std::array kSignals{SIGTERM, SIGINT, SIGHUP};

std::array<int, 2> pipeEnds{-1, -1};

void Notice(int /*signal*/) {
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = write(pipeEnds[1], &byte, 1);
}

}  // namespace

EndSignals::EndSignals(std::function<void()> end) {
  if (pipe2(pipeEnds.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;  // the signals then do what they always do
  notifier_ = std::make_unique<QSocketNotifier>(pipeEnds[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                   [this, end = std::move(end)] {
                     notifier_->setEnabled(false);
                     end();
                   });
  for (const int signal : kSignals) std::signal(signal, &Notice);
}

EndSignals::~EndSignals() {
  if (notifier_ == nullptr) return;
  for (const int signal : kSignals) std::signal(signal, SIG_DFL);
  notifier_.reset();
  for (const int end : pipeEnds) close(end);
}

}  // namespace ts5
