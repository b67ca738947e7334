#include "platform/disc/drive_events.h"

#include <linux/netlink.h>
#include <sys/socket.h>

#include <string_view>

#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kKernelGroup = 1;
constexpr std::size_t kMostBytes = 8192;
constexpr std::string_view kDrivePrefix = "sr";

}  // namespace

std::optional<DriveEvent> ParseDriveEvent(ByteView message) {
  std::string_view action;
  std::string_view subsystem;
  std::string_view name;
  bool disc = false;
  for (const std::string_view field : Split(AsText(message), '\0')) {
    const auto value = [&](std::string_view key) { return field.substr(key.size()); };
    if (field.starts_with("ACTION=")) action = value("ACTION=");
    if (field.starts_with("SUBSYSTEM=")) subsystem = value("SUBSYSTEM=");
    if (field.starts_with("DEVNAME=")) name = value("DEVNAME=");
    disc = disc || field.starts_with("DISK_MEDIA_CHANGE=1") || field.starts_with("DISK_EJECT_REQUEST=1");
  }
  if (subsystem != "block" || !name.starts_with(kDrivePrefix)) return std::nullopt;
  if (name.find_first_not_of("0123456789", kDrivePrefix.size()) != std::string_view::npos)
    return std::nullopt;
  const bool drive = action == "add" || action == "remove";
  if (!drive && !(action == "change" && disc)) return std::nullopt;
  return DriveEvent{drive, "/dev/" + std::string(name)};
}

Result<DriveEvents> DriveEvents::Open() {
  FileDescriptor socket(
      ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT));
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = kKernelGroup;
  if (!socket || ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return Failure(Outcome::SourceFailed);
  return DriveEvents(std::move(socket));
}

std::vector<DriveEvent> DriveEvents::Read() const {
  std::vector<DriveEvent> events;
  Bytes buffer(kMostBytes);
  for (;;) {
    sockaddr_nl sender{};
    socklen_t length = sizeof sender;
    const ssize_t got = ::recvfrom(socket_.Get(), buffer.data(), buffer.size(), 0,
                                   reinterpret_cast<sockaddr*>(&sender), &length);
    if (got <= 0) return events;
    // Only the kernel may say such things.
    if (sender.nl_pid != 0) continue;
    if (auto event = ParseDriveEvent(ByteView(buffer).first(static_cast<std::size_t>(got))))
      events.push_back(*std::move(event));
  }
}

}  // namespace ts5
