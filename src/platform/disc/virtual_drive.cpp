#include "platform/disc/virtual_drive.h"

#include <algorithm>
#include <array>
#include <span>

namespace ts5 {
namespace {

constexpr std::uint8_t kPointFirst = 0xA0;
constexpr std::uint8_t kPointLast = 0xA1;
constexpr std::uint8_t kPointLeadOut = 0xA2;

std::uint8_t AdrControl(std::uint8_t control) {
  return static_cast<std::uint8_t>(0x10 | control);
}

void PutTime(ByteWriter& out, Msf time) {
  out.U8(0);
  out.U8(time.minute);
  out.U8(time.second);
  out.U8(time.frame);
}

// Behind its length field, which does not count itself.
Bytes WithLength(ByteView body) {
  ByteWriter out;
  out.U16Be(static_cast<std::uint16_t>(body.size()));
  out.Append(body);
  return out.Release();
}

Bytes TrackToc(const DiscLayout& layout, int from, bool asTimes) {
  ByteWriter body;
  body.U8(static_cast<std::uint8_t>(layout.tracks.front().number));
  body.U8(static_cast<std::uint8_t>(layout.tracks.back().number));
  const auto add = [&](std::uint8_t control, std::uint8_t number, Lba start) {
    body.U8(0);
    body.U8(AdrControl(control));
    body.U8(number);
    body.U8(0);
    if (asTimes) {
      PutTime(body, MsfOf(start));
    } else {
      body.U32Be(static_cast<std::uint32_t>(start.value));
    }
  };
  for (const DiscTrack& track : layout.tracks)
    if (from != kLeadOutTrack && track.number >= from)
      add(track.control, static_cast<std::uint8_t>(track.number), track.start);
  add(layout.tracks.back().control & kControlData, kLeadOutTrack, layout.leadOut);
  return WithLength(body.View());
}

Bytes FullToc(const DiscLayout& layout) {
  ByteWriter body;
  body.U8(1);  // first and last session
  body.U8(1);
  const auto add = [&](std::uint8_t control, std::uint8_t point, Msf time) {
    body.U8(1);
    body.U8(AdrControl(control));
    body.U8(0);
    body.U8(point);
    body.Fill(3, 0);
    PutTime(body, time);
  };
  const DiscTrack& first = layout.tracks.front();
  const DiscTrack& last = layout.tracks.back();
  add(first.control, kPointFirst, {static_cast<std::uint8_t>(first.number), 0, 0});
  add(last.control, kPointLast, {static_cast<std::uint8_t>(last.number), 0, 0});
  add(last.control, kPointLeadOut, MsfOf(layout.leadOut));
  for (const DiscTrack& track : layout.tracks)
    add(track.control, static_cast<std::uint8_t>(track.number), MsfOf(track.start));
  return WithLength(body.View());
}

Bytes SessionToc(const DiscLayout& layout) {
  ByteWriter body;
  const DiscTrack& first = layout.tracks.front();
  body.U8(1);
  body.U8(1);
  body.U8(0);
  body.U8(AdrControl(first.control));
  body.U8(static_cast<std::uint8_t>(first.number));
  body.U8(0);
  body.U32Be(static_cast<std::uint32_t>(first.start.value));
  return WithLength(body.View());
}

Bytes TextToc(const DiscLayout& layout) {
  ByteWriter body;
  body.U16Be(0);
  body.Append(layout.cdText);
  return WithLength(body.View());
}

// P and Q of a sector, a bit of each in every byte; R to W are empty.
void PutRawSub(const std::array<std::uint8_t, 12>& q, bool pause, std::span<std::uint8_t> out) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const bool bit = (q[i / 8] >> (7 - i % 8) & 1) != 0;
    out[i] = static_cast<std::uint8_t>((pause ? 0x80 : 0) | (bit ? 0x40 : 0));
  }
}

}  // namespace

ScsiReply VirtualDrive::Give(ByteView bytes, const ScsiCommand& command, std::size_t allocation) {
  const std::size_t count = std::min({bytes.size(), command.in.size(), allocation});
  std::copy_n(bytes.begin(), count, command.in.begin());
  return {true, {}, count};
}

std::uint32_t VirtualDrive::Field(const ScsiCommand& command, std::size_t at, unsigned count) {
  std::uint32_t value = 0;
  for (const std::uint8_t byte : command.cdb.subspan(at, count)) value = value << 8 | byte;
  return value;
}

ScsiReply VirtualDrive::Send(const ScsiCommand& command) {
  if (command.cdb.empty()) return Refused(sense::kInvalidField);
  const auto row = FindMmcCommand(command.cdb[0]);
  if (!row) return Refused(sense::kUnknownCommand);
  if (command.cdb.size() < row->cdbBytes) return Refused(sense::kInvalidField);
  if (row->code == MmcCommand::Inquiry) return Inquiry(command);
  if (const auto attention = Attention()) return Refused(*attention);
  return Answer(*row, command);
}

