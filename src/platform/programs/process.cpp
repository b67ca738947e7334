#include "platform/programs/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <thread>
#include <utility>

#include "platform/programs/pipe.h"
#include "platform/programs/process_keeper.h"

extern char** environ;  // NOLINT: the environment as POSIX declares it

namespace ts5 {
namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t kBlock = std::size_t{1} << 16;
constexpr auto kGrace = 4s;  // twice that which the keeper gives the program

// A write to a pipe that nobody reads any more must be a failed write, not the end of this program.
class NoBrokenPipeSignal {
 public:
  NoBrokenPipeSignal() {
    ::sigemptyset(&pipe_);
    ::sigaddset(&pipe_, SIGPIPE);
    ::pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  NoBrokenPipeSignal(const NoBrokenPipeSignal&) = delete;
  NoBrokenPipeSignal& operator=(const NoBrokenPipeSignal&) = delete;
  ~NoBrokenPipeSignal() {
    if (::sigismember(&before_, SIGPIPE) == 1) return;
    const timespec now{};
    while (::sigtimedwait(&pipe_, nullptr, &now) == SIGPIPE) {
    }
    ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }

 private:
  sigset_t pipe_{};
  sigset_t before_{};
};

// What the new process is started with.
class SpawnSettings {
 public:
  SpawnSettings() {
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawnattr_init(&attributes);
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    ::posix_spawnattr_setsigmask(&attributes, &none);
    ::posix_spawnattr_setsigdefault(&attributes, &all);
    ::posix_spawnattr_setpgroup(&attributes, 0);
    ::posix_spawnattr_setflags(&attributes,
                               POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    ::posix_spawn_file_actions_destroy(&actions);
    ::posix_spawnattr_destroy(&attributes);
  }

  posix_spawn_file_actions_t actions{};
  posix_spawnattr_t attributes{};
};

std::vector<std::string> EnvironmentInC() {
  std::vector<std::string> variables;
  for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    if (!text.starts_with("LC_ALL=") && !text.starts_with("LANGUAGE=")) variables.emplace_back(text);
  }
  variables.emplace_back("LC_ALL=C");
  return variables;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Result<Process> Process::Start(const std::string& program, const std::vector<std::string>& arguments,
                               ProcessPipes pipes, const std::string& directory) {
  const auto hasNul = [](const std::string& text) { return text.find('\0') != std::string::npos; };
  if (program.empty() || hasNul(program) || hasNul(directory) || std::ranges::any_of(arguments, hasNul)) {
    return Failure(Outcome::SourceFailed);
  }
  Process process;
  Pipe input;
  Pipe output;
  Pipe errors;
  for (const auto& [wanted, pipe] :
       {std::pair{pipes.input, &input}, {pipes.output, &output}, {pipes.errors, &errors}}) {
    if (!wanted) continue;
    auto made = MakePipe();
    if (!made) return Failure(Outcome::SourceFailed);
    *pipe = std::move(*made);
  }

  SpawnSettings settings;
  ::posix_spawn_file_actions_addclosefrom_np(&settings.actions, 3);
  if (!directory.empty()) ::posix_spawn_file_actions_addchdir_np(&settings.actions, directory.c_str());

  std::vector<std::string> words{program};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<std::string> environment = EnvironmentInC();
  Keeper keeper = StartKeeper({.program = program.c_str(),
                               .arguments = Pointers(words).data(),
                               .environment = Pointers(environment).data(),
                               .actions = settings.actions,
                               .attributes = settings.attributes,
                               .streams = {input.read.Get(), output.write.Get(), errors.write.Get()}});
  if (keeper.id < 0) return Failure(Outcome::SourceFailed);
  process.id_ = keeper.id;
  process.life_ = std::move(keeper.life);
  process.input_ = std::move(input.write);
  process.output_ = std::move(output.read);
  process.errors_ = std::move(errors.read);
  return process;
}

Process::Process(Process&& other) noexcept
    : id_(std::exchange(other.id_, -1)),
      status_(other.status_),
      life_(std::move(other.life_)),
      input_(std::move(other.input_)),
      output_(std::move(other.output_)),
      errors_(std::move(other.errors_)) {}

Process& Process::operator=(Process&& other) noexcept {
  std::swap(id_, other.id_);
  std::swap(status_, other.status_);
  std::swap(life_, other.life_);
  std::swap(input_, other.input_);
  std::swap(output_, other.output_);
  std::swap(errors_, other.errors_);
  return *this;
}

Process::~Process() {
  Terminate();
}

Outcome Process::Write(ByteView bytes) {
  const NoBrokenPipeSignal guard;
  while (!bytes.empty()) {
    const ssize_t put = ::write(input_.Get(), bytes.data(), bytes.size());
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return Outcome::WriteFailed;
    bytes = bytes.subspan(static_cast<std::size_t>(put));
  }
  return Outcome::Success;
}

Result<std::size_t> Process::Read(ProcessStream stream, std::span<std::uint8_t> out) {
  const FileDescriptor& from = stream == ProcessStream::Output ? output_ : errors_;
  for (;;) {
    const ssize_t got = ::read(from.Get(), out.data(), out.size());
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) return Failure(Outcome::ReadFailed);
  }
}

std::optional<int> Process::Wait(std::chrono::milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  auto pause = 1ms;
  while (!status_ && id_ > 0) {
    int status = 0;
    const pid_t ended = ::waitpid(id_, &status, WNOHANG);
    if (ended == id_) {
      status_ = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    } else if (ended < 0 && errno != EINTR) {
      status_ = 127;  // somebody else has waited for it
    } else {
      if (Clock::now() >= deadline) return std::nullopt;
      std::this_thread::sleep_for(pause);
      pause = std::min(pause * 2, std::chrono::milliseconds(20));
    }
  }
  return status_;
}

void Process::Terminate() {
  if (id_ <= 0 || status_) return;
  (void)::kill(id_, SIGTERM);
  if (Wait(kGrace)) return;
  (void)::kill(id_, SIGKILL);
  (void)Wait(std::chrono::hours(1));
}

// Feeds and drains all three streams at once, so that neither side waits for the other.
struct ProcessPump {
  Process& process;
  const ProcessRun& run;
  ProcessResult result = {};

