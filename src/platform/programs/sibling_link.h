// Messages to the sibling programs, the sequencer and the score editor: an identifier and a block of bytes
// each, over a Unix socket in $XDG_RUNTIME_DIR that is named after the receiver's window class.
//
// On the wire a message is the identifier and the length of the block, both little-endian 32-bit, and the
// block. The receiver answers each with the byte 1 once it has taken it; a connection carries any number of
// them.
#pragma once

#include <chrono>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr std::chrono::milliseconds kSiblingPatience{5000};
inline constexpr std::size_t kMaxWindowClass = 64;                         // bytes
inline constexpr std::uint32_t kMaxSiblingBlock = std::uint32_t{1} << 20;  // longer ones are refused

struct SiblingMessage {
  std::uint32_t id = 0;
  Bytes data;

  bool operator==(const SiblingMessage&) const = default;
};

// Where the receiver of that window class listens; "" when there is no such place ($XDG_RUNTIME_DIR is not
// set, or the class is no file name).
[[nodiscard]] std::string SiblingSocketPath(std::string_view windowClass);
[[nodiscard]] bool SiblingIsThere(std::string_view windowClass);
// One message after the other, each waited for. TargetFailed: nobody is there; WriteFailed: the receiver did
// not take a message within its patience, or went away.
[[nodiscard]] Outcome SendToSibling(std::string_view windowClass, std::span<const SiblingMessage> messages,
                                    std::chrono::milliseconds patience = kSiblingPatience);

// The receiving side. One connection at a time.
class SiblingReceiver {
 public:
  // TargetFailed; InUse: another program listens for this class.
  [[nodiscard]] static Result<SiblingReceiver> Listen(std::string_view windowClass);
  SiblingReceiver(SiblingReceiver&& other) noexcept;
  SiblingReceiver& operator=(SiblingReceiver&&) = delete;
  ~SiblingReceiver();

  // Becomes readable when somebody has connected.
  [[nodiscard]] int Descriptor() const { return listener_.Get(); }
  // The next message, which is answered at once. ReadFailed: none came within the time, or what came was
  // none.
  [[nodiscard]] Result<SiblingMessage> Receive(std::chrono::milliseconds patience = kSiblingPatience);

 private:
  SiblingReceiver(std::string path, FileDescriptor listener)
      : path_(std::move(path)), listener_(std::move(listener)) {}

  std::string path_;
  FileDescriptor listener_;
  FileDescriptor connection_;
};

}  // namespace ts5
