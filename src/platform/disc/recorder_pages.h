// The mode pages of the virtual recorder, and what it says of itself and its discs in numbers.
#pragma once

#include <optional>

#include "platform/base/bytes.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/recorded_disc.h"
#include "platform/disc/sense.h"

namespace ts5 {

inline constexpr std::uint32_t kRecorderReadSpeed = 52;
inline constexpr std::uint32_t kRecorderWriteSpeed = 48;
// Where the lead-in of a blank disc begins.
inline constexpr Lba kLeadInStart{-11'634};

class RecorderPages {
 public:
  RecorderPages();
  // The answer to MODE SENSE of a page (0x3F: all); nothing for a page that there is not.
  [[nodiscard]] std::optional<Bytes> Sense(std::uint8_t page, bool longHeader) const;
  // Takes what MODE SELECT(10) sent. The sense data of a refusal, or nothing.
  [[nodiscard]] std::optional<SenseData> Select(ByteView data);

  [[nodiscard]] WriteParameters Writing() const { return *ParseWriteParameters(writing_); }
  void SetSpeed(std::uint32_t kilobytes);
  [[nodiscard]] std::uint32_t WriteSpeed() const { return speed_; }  // kB/s

 private:
  [[nodiscard]] Bytes Capabilities() const;

  Bytes writing_;  // page 5
  Bytes audio_;    // page 0x0E
  std::uint32_t speed_;
};

// READ DISC INFORMATION, READ TRACK INFORMATION and the ATIP of a disc.
[[nodiscard]] Bytes DiscInformationReply(const RecordedDisc& disc);
struct TrackState {
  DiscTrack track = {};
  bool blank = false;
  std::optional<Lba> nextWritable = {};
};
[[nodiscard]] Bytes TrackInformationReply(const TrackState& state, Lba lastLeadOut);
[[nodiscard]] Bytes AtipReply(const RecordedDisc& disc);

}  // namespace ts5