  static void Drain(FileDescriptor& from, Bytes& into, std::size_t limit) {
    std::array<std::uint8_t, kBlock> block{};
    const ssize_t got = ::read(from.Get(), block.data(), block.size());
    if (got > 0) {
      const std::size_t kept = std::min(static_cast<std::size_t>(got), limit - std::min(limit, into.size()));
      into.insert(into.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(kept));
    } else if (got == 0 || errno != EINTR) {
      (void)from.Close();
    }
  }

  void Feed(ByteView& rest) {
    const NoBrokenPipeSignal guard;
    const ssize_t put = ::write(process.input_.Get(), rest.data(), rest.size());
    if (put >= 0) {
      rest = rest.subspan(static_cast<std::size_t>(put));
    } else if (errno != EINTR && errno != EAGAIN) {
      rest = {};  // it does not want the rest
    }
    if (rest.empty()) process.CloseInput();
  }

  Outcome Pump() {
    const auto deadline = Clock::now() + run.timeout;
    ByteView rest = run.input;
    if (process.input_) ::fcntl(process.input_.Get(), F_SETFL, O_NONBLOCK);
    while (process.output_ || process.errors_) {
      if (Clock::now() >= deadline || (run.cancelled && run.cancelled())) return Outcome::Cancelled;
      std::array<pollfd, 3> polled = {pollfd{process.input_.Get(), POLLOUT, 0},
                                      pollfd{process.output_.Get(), POLLIN, 0},
                                      pollfd{process.errors_.Get(), POLLIN, 0}};
      if (::poll(polled.data(), polled.size(), 50) <= 0) continue;
      if (polled[0].revents != 0) Feed(rest);
      if (polled[1].revents != 0) Drain(process.output_, result.output, run.limit);
      if (polled[2].revents != 0) Drain(process.errors_, result.errors, run.limit);
    }
    // Both streams are closed; the program itself may still run.
    while (!process.Wait(50ms)) {
      if (Clock::now() >= deadline || (run.cancelled && run.cancelled())) return Outcome::Cancelled;
    }
    result.status = process.Wait(0ms).value_or(127);
    return Outcome::Success;
  }
};

Result<ProcessResult> RunProcess(const std::string& program, const std::vector<std::string>& arguments,
                                 const ProcessRun& run) {
  auto process = Process::Start(program, arguments, {!run.input.empty(), true, true}, run.directory);
  if (!process) return Failure(process.error());
  ProcessPump pump{*process, run};
  if (const Outcome done = pump.Pump(); Failed(done)) return Failure(done);
  return std::move(pump.result);
}

}  // namespace ts5
