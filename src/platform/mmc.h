// The commands and replies of disc drives that the program uses (SCSI primary commands and multimedia
// commands, SPC-3 and MMC-5). Only bytes: who sends them is another matter.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/bytes.h"
#include "platform/outcome.h"
#include "platform/scsi_transport.h"

namespace ts5 {

enum class MmcCommand : std::uint8_t { TestUnitReady = 0x00, Inquiry = 0x12, ReadToc = 0x43, ReadCd = 0xBE };

// Sense data that are looked for.
inline constexpr std::uint8_t kSenseNotReady = 0x02;
inline constexpr std::uint8_t kSenseUnitAttention = 0x06;
inline constexpr std::uint8_t kSenseNoMedium = 0x3A;  // additional sense code

// The two name fields of a drive, e.g. "PLEXTOR" and "CD-R PX-W1610A".
struct DriveName {
  std::string vendor;   // at most 8 characters
  std::string product;  // at most 16

  bool operator==(const DriveName&) const = default;
};

inline constexpr std::size_t kInquiryBytes = 36;
inline constexpr std::uint8_t kLeadOutTrack = 0xAA;  // the number under which a table of contents has the end
inline constexpr std::size_t kTocBytes = 4 + 100 * 8;

[[nodiscard]] std::array<std::uint8_t, 6> TestUnitReadyCdb();
[[nodiscard]] std::array<std::uint8_t, 6> InquiryCdb();
[[nodiscard]] std::array<std::uint8_t, 10> ReadTocCdb();  // format 0, addresses as sectors
// Audio sectors of 2352 bytes; a sector of another kind ends the command.
[[nodiscard]] std::array<std::uint8_t, 12> ReadCdAudioCdb(std::uint32_t sector, std::uint32_t count);

// Nothing when the bytes come from no disc drive.
[[nodiscard]] std::optional<DriveName> ParseInquiry(ByteView bytes);

struct TocTrack {
  int number = 0;
  bool audio = true;
  std::uint32_t start = 0;    // sector
  std::uint32_t sectors = 0;  // up to the next track; the gap between two sessions is not counted

  bool operator==(const TocTrack&) const = default;
};

// The table of contents. It tells starts only, so the pause before a track is the end of the one before it.
struct DiscToc {
  std::vector<TocTrack> tracks = {};
  std::uint32_t leadOut = 0;

  // WrongFormat: it contradicts itself.
  [[nodiscard]] static Result<DiscToc> Parse(ByteView bytes);
  // A disc with data before its first audio track is a data disc.
  [[nodiscard]] bool IsAudioCd() const { return !tracks.empty() && tracks.front().audio; }
  [[nodiscard]] const TocTrack* Find(int number) const;  // nullptr: there is none
};

}  // namespace ts5
