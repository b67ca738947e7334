#include "platform/disc/mmc_replies.h"

#include <algorithm>

#include "platform/base/text.h"
#include "platform/disc/mmc_commands.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kDiscDrive = 0x05;  // peripheral device type
constexpr std::size_t kDescriptorBytes = 8;
// From the end of an audio session to the first track of the next one: lead-out, lead-in and pre-gap.
constexpr std::uint32_t kSessionGap = 11'400;
constexpr std::uint8_t kValid = 0x80;  // of catalogue numbers and ISRCs

// Names are ASCII; whatever else a drive says is no text.
std::string NameField(ByteView bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += byte >= 0x20 && byte < 0x7F ? static_cast<char>(byte) : ' ';
  return std::string(Trim(text));
}

std::optional<Lba> TimeField(ByteView bytes) {
  const Msf time{bytes[1], bytes[2], bytes[3]};
  if (!time.Valid()) return std::nullopt;
  // Lead-ins are counted from behind: 97:26:66 lies before 00:00:00.
  constexpr int kFirstNegativeMinute = 90;
  constexpr std::int32_t kWholeCircle = 100 * 60 * static_cast<std::int32_t>(kSectorsPerSecond);
  return time.minute >= kFirstNegativeMinute ? LbaOf(time) - kWholeCircle : LbaOf(time);
}

ByteView PageBehind(ByteView bytes, std::size_t start, std::uint8_t page) {
  constexpr std::uint8_t kCodeBits = 0x3F;
  while (start + 2 <= bytes.size()) {
    const std::size_t length = 2U + bytes[start + 1];
    if ((bytes[start] & kCodeBits) == page)
      return start + length <= bytes.size() ? bytes.subspan(start, length) : ByteView{};
    start += length;
  }
  return {};
}

// A field that begins with its valid bit: the text behind it.
std::string ValidField(ByteView bytes, std::size_t at, std::size_t length) {
  if (bytes.size() < at + 1 + length || (bytes[at] & kValid) == 0) return {};
  return std::string(AsText(bytes.subspan(at + 1, length)));
}

void PutValidField(std::span<std::uint8_t> page, std::size_t at, std::size_t size, std::string_view text) {
  std::ranges::fill(page.subspan(at, size), std::uint8_t{0});
  if (text.empty()) return;
  page[at] = kValid;
  std::ranges::transform(text.substr(0, size - 1), page.begin() + static_cast<std::ptrdiff_t>(at) + 1,
                         [](char c) { return static_cast<std::uint8_t>(c); });
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

}  // namespace

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
    const auto control = static_cast<std::uint8_t>(in.U8() & 0x0F);
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
      if (number < 1 || number > kMaxTracks || (next > 0 && number != next))
        return Failure(Outcome::WrongFormat);
      toc.tracks.push_back({number, (control & kControlData) == 0, start, 0, control});
    }
  }
  if (!ended) return Failure(Outcome::WrongFormat);
  for (std::size_t i = 0; i < toc.tracks.size(); ++i) {
    TocTrack& track = toc.tracks[i];
    const bool last = i + 1 == toc.tracks.size();
    track.sectors = (last ? toc.leadOut : toc.tracks[i + 1].start) - track.start;
    const bool sessionEnds = !last && track.audio && !toc.tracks[i + 1].audio;
    if (sessionEnds && track.sectors > kSessionGap) track.sectors -= kSessionGap;
    // Music is on CDs only; data may be on larger discs.
    if (track.audio && std::int64_t{track.start} + track.sectors > kEndOfTimes)
      return Failure(Outcome::WrongFormat);
  }
  return toc;
}

const TocTrack* DiscToc::Find(int number) const {
  const auto found = std::ranges::find(tracks, number, &TocTrack::number);
  return found == tracks.end() ? nullptr : &*found;
}

std::optional<DiscInformation> ParseDiscInformation(ByteView bytes) {
  constexpr std::size_t kLeast = 24;
  if (bytes.size() < kLeast) return std::nullopt;
  DiscInformation info;
  info.status = static_cast<DiscStatus>(bytes[2] & 0x03);
  info.lastSession = static_cast<std::uint8_t>(bytes[2] >> 2 & 0x03);
  info.erasable = (bytes[2] & 0x10) != 0;
  info.firstTrack = bytes[3];
  info.sessions = bytes[4];
  info.lastTrack = bytes[6];
  info.type = bytes[8];
  info.leadIn = TimeField(bytes.subspan(16, 4));
  info.leadOut = TimeField(bytes.subspan(20, 4));
  if (info.leadOut && info.leadOut->value <= 0) info.leadOut.reset();
  return info;
}

std::optional<TrackInformation> ParseTrackInformation(ByteView bytes) {
  constexpr std::size_t kLeast = 28;
  if (bytes.size() < kLeast) return std::nullopt;
  ByteReader in(bytes);
  in.Skip(2);
  TrackInformation info;
  info.track = in.U8();
  info.session = in.U8();
  in.Skip(1);
  const std::uint8_t mode = in.U8();
  info.trackMode = mode & 0x0F;
  info.damaged = (mode & 0x20) != 0;
  const std::uint8_t data = in.U8();
  info.dataMode = data & 0x0F;
  info.blank = (data & 0x40) != 0;
  const bool nextValid = (in.U8() & 0x01) != 0;
  info.start = {static_cast<std::int32_t>(in.U32Be())};
  const Lba next{static_cast<std::int32_t>(in.U32Be())};
  if (nextValid) info.nextWritable = next;
  info.freeSectors = in.U32Be();
  in.Skip(4);
  info.sectors = in.U32Be();
  return info;
}

