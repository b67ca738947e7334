// Other programs, started without a shell: the arguments reach them exactly as they are given.
//
// A program is found through PATH, speaks with LC_ALL=C, inherits no open files but its three streams, and is
// a process group of its own, so that Ctrl+C on the terminal is ours to handle. All that it has started ends
// with it, and all of that with us.
//
//   auto result = RunProcess("lame", {"--version"}, {.timeout = 5s});
#pragma once

#include <sys/types.h>

#include <chrono>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

enum class ProcessStream { Output, Errors };

// Which streams are pipes to us; the others lead nowhere.
struct ProcessPipes {
  bool input = false;
  bool output = false;
  bool errors = false;
};

class Process {
 public:
  // SourceFailed: the program does not exist or cannot be started. directory: where it runs, "" for ours.
  [[nodiscard]] static Result<Process> Start(const std::string& program,
                                             const std::vector<std::string>& arguments,
                                             ProcessPipes pipes = {}, const std::string& directory = {});
  Process(Process&& other) noexcept;
  Process& operator=(Process&& other) noexcept;
  ~Process();  // ends it when it is still running

  // Waits until all is taken; WriteFailed when the program no longer reads.
  [[nodiscard]] Outcome Write(ByteView bytes);
  void CloseInput() { (void)input_.Close(); }
  // Waits for bytes and takes at most as many as fit; 0 at the end. May be called for each stream on a thread
  // of its own, and ends when the program does.
  [[nodiscard]] Result<std::size_t> Read(ProcessStream stream, std::span<std::uint8_t> out);

  // The exit status, 128 + n after signal n; nothing while it still runs when the time is over. When it has
  // ended, so has all that it started.
  [[nodiscard]] std::optional<int> Wait(std::chrono::milliseconds timeout);
  // Asks it to end, makes it end two seconds later, and waits for that.
  void Terminate();

 private:
  Process() = default;

  pid_t id_ = -1;  // of its keeper
  std::optional<int> status_;
  FileDescriptor life_;  // the keeper's sign that we are there
  FileDescriptor input_;
  FileDescriptor output_;
  FileDescriptor errors_;

  friend struct ProcessPump;
};

struct ProcessRun {
  ByteView input = {};
  std::chrono::milliseconds timeout = std::chrono::hours(24);
  std::size_t limit = std::size_t{64} << 20;  // most bytes kept of each stream; the rest is read and dropped
  std::function<bool()> cancelled = {};       // asked every 50 ms
  std::string directory = {};
};

struct ProcessResult {
  int status = 0;
  Bytes output;
  Bytes errors;
};

// Runs a program to its end. SourceFailed: not started. Cancelled: by the request, or because the time is
// over.
[[nodiscard]] Result<ProcessResult> RunProcess(const std::string& program,
                                               const std::vector<std::string>& arguments,
                                               const ProcessRun& run = {});

}  // namespace ts5
