// Reads audio sectors so that they can be trusted: what the drive doubts, or cannot read at once, is read
// again until two readings are the same.
#pragma once

#include <cstdint>

#include "platform/base/bytes.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

namespace engine {
inline constexpr std::uint32_t kNotCreated = 1802;
inline constexpr std::uint32_t kHeaderNotWritten = 1803;
inline constexpr std::uint32_t kSectorsUnreadable = 1804;
inline constexpr std::uint32_t kDiscChanged = 1805;
inline constexpr std::uint32_t kPipeNotWritten = 1807;
inline constexpr std::uint32_t kFileNotWritten = 1808;
inline constexpr std::uint32_t kChunkNotClosed = 1809;
inline constexpr std::uint32_t kNotTrimmed = 1811;
inline constexpr std::uint32_t kUnreliable = 1999;  // no failure: two readings were never the same
inline constexpr std::uint32_t kStopped = 0xFFFF'FFFF;
}  // namespace engine

class TrackReader {
 public:
  // offset: frames by which the drive reads too late (positive) or too early; they are compensated. The disc
  // ends at end, and silence is behind it.
  TrackReader(CdDrive& drive, Lba end, std::int32_t offset = 0);

  // The sectors from there on. 0, engine::kSectorsUnreadable, kDiscChanged or kStopped; stopped is asked
  // between two commands.
  [[nodiscard]] std::uint32_t Read(Lba address, std::span<std::uint8_t> out, const CancelCheck& stopped = {});
  // Sectors that were taken although no two readings of them agreed.
  [[nodiscard]] std::uint32_t Doubtful() const { return doubtful_; }

 private:
  [[nodiscard]] std::uint32_t ReadSectors(Lba address, std::span<std::uint8_t> out,
                                          const CancelCheck& stopped);
  [[nodiscard]] std::uint32_t ReadPortion(Lba address, std::span<std::uint8_t> out,
                                          const CancelCheck& stopped);
  [[nodiscard]] std::uint32_t ReadUntilAgreed(Lba address, std::span<std::uint8_t> sector,
                                              const CancelCheck& stopped);

  CdDrive& drive_;
  Lba end_;
  std::int32_t offsetBytes_;
  bool errorPointers_ = false;
  std::uint32_t doubtful_ = 0;
};

}  // namespace ts5::disc
