// Places on a CD: sector numbers as commands count them, and the times that stand in its sub-channel. A
// sector is 1/75 of a second. Sector 0 is the time 00:02:00; the two seconds before it are the pre-gap of
// track 1.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>

namespace ts5 {

inline constexpr std::uint32_t kSectorsPerSecond = 75;
inline constexpr int kMaxTracks = 99;
// From the time 00:00:00 to sector 0.
inline constexpr std::int32_t kPregapSectors = 2 * static_cast<std::int32_t>(kSectorsPerSecond);

// A time has two digits of minutes, so no CD has this sector or one behind it.
inline constexpr std::int32_t kEndOfTimes =
    100 * 60 * static_cast<std::int32_t>(kSectorsPerSecond) - kPregapSectors;

// An audio sector: frames of 16 bit stereo in audio-CD format, low byte first.
inline constexpr std::uint32_t kFramesPerSector = 588;
inline constexpr std::size_t kBytesPerFrame = 4;
inline constexpr std::size_t kAudioSectorBytes = kFramesPerSector * kBytesPerFrame;  // 2352

// A sector's address: -150 is the start of track 1's pre-gap.
struct Lba {
  std::int32_t value = 0;

  constexpr auto operator<=>(const Lba&) const = default;
  constexpr Lba operator+(std::int32_t sectors) const { return {value + sectors}; }
  constexpr Lba operator-(std::int32_t sectors) const { return {value - sectors}; }
  constexpr std::int32_t operator-(Lba other) const { return value - other.value; }
};

// A time on the disc, or a length of time.
struct Msf {
  std::uint8_t minute = 0;  // 0..99
  std::uint8_t second = 0;  // 0..59
  std::uint8_t frame = 0;   // 0..74

  constexpr auto operator<=>(const Msf&) const = default;
  [[nodiscard]] constexpr bool Valid() const {
    return minute < 100 && second < 60 && frame < kSectorsPerSecond;
  }
  [[nodiscard]] constexpr std::int32_t Sectors() const {
    return (minute * 60 + second) * static_cast<std::int32_t>(kSectorsPerSecond) + frame;
  }
};

// A length in sectors as a time; what is longer than 99:59:74 has that, what is negative is 0.
[[nodiscard]] constexpr Msf MsfOfLength(std::int32_t sectors) {
  constexpr std::int32_t kSecond = kSectorsPerSecond;
  constexpr std::int32_t kMost = 100 * 60 * kSecond - 1;
  const std::int32_t inside = sectors < 0 ? 0 : (sectors > kMost ? kMost : sectors);
  return {static_cast<std::uint8_t>(inside / (60 * kSecond)),
          static_cast<std::uint8_t>(inside / kSecond % 60), static_cast<std::uint8_t>(inside % kSecond)};
}
[[nodiscard]] constexpr Msf MsfOf(Lba address) {
  return MsfOfLength(address.value + kPregapSectors);
}
[[nodiscard]] constexpr Lba LbaOf(Msf time) {
  return {time.Sectors() - kPregapSectors};
}

}  // namespace ts5
