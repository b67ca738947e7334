#include "audio/interfaces/encoder_run.h"

#include <chrono>
#include <cmath>

#include "audio/interfaces/command_line.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"
#include "platform/files/remove_tree.h"
#include "platform/programs/process.h"

namespace ts5::interfaces {
namespace {

using namespace std::chrono_literals;
constexpr auto kPoll = 50ms;
constexpr std::string_view kNoExtension = ".neu";

// The file that the encoder makes; it goes with the target's staged one, also after this program was killed.
class MadeFile {
 public:
  explicit MadeFile(std::string path) : path_(std::move(path)) {}
  MadeFile(const MadeFile&) = delete;
  MadeFile& operator=(const MadeFile&) = delete;
  ~MadeFile() { (void)RemoveFile(path_); }
  [[nodiscard]] const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

// The share of the source's duration that has passed, from the start again each time it is over.
double Shown(std::chrono::steady_clock::time_point begin, double duration) {
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - begin;
  return std::fmod(passed.count(), duration) / duration;
}

// The exit status; nothing after a stop.
std::optional<int> WaitFor(Process& process, double duration, const WorkWatch& watch) {
  const auto begin = std::chrono::steady_clock::now();
  while (true) {
    if (const auto status = process.Wait(kPoll)) return status;
    if (watch.cancelled && watch.cancelled()) {
      process.Terminate();
      return std::nullopt;
    }
    if (watch.progress) watch.progress(Shown(begin, duration));
  }
}

// False when there is nothing.
Result<bool> TakeOver(const std::string& made, StagedFile& target) {
  if (IsDirectory(made)) {
    // An encoder that makes a directory of the name leaves no rubbish either.
    RemoveTree(made);
    return false;
  }
  const auto file = InputFile::Open(made);
  if (!file || file->Size() == 0) return false;
  Bytes block(std::size_t{1} << 18);
  for (std::uint64_t at = 0; at < file->Size();) {
    const auto got = file->ReadAt(at, block);
    if (!got) return Failure(got.error());
    if (*got == 0) return Failure(Outcome::ReadFailed);
    if (const Outcome written = target.Write(ByteView(block).first(*got)); Failed(written))
      return Failure(written);
    at += *got;
  }
  return true;
}

}  // namespace

Outcome RunEncoder(const EncoderInterface& interface, std::size_t set, const EncoderInput& source,
                   StagedFile& target, const WorkWatch& watch) {
  if (set >= interface.sets.size()) return Outcome::InvalidParameter;
  // Encoders ask before they replace a file, so there is none yet.
  const MadeFile made(target.TemporaryPath() +
                      (interface.extension.empty() ? std::string(kNoExtension) : "." + interface.extension));
  const auto arguments = EncoderArguments(interface.sets[set].parameters, source.path, made.Path());
  if (!arguments) return arguments.error();
  if (!interface.Available()) return Outcome::EncoderNotStarted;
  auto process = Process::Start(interface.encoder, *arguments);
  if (!process) return Outcome::EncoderNotStarted;
  const auto status = WaitFor(*process, std::max(1.0, std::ceil(source.seconds)), watch);
  if (!status) return Outcome::Cancelled;
  if (watch.progress) watch.progress(1);
  const auto taken = TakeOver(made.Path(), target);
  if (!taken) return taken.error();
  if (!*taken) return Outcome::TargetFailed;
  return *status == 0 ? Outcome::Success : Outcome::EncoderFailed;
}

}  // namespace ts5::interfaces
