// One way to send commands to a drive, whatever carries them: the kernel, or a drive that is made of files.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

namespace ts5 {

// What a drive says about a command that it did not carry out (SPC, sense data); all 0: nothing.
struct SenseData {
  std::uint8_t key = 0;
  std::uint8_t code = 0;  // additional sense code
  std::uint8_t qualifier = 0;

  bool operator==(const SenseData&) const = default;
};

// Data go one way at most: one of the two spans is empty, or both are.
struct ScsiCommand {
  std::span<const std::uint8_t> cdb;       // 6, 10 or 12 bytes
  std::span<std::uint8_t> in = {};         // filled from the drive
  std::span<const std::uint8_t> out = {};  // sent to it
  std::chrono::milliseconds patience{10'000};
};

struct ScsiReply {
  bool good = false;
  SenseData sense = {};         // of a command that was refused; all 0 when it did not reach the drive
  std::size_t transferred = 0;  // bytes of data
};

class ScsiTransport {
 public:
  virtual ~ScsiTransport() = default;
  // Waits until the drive has answered, at most as long as the command's patience. One thread at a time.
  [[nodiscard]] virtual ScsiReply Send(const ScsiCommand& command) = 0;
};

}  // namespace ts5
