#include "platform/disc/recorder_pages.h"

#include <algorithm>
#include <array>

namespace ts5 {
namespace {

constexpr std::uint8_t kAllPages = 0x3F;
constexpr std::size_t kHeaderBytes = 8;
constexpr std::uint32_t kSingleSpeed = 176;

// In KiB of audio a second, so that the factor comes out as it is meant.
constexpr std::uint32_t SpeedOf(std::uint32_t factor) {
  return (factor * 44'100 + 128) / 256;
}

Msf NegativeTime(Lba address) {
  constexpr std::int32_t kWholeCircle = 100 * 60 * static_cast<std::int32_t>(kSectorsPerSecond);
  return MsfOf(address.value < -kPregapSectors ? address + kWholeCircle : address);
}

void PutTime(ByteWriter& out, Msf time) {
  for (const std::uint8_t part : {std::uint8_t{0}, time.minute, time.second, time.frame}) out.U8(part);
}

void PutNoTime(ByteWriter& out) {
  out.U32Be(0x00FFFFFF);
}

Bytes WithLength(ByteView body) {
  ByteWriter out;
  out.U16Be(static_cast<std::uint16_t>(body.size()));
  out.Append(body);
  return out.Release();
}

}  // namespace

RecorderPages::RecorderPages() : speed_(SpeedOf(kRecorderWriteSpeed)) {
  writing_.resize(kWriteParametersBytes);
  writing_[0] = kWriteParametersPage;
  writing_[1] = kWriteParametersBytes - 2;
  PutWriteParameters({}, writing_);
  writing_[4] = 8;  // data block type: of data discs, as after switching on
  audio_ = {kAudioControlPage, 14, 4, 0, 0, 0, 0, 75, 1, 0xFF, 2, 0xFF, 0, 0, 0, 0};
}

Bytes RecorderPages::Capabilities() const {
  ByteWriter out;
  out.U8(kCapabilitiesPage);
  out.U8(28);
  out.U8(0x03);  // reads CD-R, CD-RW
  out.U8(0x07);  // writes both, and tests
  out.U8(0x81);  // plays; protects against underruns
  out.U8(0x7F);  // CD-DA, sub-channel, C2, ISRC, catalogue number
  out.U8(0x2B);  // tray
  out.U8(0);
  out.U16Be(static_cast<std::uint16_t>(SpeedOf(kRecorderReadSpeed)));
  out.U16Be(0x0100);
  out.U16Be(2048);  // KiB of buffer
  out.U16Be(static_cast<std::uint16_t>(SpeedOf(kRecorderReadSpeed)));
  out.U16Be(0);
  out.U16Be(static_cast<std::uint16_t>(SpeedOf(kRecorderWriteSpeed)));
  out.U16Be(static_cast<std::uint16_t>(speed_));
  out.U16Be(1);
  out.Fill(4, 0);
  out.U16Be(static_cast<std::uint16_t>(speed_));
  return out.Release();
}

std::optional<Bytes> RecorderPages::Sense(std::uint8_t page, bool longHeader) const {
  const std::array<Bytes, 3> pages{writing_, audio_, Capabilities()};
  ByteWriter body;
  for (const Bytes& one : pages)
    if (page == kAllPages || one[0] == page) body.Append(one);
  if (body.Size() == 0) return std::nullopt;
  ByteWriter out;
  if (longHeader) {
    out.U16Be(static_cast<std::uint16_t>(body.Size() + kHeaderBytes - 2));
    out.Fill(kHeaderBytes - 2, 0);
  } else {
    out.U8(static_cast<std::uint8_t>(body.Size() + 3));
    out.Fill(3, 0);
  }
  out.Append(body.View());
  return out.Release();
}

std::optional<SenseData> RecorderPages::Select(ByteView data) {
  if (data.size() < kHeaderBytes + 2) return sense::kParameterLength;
  if (data[6] != 0 || data[7] != 0) return sense::kInvalidParameter;  // no block descriptors
  const ByteView page = data.subspan(kHeaderBytes);
  if (page.size() != 2U + page[1]) return sense::kParameterLength;
  if (page[0] == kAudioControlPage && page.size() == audio_.size()) {
    audio_.assign(page.begin(), page.end());
    return std::nullopt;
  }
  if (page[0] != kWriteParametersPage || page.size() != writing_.size()) return sense::kInvalidParameter;
  const auto wanted = ParseWriteParameters(page);
  const bool codes = wanted && (wanted->catalogue.empty() || IsCatalogueNumber(wanted->catalogue)) &&
                     (wanted->isrc.empty() || IsIsrc(wanted->isrc));
  // This drive writes tracks and sessions, not packets.
  const bool known =
      codes && (wanted->type == WriteType::TrackAtOnce || wanted->type == WriteType::SessionAtOnce) &&
      (wanted->trackMode & ~(kControlPreEmphasis | kControlCopyPermitted | kControlData)) == 0 &&
      wanted->multiSession == 0;
  if (!known) return sense::kInvalidParameter;
  writing_.assign(page.begin(), page.end());
  return std::nullopt;
}

void RecorderPages::SetSpeed(std::uint32_t kilobytes) {
  constexpr std::array<std::uint32_t, 9> kSpeeds{2, 4, 8, 12, 16, 24, 32, 40, 48};
  // The greatest that is not above the one that is wanted.
  std::uint32_t factor = kSpeeds.front();
  for (const std::uint32_t one : kSpeeds)
    if (one * kSingleSpeed <= kilobytes) factor = one;
  speed_ = SpeedOf(factor);
}

Bytes DiscInformationReply(const RecordedDisc& disc) {
  using Status = RecordedDisc::Status;
  const auto last = static_cast<std::uint8_t>(disc.layout.tracks.size());
  const bool finished = disc.status == Status::Finalized;
  // A session that broke off: incomplete, and nothing more can be written to it.
  const bool damaged = disc.status == Status::Damaged;
  std::uint8_t status = disc.status == Status::Blank ? 0 : (finished || damaged ? 2 : 1);
  status = static_cast<std::uint8_t>(status | (disc.status == Status::Blank ? 0 : (finished ? 3 : 1)) << 2);
  ByteWriter body;
  body.U8(static_cast<std::uint8_t>(status | (disc.rewritable ? 0x10 : 0)));
  body.U8(1);  // first track
  body.U8(1);  // sessions
  body.U8(1);  // first track of the last session
  body.U8(disc.status == Status::Open ? static_cast<std::uint8_t>(last + 1)
                                      : std::max<std::uint8_t>(last, 1));
  body.U8(0);
  body.U8(disc.status == Status::Blank ? 0xFF : 0x00);
  body.Fill(3, 0);
  body.U32Be(0);  // no identification
  if (disc.status == Status::Blank) {
    PutTime(body, NegativeTime(kLeadInStart));
  } else {
    PutNoTime(body);
  }
  if (finished || damaged) {
    PutNoTime(body);
  } else {
    PutTime(body, MsfOf(disc.LastLeadOut()));
  }
  body.Fill(10, 0);
  return WithLength(body.View());
}

Bytes TrackInformationReply(const TrackState& state, Lba lastLeadOut) {
  constexpr std::uint8_t kUnknownData = 0x0F;
  ByteWriter body;
  body.U8(static_cast<std::uint8_t>(state.track.number));
  body.U8(1);  // session
  body.U8(0);
  body.U8(state.track.control);
  body.U8(static_cast<std::uint8_t>(kUnknownData | (state.blank ? 0x40 : 0)));
  body.U8(state.nextWritable ? 1 : 0);
  body.U32Be(static_cast<std::uint32_t>(state.track.start.value));
  body.U32Be(state.nextWritable ? static_cast<std::uint32_t>(state.nextWritable->value) : 0);
  body.U32Be(state.nextWritable ? static_cast<std::uint32_t>(std::max(lastLeadOut - *state.nextWritable, 0))
                                : 0);
  body.U32Be(0);
  body.U32Be(state.track.sectors);
  body.Fill(8, 0);
  return WithLength(body.View());
}

Bytes AtipReply(const RecordedDisc& disc) {
  ByteWriter body;
  body.U16Be(0);
  body.U8(0xD0);                           // writing power, reference speed
  body.U8(0);                              // unrestricted use
  body.U8(disc.rewritable ? 0xC8 : 0x80);  // valid; CD-RW or CD-R
  body.U8(0);
  const Msf leadIn = NegativeTime(kLeadInStart);
  const Msf leadOut = MsfOf(disc.LastLeadOut());
  for (const std::uint8_t byte : {leadIn.minute, leadIn.second, leadIn.frame, std::uint8_t{0}, leadOut.minute,
                                  leadOut.second, leadOut.frame, std::uint8_t{0}})
    body.U8(byte);
  body.Fill(12, 0);
  return WithLength(body.View());
}

}  // namespace ts5
