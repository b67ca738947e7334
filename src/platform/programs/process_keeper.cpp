#include "platform/programs/process_keeper.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/programs/pipe.h"

namespace ts5 {
namespace {

constexpr int kLife = 3;
constexpr int kReport = 4;
constexpr int kAside = 16;  // above all places that are given out
constexpr std::int64_t kGraceMs = 2000;

// --- In the keeper. It is a copy of one thread of this program, so nothing here takes memory or a lock.

std::int64_t NowMs() {
  timespec now{};
  ::clock_gettime(CLOCK_MONOTONIC, &now);
  return std::int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
}

int StatusOf(int waited) {
  return WIFEXITED(waited) ? WEXITSTATUS(waited) : 128 + WTERMSIG(waited);
}

void Place(int descriptor, int at, bool kept) {
  ::dup2(descriptor, at);
  if (kept) ::fcntl(at, F_SETFD, FD_CLOEXEC);
}

// The program's streams at 0 to 2, ours behind them, and nothing else.
void ArrangeDescriptors(std::array<int, 3> streams, int life, int report) {
  for (int* const one : {&streams[0], &streams[1], &streams[2], &life, &report}) {
    if (*one >= 0) *one = ::fcntl(*one, F_DUPFD, kAside);
  }
  const int nowhere = ::fcntl(::open("/dev/null", O_RDWR), F_DUPFD, kAside);
  for (int i = 0; i < 3; ++i) {
    const int stream = streams[static_cast<std::size_t>(i)];
    Place(stream >= 0 ? stream : nowhere, i, false);
  }
  Place(life, kLife, true);
  Place(report, kReport, true);
  ::close_range(kReport + 1, ~0U, 0);
}

void ForgetStreams() {
  const int nowhere = ::open("/dev/null", O_RDWR);
  for (int i = 0; i < 3; ++i) ::dup2(nowhere, i);
  ::close_range(kReport, ~0U, 0);
}

// By the fourth word of its line, behind its name in brackets.
bool IsChildOf(pid_t parent, std::string_view line) {
  const std::size_t name = line.rfind(')');
  if (name == std::string_view::npos || line.size() < name + 5) return false;
  pid_t its = 0;
  const char* const at = line.data() + name + 4;  // ") S "
  return std::from_chars(at, line.data() + line.size(), its).ec == std::errc() && its == parent;
}

bool IsOurChild(int processes, std::string_view number) {
  std::array<char, 32> path{};
  constexpr std::string_view kStat = "/stat";
  if (number.size() + kStat.size() >= path.size()) return false;
  std::memcpy(path.data(), number.data(), number.size());
  std::memcpy(path.data() + number.size(), kStat.data(), kStat.size());
  const int file = ::openat(processes, path.data(), O_RDONLY);
  if (file < 0) return false;
  std::array<char, 512> line{};
  const ssize_t got = ::read(file, line.data(), line.size());
  ::close(file);
  return got > 0 && IsChildOf(::getpid(), {line.data(), static_cast<std::size_t>(got)});
}

// Kills all children; false when none is found.
bool KillChildren() {
  const int processes = ::open("/proc", O_RDONLY | O_DIRECTORY);
  if (processes < 0) return false;
  constexpr std::size_t kNamePlace = 19;  // in an entry: number, offset, its length, kind, name
  constexpr std::size_t kLengthPlace = 16;
  alignas(8) std::array<char, 8192> entries{};
  bool any = false;
  for (long got = 0; (got = ::syscall(SYS_getdents64, processes, entries.data(), entries.size())) > 0;) {
    for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
      std::uint16_t length = 0;
      std::memcpy(&length, entries.data() + at + kLengthPlace, sizeof(length));
      const std::string_view name = entries.data() + at + kNamePlace;
      pid_t id = 0;
      const auto read = std::from_chars(name.data(), name.data() + name.size(), id);
      if (read.ec == std::errc() && read.ptr == name.data() + name.size() && IsOurChild(processes, name)) {
        any = true;
        (void)::kill(id, SIGKILL);
      }
      at += length;
    }
  }
  ::close(processes);
  return any;
}

// Whose parents end become our children, one round after the other.
void EndAll(pid_t program, std::optional<int>& status) {
  for (;;) {
    int waited = 0;
    pid_t ended = ::waitpid(-1, &waited, WNOHANG);
    if (ended == 0) {
      if (!KillChildren()) return;
      ended = ::waitpid(-1, &waited, 0);
    }
    if (ended == program) status = StatusOf(waited);
    if (ended < 0 && errno != EINTR) return;
  }
}

// Takes what has ended; true when the program has.
bool Reap(pid_t program, std::optional<int>& status) {
  for (;;) {
    siginfo_t facts{};
    if (::waitid(P_ALL, 0, &facts, WEXITED | WNOHANG | WNOWAIT) != 0 || facts.si_pid == 0) return false;
    // While its number is still the group's.
    if (facts.si_pid == program) (void)::kill(-program, SIGKILL);
    int waited = 0;
    if (::waitpid(facts.si_pid, &waited, 0) != program) continue;
    status = StatusOf(waited);
    return true;
  }
}

int Keep(pid_t program, int signals) {
  std::optional<int> status;
  std::optional<std::int64_t> deadline;
  while (!Reap(program, status)) {
    const std::int64_t left = deadline ? *deadline - NowMs() : INT_MAX;
    if (left <= 0) break;
    std::array<pollfd, 2> polled = {pollfd{signals, POLLIN, 0}, pollfd{deadline ? -1 : kLife, 0, 0}};
    (void)::poll(polled.data(), polled.size(), deadline ? static_cast<int>(left) : -1);
    bool asked = polled[1].revents != 0;
    for (signalfd_siginfo got{}; ::read(signals, &got, sizeof(got)) == sizeof(got);)
      asked |= got.ssi_signo == SIGTERM;
    if (!asked || deadline) continue;
    deadline = NowMs() + kGraceMs;
    (void)::kill(-program, SIGTERM);
  }
  if (!status) (void)::kill(-program, SIGKILL);
  EndAll(program, status);
  return status.value_or(128 + SIGKILL);
}

[[noreturn]] void BeKeeper(const KeptProgram& kept, int life, int report) {
  ArrangeDescriptors(kept.streams, life, report);
  (void)::prctl(PR_SET_CHILD_SUBREAPER, 1);
  (void)::setpgid(0, 0);
  sigset_t heard;
  ::sigemptyset(&heard);
  ::sigaddset(&heard, SIGCHLD);
  ::sigaddset(&heard, SIGTERM);
  // One that is ignored would be taken by nobody.
  for (const int signal : {SIGCHLD, SIGTERM}) (void)::signal(signal, SIG_DFL);
  pid_t program = -1;
  const int fault = ::posix_spawnp(&program, kept.program, &kept.actions, &kept.attributes, kept.arguments,
                                   kept.environment);
  while (::write(kReport, &fault, sizeof(fault)) < 0 && errno == EINTR) {
  }
  if (fault != 0) ::_exit(127);
  ForgetStreams();
  const int signals = ::signalfd(-1, &heard, SFD_NONBLOCK | SFD_CLOEXEC);
  ::_exit(Keep(program, signals));
}

// --- in this program

bool ReportsStart(const FileDescriptor& report) {
  int fault = 0;
  ssize_t got = 0;
  do {
    got = ::read(report.Get(), &fault, sizeof(fault));
  } while (got < 0 && errno == EINTR);
  return got == static_cast<ssize_t>(sizeof(fault)) && fault == 0;
}

}  // namespace

Keeper StartKeeper(const KeptProgram& program) {
  auto life = MakePipe();
  auto report = MakePipe();
  if (!life || !report) return {};
  sigset_t all;
  sigset_t before;
  ::sigfillset(&all);
  // No handler of this program runs in its copy.
  ::pthread_sigmask(SIG_BLOCK, &all, &before);
  Keeper keeper;
  keeper.id = ::fork();
  if (keeper.id == 0) BeKeeper(program, life->read.Get(), report->write.Get());
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  (void)report->write.Close();
  if (keeper.id < 0) return {};
  if (!ReportsStart(report->read)) {
    while (::waitpid(keeper.id, nullptr, 0) < 0 && errno == EINTR) {
    }
    return {};
  }
  keeper.life = std::move(life->write);
  return keeper;
}

}  // namespace ts5