ByteView FindModePage6(ByteView bytes, std::uint8_t page) {
  constexpr std::size_t kHeader = 4;
  return bytes.size() < kHeader ? ByteView{} : PageBehind(bytes, kHeader + bytes[3], page);
}

ByteView FindModePage10(ByteView bytes, std::uint8_t page) {
  constexpr std::size_t kHeader = 8;
  if (bytes.size() < kHeader) return {};
  return PageBehind(bytes, kHeader + bytes[6] * 256U + bytes[7], page);
}

std::optional<WriteParameters> ParseWriteParameters(ByteView page) {
  constexpr std::size_t kLeast = 48;
  if (page.size() < kLeast) return std::nullopt;
  WriteParameters parameters;
  parameters.type = static_cast<WriteType>(page[2] & 0x0F);
  parameters.testWrite = (page[2] & 0x10) != 0;
  parameters.underrunProtection = (page[2] & 0x40) != 0;
  parameters.trackMode = page[3] & 0x0F;
  parameters.copy = (page[3] & 0x10) != 0;
  parameters.multiSession = page[3] >> 6;
  parameters.dataBlockType = page[4] & 0x0F;
  parameters.sessionFormat = page[8];
  parameters.audioPause = static_cast<std::uint16_t>(page[14] << 8 | page[15]);
  parameters.catalogue = ValidField(page, 16, 13);
  parameters.isrc = ValidField(page, 32, 12);
  return parameters;
}

void PutWriteParameters(const WriteParameters& parameters, std::span<std::uint8_t> page) {
  page[2] = static_cast<std::uint8_t>((page[2] & 0x20) | static_cast<unsigned>(parameters.type) |
                                      (parameters.testWrite ? 0x10U : 0U) |
                                      (parameters.underrunProtection ? 0x40U : 0U));
  page[3] =
      static_cast<std::uint8_t>((page[3] & 0x20) | parameters.trackMode | (parameters.copy ? 0x10U : 0U) |
                                static_cast<unsigned>(parameters.multiSession) << 6);
  page[4] = static_cast<std::uint8_t>((page[4] & 0xF0) | parameters.dataBlockType);
  page[8] = parameters.sessionFormat;
  page[14] = static_cast<std::uint8_t>(parameters.audioPause >> 8);
  page[15] = static_cast<std::uint8_t>(parameters.audioPause);
  PutValidField(page, 16, 16, parameters.catalogue);
  PutValidField(page, 32, 16, parameters.isrc);
}

Bytes ModeSelectData(ByteView page) {
  constexpr std::size_t kHead = 8;
  Bytes data(kHead + page.size());
  std::ranges::copy(page, data.begin() + kHead);
  if (!page.empty()) data[kHead] &= 0x3F;  // whether a page can be saved is the drive's word only
  return data;
}

std::optional<DriveCapabilities> ParseCapabilities(ByteView page) {
  constexpr std::size_t kLeast = 20;
  if (page.size() < kLeast) return std::nullopt;
  const auto word = [&](std::size_t at) {
    return at + 2 <= page.size() ? static_cast<std::uint32_t>(page[at] << 8 | page[at + 1]) : 0U;
  };
  constexpr std::size_t kSelectedSpeed = 28;  // of newer drives
  DriveCapabilities result;
  result.writesCdR = (page[3] & 0x01) != 0;
  result.writesCdRw = (page[3] & 0x02) != 0;
  result.testWrite = (page[3] & 0x04) != 0;
  result.underrunProtection = (page[4] & 0x80) != 0;
  result.c2Pointers = (page[5] & 0x10) != 0;
  result.readSpeed = SpeedFactor(word(8));
  result.bufferKiB = word(12);
  result.writeSpeed = SpeedFactor(word(18));
  result.currentWriteSpeed = SpeedFactor(page.size() >= kSelectedSpeed + 2 ? word(kSelectedSpeed) : word(20));
  return result;
}

std::optional<SubChannelPosition> ParsePosition(ByteView bytes) {
  constexpr std::size_t kLeast = 12;
  if (bytes.size() < kLeast || bytes[4] != static_cast<std::uint8_t>(SubChannelFormat::Position))
    return std::nullopt;
  ByteReader in(bytes.subspan(8));
  return SubChannelPosition{bytes[1], bytes[6], bytes[7], {static_cast<std::int32_t>(in.U32Be())}};
}

std::string ParseCatalogue(ByteView bytes) {
  std::string text = ValidField(bytes, 8, 13);
  return IsCatalogueNumber(text) ? text : std::string();
}

std::string ParseIsrc(ByteView bytes) {
  std::string text = ValidField(bytes, 8, 12);
  return IsIsrc(text) ? text : std::string();
}

bool IsCatalogueNumber(std::string_view text) {
  return text.size() == 13 && std::ranges::all_of(text, IsDigit) &&
         text.find_first_not_of('0') != std::string_view::npos;
}

bool IsIsrc(std::string_view text) {
  const auto code = [](char c) { return IsDigit(c) || (c >= 'A' && c <= 'Z'); };
  return text.size() == 12 && std::ranges::all_of(text.substr(0, 5), code) &&
         std::ranges::all_of(text.substr(5), IsDigit);
}

std::optional<MechanismState> ParseMechanismStatus(ByteView bytes) {
  constexpr std::size_t kLeast = 8;
  if (bytes.size() < kLeast) return std::nullopt;
  return MechanismState{(bytes[1] & 0x10) != 0, (bytes[1] >> 5) != 0 && (bytes[1] >> 5) != 1};
}

}  // namespace ts5
