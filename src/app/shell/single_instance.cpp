#include "app/shell/single_instance.h"

#include <fcntl.h>
#include <sys/file.h>

#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/base/text.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t kFile = 1;   // the path of a file
constexpr std::uint32_t kFront = 2;  // the last message: come to the front
constexpr auto kGlance = 300ms;      // the window waits for a message that has begun
constexpr auto kStartTime = 10s;     // the first may be starting itself
constexpr auto kBetweenTries = 100ms;

// A name for the registry, whatever way leads to it.
std::string NameOf(const std::string& registryPath) {
  std::error_code error;
  const auto path = std::filesystem::weakly_canonical(registryPath, error);
  const std::size_t hash = std::hash<std::string>{}(error ? registryPath : path.string());
  return Format("STS5-%016llx", static_cast<unsigned long long>(hash));
}

}  // namespace

SingleInstance::SingleInstance(const std::string& registryPath) : name_(NameOf(registryPath)) {}

bool SingleInstance::Claim(const std::vector<std::string>& files) {
  const std::string socket = SiblingSocketPath(name_);
  if (socket.empty()) return true;
  lock_ = FileDescriptor(::open((socket + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
  if (!lock_) return true;
  if (::flock(lock_.Get(), LOCK_EX | LOCK_NB) == 0) {
    auto receiver = SiblingReceiver::Listen(name_);
    if (receiver) receiver_.emplace(std::move(*receiver));
    return true;
  }
  std::vector<SiblingMessage> messages;
  for (const std::string& file : files) messages.push_back({kFile, Bytes(file.begin(), file.end())});
  messages.push_back({kFront, {}});
  const auto end = std::chrono::steady_clock::now() + kStartTime;
  do {
    const Outcome sent = SendToSibling(name_, messages, kStartTime);
    if (sent != Outcome::TargetFailed) return Failed(sent);
    std::this_thread::sleep_for(kBetweenTries);
  } while (std::chrono::steady_clock::now() < end);
  return true;
}

void SingleInstance::Listen(std::function<void(const std::vector<std::string>&)> wake) {
  if (!receiver_) return;
  wake_ = std::move(wake);
  notifier_ = std::make_unique<QSocketNotifier>(receiver_->Descriptor(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { Take(); });
}

void SingleInstance::Take() {
  std::vector<std::string> files;
  for (;;) {
    const auto message = receiver_->Receive(kGlance);
    if (!message) return;
    if (message->id == kFile) files.emplace_back(message->data.begin(), message->data.end());
    if (message->id == kFront) break;
  }
  wake_(files);
}

}  // namespace ts5
