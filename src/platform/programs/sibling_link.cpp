#include "platform/programs/sibling_link.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>

namespace ts5 {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::uint8_t kTaken = 1;
constexpr std::size_t kHead = 8;

std::optional<sockaddr_un> AddressOf(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return std::nullopt;
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

FileDescriptor NewSocket() {
  return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

FileDescriptor Connect(const std::string& path) {
  const auto address = AddressOf(path);
  FileDescriptor socket = NewSocket();
  if (!address || !socket) return {};
  const auto* const generic = reinterpret_cast<const sockaddr*>(&*address);  // as the socket calls want it
  return ::connect(socket.Get(), generic, sizeof *address) == 0 ? std::move(socket) : FileDescriptor();
}

// Waits until the socket can be read or written; false when the time is over.
bool WaitFor(int socket, short events, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd entry = {socket, events, 0};
    const int ready = ::poll(&entry, 1, left > 0 ? static_cast<int>(left) : 0);
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

bool Interrupted() {
  return errno == EINTR || errno == EAGAIN;
}

bool SendAll(int socket, ByteView bytes, Clock::time_point end) {
  while (!bytes.empty()) {
    if (!WaitFor(socket, POLLOUT, end)) return false;
    const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent < 0 && !Interrupted()) return false;
    if (sent > 0) bytes = bytes.subspan(static_cast<std::size_t>(sent));
  }
  return true;
}

bool ReceiveAll(int socket, std::span<std::uint8_t> bytes, Clock::time_point end) {
  while (!bytes.empty()) {
    if (!WaitFor(socket, POLLIN, end)) return false;
    const ssize_t got = ::recv(socket, bytes.data(), bytes.size(), 0);
    if (got == 0 || (got < 0 && !Interrupted())) return false;
    if (got > 0) bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

}  // namespace

std::string SiblingSocketPath(std::string_view windowClass) {
  const char* const directory = std::getenv("XDG_RUNTIME_DIR");
  const bool isName = !windowClass.empty() && windowClass.size() <= kMaxWindowClass &&
                      windowClass.find('/') == std::string_view::npos &&
                      windowClass.find('\0') == std::string_view::npos;
  if (directory == nullptr || *directory != '/' || !isName) return {};
  return std::string(directory) + "/" + std::string(windowClass) + ".sibling";
}

bool SiblingIsThere(std::string_view windowClass) {
  return static_cast<bool>(Connect(SiblingSocketPath(windowClass)));
}

Outcome SendToSibling(std::string_view windowClass, std::span<const SiblingMessage> messages,
                      std::chrono::milliseconds patience) {
  const FileDescriptor socket = Connect(SiblingSocketPath(windowClass));
  if (!socket) return Outcome::TargetFailed;
  for (const SiblingMessage& message : messages) {
    if (message.data.size() > kMaxSiblingBlock) return Outcome::WriteFailed;
    ByteWriter out;
    out.U32Le(message.id);
    out.U32Le(static_cast<std::uint32_t>(message.data.size()));
    out.Append(ByteView(message.data));
    const auto end = Clock::now() + patience;
    std::uint8_t answer = 0;
    if (!SendAll(socket.Get(), out.View(), end) || !ReceiveAll(socket.Get(), {&answer, 1}, end) ||
        answer != kTaken) {
      return Outcome::WriteFailed;
    }
  }
  return Outcome::Success;
}

Result<SiblingReceiver> SiblingReceiver::Listen(std::string_view windowClass) {
  std::string path = SiblingSocketPath(windowClass);
  const auto address = AddressOf(path);
  FileDescriptor socket = NewSocket();
  if (!address || !socket) return Failure(Outcome::TargetFailed);
  if (SiblingIsThere(windowClass)) return Failure(Outcome::InUse);
  ::unlink(path.c_str());  // left behind by a program that was killed
  const auto* const generic = reinterpret_cast<const sockaddr*>(&*address);
  if (::bind(socket.Get(), generic, sizeof *address) != 0 || ::listen(socket.Get(), 4) != 0) {
    return Failure(Outcome::TargetFailed);
  }
  return SiblingReceiver(std::move(path), std::move(socket));
}

SiblingReceiver::SiblingReceiver(SiblingReceiver&& other) noexcept
    : path_(std::exchange(other.path_, {})),
      listener_(std::move(other.listener_)),
      connection_(std::move(other.connection_)) {}

SiblingReceiver::~SiblingReceiver() {
  if (!path_.empty()) ::unlink(path_.c_str());
}

Result<SiblingMessage> SiblingReceiver::Receive(std::chrono::milliseconds patience) {
  const auto end = Clock::now() + patience;
  while (Clock::now() < end) {
    if (!connection_) {
      if (!WaitFor(listener_.Get(), POLLIN, end)) break;
      connection_ =
          FileDescriptor(::accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
      continue;
    }
    std::array<std::uint8_t, kHead> head{};
    if (!ReceiveAll(connection_.Get(), head, end)) {
      connection_ = FileDescriptor();  // ended, as a look whether we are here ends
      continue;
    }
    ByteReader in(head);
    SiblingMessage message;
    message.id = in.U32Le();
    const std::uint32_t length = in.U32Le();
    if (length <= kMaxSiblingBlock) {
      message.data.resize(length);
      const bool whole = ReceiveAll(connection_.Get(), message.data, end);
      if (whole && SendAll(connection_.Get(), {&kTaken, 1}, end)) return message;
    }
    connection_ = FileDescriptor();
    break;
  }
  return Failure(Outcome::ReadFailed);
}

}  // namespace ts5