ScsiReply VirtualDrive::Answer(const MmcCommandRow& row, const ScsiCommand& command) {
  const auto read = [&](auto reader) {
    if (const auto sense = NotReady()) return Refused(*sense);
    const DiscLayout* const layout = Layout();
    if (layout == nullptr || layout->tracks.empty()) return Refused(sense::kIncompatibleMedium);
    return (this->*reader)(command, *layout);
  };
  switch (row.code) {
    case MmcCommand::TestUnitReady: {
      const auto sense = NotReady();
      return sense ? Refused(*sense) : ScsiReply{true, {}, 0};
    }
    case MmcCommand::ReadToc:
      if ((command.cdb[2] & 0x0F) == static_cast<int>(TocFormat::Atip)) return Other(row, command);
      return read(&VirtualDrive::ReadToc);
    case MmcCommand::ReadCd:
      return read(&VirtualDrive::ReadCd);
    case MmcCommand::ReadSubChannel:
      return read(&VirtualDrive::ReadSubChannel);
    case MmcCommand::PlayAudio10:
      return read(&VirtualDrive::Play);
    case MmcCommand::ReadCapacity:
      return read(&VirtualDrive::ReadCapacity);
    case MmcCommand::MechanismStatus:
      return MechanismStatus(command);
    default:
      return Other(row, command);
  }
}

ScsiReply VirtualDrive::Other(const MmcCommandRow& row, const ScsiCommand& /*command*/) {
  if (row.code == MmcCommand::ReadToc) return Refused(sense::kInvalidField);
  if (row.code == MmcCommand::SetCdSpeed || row.code == MmcCommand::PreventAllowRemoval) return {true, {}, 0};
  return Refused(sense::kUnknownCommand);
}

ScsiReply VirtualDrive::Inquiry(const ScsiCommand& command) const {
  const auto field = [](std::string text, std::size_t width) {
    text.resize(width, ' ');
    return text;
  };
  ByteWriter out;
  out.U8(0x05);  // a disc drive
  out.U8(0x80);  // whose medium can be taken out
  out.U8(0x05);  // SPC-3
  out.U8(0x02);
  out.U8(kInquiryBytes - 5);
  out.Fill(3, 0);
  out.Append(field(name_.vendor, 8));
  out.Append(field(name_.product, 16));
  out.Append(field("5.0", 4));
  return Give(out.View(), command, Field(command, 3, 2));
}

ScsiReply VirtualDrive::ReadToc(const ScsiCommand& command, const DiscLayout& layout) const {
  const bool asTimes = (command.cdb[1] & 0x02) != 0;
  const int from = command.cdb[6];
  const std::size_t allocation = Field(command, 7, 2);
  switch (static_cast<TocFormat>(command.cdb[2] & 0x0F)) {
    case TocFormat::Tracks:
      if (from != kLeadOutTrack && from > layout.tracks.back().number) return Refused(sense::kInvalidField);
      return Give(TrackToc(layout, from, asTimes), command, allocation);
    case TocFormat::Sessions:
      return Give(SessionToc(layout), command, allocation);
    case TocFormat::Full:
      if (from > 1) return Refused(sense::kInvalidField);
      return Give(FullToc(layout), command, allocation);
    case TocFormat::CdText:
      if (layout.cdText.empty()) return Refused(sense::kInvalidField);
      return Give(TextToc(layout), command, allocation);
    case TocFormat::Atip:
      break;
  }
  return Refused(sense::kInvalidField);
}

