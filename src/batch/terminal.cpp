#include "batch/terminal.h"

#include <poll.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <iostream>

namespace ts5::batch {
namespace {

std::atomic<int> interrupts = 0;
static_assert(std::atomic<int>::is_always_lock_free, "set in a signal handler");

void CountInterrupt(int /*signal*/) {
  interrupts.fetch_add(1);
}

// One line of standard input, which may be left at any moment with Ctrl+C.
std::optional<std::string> ReadLine() {
  std::string line;
  while (!Interrupted()) {
    pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
    const int ready = poll(&input, 1, 100);
    if (ready < 0 && errno != EINTR) return std::nullopt;
    if (ready <= 0) continue;
    char character = 0;
    const ssize_t count = read(STDIN_FILENO, &character, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return std::nullopt;
    if (character == '\n') return line;
    line.push_back(character);
  }
  return std::nullopt;
}

std::size_t TerminalWidth() {
  winsize size{};
  if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

}  // namespace

void CatchInterrupts() {
  struct sigaction action {};
  action.sa_handler = CountInterrupt;
  sigemptyset(&action.sa_mask);
  for (const int signal : std::array{SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction before {};
    // What the caller had us ignore (nohup) stays ignored.
    if (sigaction(signal, nullptr, &before) == 0 && before.sa_handler == SIG_IGN) continue;
    sigaction(signal, &action, nullptr);
  }
}

bool Interrupted() {
  return interrupts.load() > 0;
}

Console TerminalConsole() {
  Console console{.out = std::cout, .err = std::cerr, .readLine = {}, .interrupted = Interrupted};
  const bool watched = isatty(STDERR_FILENO) == 1;
  console.terminal = watched;
  if (watched) console.width = TerminalWidth();
  if (watched && isatty(STDIN_FILENO) == 1) console.readLine = ReadLine;
  return console;
}

}  // namespace ts5::batch
