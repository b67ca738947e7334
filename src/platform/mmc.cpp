#include "platform/mmc.h"

#include <algorithm>

#include "platform/text.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kDiscDrive = 0x05;  // peripheral device type
constexpr std::uint8_t kDataTrack = 0x04;  // control bit
constexpr std::size_t kDescriptorBytes = 8;
// From the end of an audio session to the first track of the next one: lead-out, lead-in and pre-gap.
constexpr std::uint32_t kSessionGap = 11'400;

constexpr std::uint8_t kOnlyAudio = 1U << 2;  // READ CD, expected sector type
constexpr std::uint8_t kWholeSector =
    0xF8;  // READ CD, main channel: all drives know this; audio is nothing else

constexpr std::uint8_t ByteOf(std::uint32_t value, unsigned index) {
  return static_cast<std::uint8_t>(value >> (8 * index));
}

// Names are ASCII; whatever else a drive says is no text.
std::string NameField(ByteView bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : ' ';
  return std::string(Trim(text));
}

}  // namespace

std::array<std::uint8_t, 6> TestUnitReadyCdb() {
  return {static_cast<std::uint8_t>(MmcCommand::TestUnitReady)};
}

std::array<std::uint8_t, 6> InquiryCdb() {
  return {static_cast<std::uint8_t>(MmcCommand::Inquiry), 0, 0, 0, kInquiryBytes, 0};
}

std::array<std::uint8_t, 10> ReadTocCdb() {
  constexpr auto kLength = static_cast<std::uint32_t>(kTocBytes);
  return {static_cast<std::uint8_t>(MmcCommand::ReadToc),
          0,
          0,
          0,
          0,
          0,
          0,
          ByteOf(kLength, 1),
          ByteOf(kLength, 0),
          0};
}

std::array<std::uint8_t, 12> ReadCdAudioCdb(std::uint32_t sector, std::uint32_t count) {
  return {static_cast<std::uint8_t>(MmcCommand::ReadCd),
          kOnlyAudio,
          ByteOf(sector, 3),
          ByteOf(sector, 2),
          ByteOf(sector, 1),
          ByteOf(sector, 0),
          ByteOf(count, 2),
          ByteOf(count, 1),
          ByteOf(count, 0),
          kWholeSector,
          0,
          0};
}

std::optional<DriveName> ParseInquiry(ByteView bytes) {
  if (bytes.size() < kInquiryBytes || (bytes[0] & 0x1F) != kDiscDrive) return std::nullopt;
  return DriveName{NameField(bytes.subspan(8, 8)), NameField(bytes.subspan(16, 16))};
}

Result<DiscToc> DiscToc::Parse(ByteView bytes) {
  ByteReader in(bytes);
  const std::size_t length = in.U16Be();
  in.Skip(2);
  if (!in.Ok() || length < 2) return Failure(Outcome::WrongFormat);
  DiscToc toc;
  bool ended = false;
  for (std::size_t left = std::min(length - 2, in.Remaining()); left >= kDescriptorBytes && !ended;
       left -= kDescriptorBytes) {
    in.Skip(1);
    const std::uint8_t control = in.U8();
    const std::uint8_t number = in.U8();
    in.Skip(1);
    const std::uint32_t start = in.U32Be();
    const std::uint32_t earliest = toc.tracks.empty() ? 0 : toc.tracks.back().start + 1;
    if (start < earliest || start > 0x7FFFFFFF) return Failure(Outcome::WrongFormat);
    if (number == kLeadOutTrack) {
      toc.leadOut = start;
      ended = true;
    } else {
      const int next = toc.tracks.empty() ? 0 : toc.tracks.back().number + 1;
      if (number < 1 || number > 99 || (next > 0 && number != next)) return Failure(Outcome::WrongFormat);
      toc.tracks.push_back({number, (control & kDataTrack) == 0, start, 0});
    }
  }
  if (!ended) return Failure(Outcome::WrongFormat);
  for (std::size_t i = 0; i < toc.tracks.size(); ++i) {
    TocTrack& track = toc.tracks[i];
    const bool last = i + 1 == toc.tracks.size();
    track.sectors = (last ? toc.leadOut : toc.tracks[i + 1].start) - track.start;
    const bool sessionEnds = !last && track.audio && !toc.tracks[i + 1].audio;
    if (sessionEnds && track.sectors > kSessionGap) track.sectors -= kSessionGap;
  }
  return toc;
}

const TocTrack* DiscToc::Find(int number) const {
  const auto found = std::ranges::find(tracks, number, &TocTrack::number);
  return found == tracks.end() ? nullptr : &*found;
}

}  // namespace ts5