ScsiReply VirtualDrive::ReadCd(const ScsiCommand& command, const DiscLayout& layout) {
  const unsigned kind = command.cdb[1] >> 2 & 0x07;
  const Lba first{static_cast<std::int32_t>(Field(command, 2, 4))};
  const std::uint32_t count = Field(command, 6, 3);
  const unsigned mainChannel = command.cdb[9] & 0xF8;
  const unsigned errors = command.cdb[9] >> 1 & 0x03;
  const unsigned sub = command.cdb[10] & 0x07;
  if (kind > 1 || mainChannel == 0 || errors > 1 || sub > 2) return Refused(sense::kInvalidField);
  if (first < layout.First() || first > layout.leadOut ||
      count > static_cast<std::uint32_t>(layout.leadOut - first))
    return Refused(sense::kOutOfRange);
  const std::size_t subBytes = sub == 1 ? kRawSubBytes : (sub == 2 ? kQSubBytes : 0);
  const std::size_t extra = (errors != 0 ? kC2Bytes : 0) + subBytes;
  const std::size_t stride = kAudioSectorBytes + extra;
  const std::size_t size = count * stride;
  if (size > command.in.size()) return Refused(sense::kInvalidField);

  const auto audio = command.in.first(count * kAudioSectorBytes);
  const Outcome read = ReadAudio(first, audio);
  if (read == Outcome::InvalidParameter) return Refused(sense::kNotThatKindOfTrack);
  if (Failed(read)) return Refused(sense::kUnreadable);
  if (extra == 0) return {true, {}, size};
  // The sectors move to their places from behind, each followed by what was asked for.
  for (std::uint32_t i = count; i-- > 0;) {
    const auto from = audio.subspan(i * kAudioSectorBytes, kAudioSectorBytes);
    std::copy_backward(from.begin(), from.end(),
                       command.in.begin() + static_cast<std::ptrdiff_t>(i * stride + kAudioSectorBytes));
    const auto tail = command.in.subspan(i * stride + kAudioSectorBytes, extra);
    std::ranges::fill(tail, std::uint8_t{0});
    if (subBytes == 0) continue;
    const Lba address = first + static_cast<std::int32_t>(i);
    const auto q = SubQOf(layout, address);
    const bool pause = layout.PlaceOf(address).index == 0;
    const auto target = tail.last(subBytes);
    if (sub == 1) {
      PutRawSub(q, pause, target);
    } else {
      std::ranges::copy(q, target.begin());
      target[15] = pause ? 0x80 : 0;
    }
  }
  return {true, {}, size};
}

ScsiReply VirtualDrive::Play(const ScsiCommand& command, const DiscLayout& layout) {
  const Lba address{static_cast<std::int32_t>(Field(command, 2, 4))};
  const auto count = static_cast<std::int32_t>(Field(command, 7, 2));
  if (address < layout.First() || address + count > layout.leadOut) return Refused(sense::kOutOfRange);
  if ((layout.PlaceOf(address).control & kControlData) != 0) return Refused(sense::kNotThatKindOfTrack);
  played_ = address;
  return {true, {}, 0};
}

ScsiReply VirtualDrive::ReadSubChannel(const ScsiCommand& command, const DiscLayout& layout) const {
  constexpr std::uint8_t kPaused = 0x12;
  constexpr std::size_t kCodeBytes = 20;
  const int number = command.cdb[6];
  ByteWriter body;
  switch (static_cast<SubChannelFormat>(command.cdb[3])) {
    case SubChannelFormat::Position: {
      const DiscPlace place = layout.PlaceOf(played_);
      body.U8(static_cast<std::uint8_t>(SubChannelFormat::Position));
      body.U8(AdrControl(place.control));
      body.U8(static_cast<std::uint8_t>(place.track));
      body.U8(static_cast<std::uint8_t>(place.index));
      body.U32Be(static_cast<std::uint32_t>(played_.value));
      body.U32Be(place.index == 0 ? 0U - place.relative : place.relative);
      break;
    }
    case SubChannelFormat::Catalogue:
      body.U8(static_cast<std::uint8_t>(SubChannelFormat::Catalogue));
      body.Fill(3, 0);
      body.U8(layout.catalogue.empty() ? 0 : 0x80);
      body.Append(layout.catalogue);
      break;
    case SubChannelFormat::Isrc: {
      const auto track = std::ranges::find(layout.tracks, number, &DiscTrack::number);
      if (track == layout.tracks.end()) return Refused(sense::kInvalidField);
      body.U8(static_cast<std::uint8_t>(SubChannelFormat::Isrc));
      body.U8(AdrControl(track->control));
      body.U8(static_cast<std::uint8_t>(number));
      body.U8(0);
      body.U8(track->isrc.empty() ? 0 : 0x80);
      body.Append(track->isrc);
      break;
    }
    default:
      return Refused(sense::kInvalidField);
  }
  if (static_cast<SubChannelFormat>(command.cdb[3]) != SubChannelFormat::Position)
    body.Fill(kCodeBytes - body.Size(), 0);
  ByteWriter out;
  out.U8(0);
  out.U8(kPaused);
  out.U16Be(static_cast<std::uint16_t>(body.Size()));
  out.Append(body.View());
  return Give(out.View(), command, Field(command, 7, 2));
}

ScsiReply VirtualDrive::ReadCapacity(const ScsiCommand& command, const DiscLayout& layout) const {
  ByteWriter out;
  out.U32Be(static_cast<std::uint32_t>(layout.leadOut.value - 1));
  out.U32Be(2048);
  return Give(out.View(), command, 8);
}

ScsiReply VirtualDrive::MechanismStatus(const ScsiCommand& command) const {
  ByteWriter out;
  out.U8(0);
  out.U8(0);  // nothing is under way
  out.U24Be(static_cast<std::uint32_t>(std::max(played_.value, 0)));
  out.U8(0);
  out.U16Be(0);
  return Give(out.View(), command, Field(command, 8, 2));
}

}  // namespace ts5
