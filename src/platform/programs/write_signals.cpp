#include "platform/programs/write_signals.h"

#include <array>
#include <csignal>

namespace ts5 {
namespace {

void DoNothing(int /*signal*/) {}

}  // namespace

void TurnWriteSignalsIntoErrors() {
  for (const int signal : std::array{SIGXFSZ, SIGPIPE}) {
    struct sigaction action {};
    // A handler, not SIG_IGN, which the programs started from here would inherit.
    action.sa_handler = DoNothing;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    struct sigaction before {};
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
}

}  // namespace ts5
