// What sense data mean, decoded once: which to wait for, which to try again, which end the work.
#pragma once

#include <string>

#include "platform/disc/scsi_transport.h"

namespace ts5 {

// Sense keys and codes that are asked for or given by name (SPC-3, table of additional sense codes; MMC-5).
namespace sense {
inline constexpr std::uint8_t kNotReady = 0x02;
inline constexpr std::uint8_t kMediumError = 0x03;
inline constexpr std::uint8_t kHardwareError = 0x04;
inline constexpr std::uint8_t kUnitAttention = 0x06;
inline constexpr std::uint8_t kNoMedium = 0x3A;  // additional sense code

inline constexpr SenseData kBecomingReady{0x02, 0x04, 0x01};
inline constexpr SenseData kLongWriteInProgress{0x02, 0x04, 0x08};
inline constexpr SenseData kMediumNotPresent{0x02, 0x3A, 0x00};
inline constexpr SenseData kTrayOpen{0x02, 0x3A, 0x02};
inline constexpr SenseData kLossOfStreaming{0x03, 0x0C, 0x09};
inline constexpr SenseData kWriteError{0x03, 0x0C, 0x00};
inline constexpr SenseData kUnreadable{0x03, 0x11, 0x00};
inline constexpr SenseData kUnknownCommand{0x05, 0x20, 0x00};
inline constexpr SenseData kOutOfRange{0x05, 0x21, 0x00};
inline constexpr SenseData kInvalidWriteAddress{0x05, 0x21, 0x02};
inline constexpr SenseData kInvalidField{0x05, 0x24, 0x00};
inline constexpr SenseData kParameterLength{0x05, 0x1A, 0x00};
inline constexpr SenseData kInvalidParameter{0x05, 0x26, 0x00};
inline constexpr SenseData kCommandSequence{0x05, 0x2C, 0x00};
inline constexpr SenseData kIncompatibleMedium{0x05, 0x30, 0x00};
inline constexpr SenseData kRemovalPrevented{0x05, 0x53, 0x02};
inline constexpr SenseData kNotThatKindOfTrack{0x05, 0x64, 0x00};
inline constexpr SenseData kSessionNotClosable{0x05, 0x72, 0x03};
inline constexpr SenseData kMediumChanged{0x06, 0x28, 0x00};
}  // namespace sense

// What to do about a command that came back with this.
enum class SenseAction : std::uint8_t {
  GiveUp,  // it will not be otherwise
  Again,   // at once, a few times
  Wait,    // the drive is busy and will be ready by itself
};
[[nodiscard]] SenseAction ActionFor(const SenseData& sense);

// Whether the disc is no longer the one that it was.
[[nodiscard]] constexpr bool IsAnotherDisc(const SenseData& sense) {
  return sense.code == sense::kNoMedium ||
         (sense.key == sense::kMediumChanged.key && sense.code == sense::kMediumChanged.code);
}

// "03/0C/09" as programs write it.
[[nodiscard]] std::string SenseText(const SenseData& sense);

// One number of a failed command: what it was (0xFF a write, 0xFE a close) and its three sense bytes behind.
[[nodiscard]] constexpr std::uint32_t SenseNumber(std::uint8_t what, const SenseData& sense) {
  return static_cast<std::uint32_t>(what) << 24 | static_cast<std::uint32_t>(sense.key) << 16 |
         static_cast<std::uint32_t>(sense.code) << 8 | sense.qualifier;
}

}  // namespace ts5
