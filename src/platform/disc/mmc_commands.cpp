#include "platform/disc/mmc_commands.h"

#include <algorithm>

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using enum CommandClass;

// In the order of the codes.
constexpr std::array kCommands{
    MmcCommandRow{MmcCommand::TestUnitReady, 6, Status, "TEST UNIT READY"},
    MmcCommandRow{MmcCommand::Inquiry, 6, Status, "INQUIRY"},
    MmcCommandRow{MmcCommand::ModeSense6, 6, Status, "MODE SENSE(6)"},
    MmcCommandRow{MmcCommand::StartStopUnit, 6, Mechanics, "START STOP UNIT"},
    MmcCommandRow{MmcCommand::PreventAllowRemoval, 6, Status, "PREVENT ALLOW MEDIUM REMOVAL"},
    MmcCommandRow{MmcCommand::ReadCapacity, 10, Status, "READ CAPACITY"},
    MmcCommandRow{MmcCommand::Write10, 10, Data, "WRITE(10)"},
    MmcCommandRow{MmcCommand::SynchronizeCache, 10, Flush, "SYNCHRONIZE CACHE"},
    MmcCommandRow{MmcCommand::ReadSubChannel, 10, Status, "READ SUB-CHANNEL"},
    MmcCommandRow{MmcCommand::ReadToc, 10, Status, "READ TOC/PMA/ATIP"},
    MmcCommandRow{MmcCommand::PlayAudio10, 10, Status, "PLAY AUDIO(10)"},
    MmcCommandRow{MmcCommand::ReadDiscInformation, 10, Status, "READ DISC INFORMATION"},
    MmcCommandRow{MmcCommand::ReadTrackInformation, 10, Status, "READ TRACK INFORMATION"},
    MmcCommandRow{MmcCommand::SendOpc, 10, Calibration, "SEND OPC INFORMATION"},
    MmcCommandRow{MmcCommand::ModeSelect10, 10, Status, "MODE SELECT(10)"},
    MmcCommandRow{MmcCommand::ModeSense10, 10, Status, "MODE SENSE(10)"},
    MmcCommandRow{MmcCommand::CloseTrackSession, 10, Flush, "CLOSE TRACK/SESSION"},
    MmcCommandRow{MmcCommand::ReadBufferCapacity, 10, Status, "READ BUFFER CAPACITY"},
    MmcCommandRow{MmcCommand::SendCueSheet, 10, Calibration, "SEND CUE SHEET"},
    MmcCommandRow{MmcCommand::Blank, 12, Erase, "BLANK"},
    MmcCommandRow{MmcCommand::SetCdSpeed, 12, Status, "SET CD SPEED"},
    MmcCommandRow{MmcCommand::MechanismStatus, 12, Status, "MECHANISM STATUS"},
    MmcCommandRow{MmcCommand::ReadCd, 12, Data, "READ CD"},
};

constexpr std::uint8_t kPageFormat = 0x10;    // MODE SELECT: pages, not the vendor's own bytes
constexpr std::uint8_t kImmediate = 0x01;     // CLOSE TRACK/SESSION
constexpr std::uint8_t kLoadEject = 0x02;     // START STOP UNIT
constexpr std::uint8_t kStart = 0x01;         // the same: load, not eject
constexpr std::uint8_t kSubQ = 0x40;          // READ SUB-CHANNEL: with data
constexpr std::uint8_t kDoOpc = 0x01;         // SEND OPC INFORMATION
constexpr std::uint8_t kOnlyAudio = 1U << 2;  // READ CD, expected sector type
constexpr std::uint8_t kWholeSector = 0xF8;   // READ CD: all drives know this; audio is nothing else
constexpr std::uint8_t kC2Flags = 0x02;       // READ CD
constexpr std::uint32_t kSpeedUnit = 177;     // kB/s of single speed, rounded up
constexpr std::uint32_t kFastest = 0xFFFF;

}  // namespace

std::chrono::milliseconds PatienceOf(CommandClass kind) {
  switch (kind) {
    case Status:
    case Data:
      return 10s;
    case Mechanics:
    case Calibration:
      return 60s;
    case Flush:
      return 240s;
    case Erase:
      return 1h;
  }
  return 10s;
}

std::optional<MmcCommandRow> FindMmcCommand(std::uint8_t code) {
  const auto* const row = std::ranges::find(kCommands, static_cast<MmcCommand>(code), &MmcCommandRow::code);
  return row == kCommands.end() ? std::nullopt : std::optional(*row);
}

Cdb::Cdb(MmcCommand command) {
  const MmcCommandRow row = FindMmcCommand(static_cast<std::uint8_t>(command)).value();
  bytes_[0] = static_cast<std::uint8_t>(command);
  size_ = row.cdbBytes;
  kind_ = row.kind;
}

Cdb& Cdb::Put(std::size_t at, std::uint32_t value, unsigned count) {
  for (unsigned i = 0; i < count; ++i)
    bytes_.at(at + i) = static_cast<std::uint8_t>(value >> (8 * (count - 1 - i)));
  return *this;
}

Cdb TestUnitReadyCdb() {
  return Cdb(MmcCommand::TestUnitReady);
}
Cdb InquiryCdb() {
  return Cdb(MmcCommand::Inquiry).U8(4, kInquiryBytes);
}
Cdb ModeSense6Cdb(std::uint8_t page, std::uint8_t length) {
  return Cdb(MmcCommand::ModeSense6).U8(2, page).U8(4, length);
}
Cdb ModeSense10Cdb(std::uint8_t page, std::uint16_t length) {
  return Cdb(MmcCommand::ModeSense10).U8(2, page).U16(7, length);
}
Cdb ModeSelect10Cdb(std::uint16_t length) {
  return Cdb(MmcCommand::ModeSelect10).U8(1, kPageFormat).U16(7, length);
}
Cdb EjectCdb() {
  return Cdb(MmcCommand::StartStopUnit).U8(4, kLoadEject);
}
Cdb LoadCdb() {
  return Cdb(MmcCommand::StartStopUnit).U8(4, kLoadEject | kStart);
}
Cdb PreventRemovalCdb(bool prevent) {
  return Cdb(MmcCommand::PreventAllowRemoval).U8(4, prevent ? 1 : 0);
}
Cdb ReadCapacityCdb() {
  return Cdb(MmcCommand::ReadCapacity);
}
Cdb WriteCdb(Lba address, std::uint16_t sectors) {
  return Cdb(MmcCommand::Write10).Address(2, address).U16(7, sectors);
}
Cdb SynchronizeCacheCdb() {
  return Cdb(MmcCommand::SynchronizeCache);
}
Cdb ReadSubChannelCdb(SubChannelFormat format, std::uint8_t track, std::uint16_t length) {
  return Cdb(MmcCommand::ReadSubChannel)
      .U8(2, kSubQ)
      .U8(3, static_cast<std::uint8_t>(format))
      .U8(6, track)
      .U16(7, length);
}
Cdb ReadTocCdb(TocFormat format, std::uint8_t start, std::uint16_t length) {
  return Cdb(MmcCommand::ReadToc).U8(2, static_cast<std::uint8_t>(format)).U8(6, start).U16(7, length);
}
Cdb PlayAudioCdb(Lba address, std::uint16_t sectors) {
  return Cdb(MmcCommand::PlayAudio10).Address(2, address).U16(7, sectors);
}
Cdb ReadDiscInformationCdb(std::uint16_t length) {
  return Cdb(MmcCommand::ReadDiscInformation).U16(7, length);
}
Cdb ReadTrackInformationCdb(std::uint8_t track, std::uint16_t length) {
  constexpr std::uint8_t kByTrackNumber = 1;
  return Cdb(MmcCommand::ReadTrackInformation).U8(1, kByTrackNumber).U32(2, track).U16(7, length);
}
Cdb SendOpcCdb() {
  return Cdb(MmcCommand::SendOpc).U8(1, kDoOpc);
}
Cdb CloseTrackSessionCdb(CloseWhat what, std::uint8_t track) {
  return Cdb(MmcCommand::CloseTrackSession)
      .U8(1, kImmediate)
      .U8(2, static_cast<std::uint8_t>(what))
      .U16(4, what == CloseWhat::Track ? track : 0U);
}
Cdb SendCueSheetCdb(std::uint32_t length) {
  return Cdb(MmcCommand::SendCueSheet).U24(6, length);
}
Cdb BlankCdb(BlankType type) {
  return Cdb(MmcCommand::Blank).U8(1, static_cast<std::uint8_t>(type));
}
Cdb SetCdSpeedCdb(std::uint32_t factor) {
  const std::uint32_t speed = factor == 0 ? kFastest : std::min(factor * kSpeedUnit, kFastest);
  return Cdb(MmcCommand::SetCdSpeed).U16(2, speed).U16(4, speed);
}
Cdb MechanismStatusCdb() {
  constexpr std::uint16_t kMechanismStatusBytes = 8;
  return Cdb(MmcCommand::MechanismStatus).U16(8, kMechanismStatusBytes);
}
Cdb ReadCdAudioCdb(Lba address, std::uint32_t count, bool c2, ReadSub sub) {
  return Cdb(MmcCommand::ReadCd)
      .U8(1, kOnlyAudio)
      .Address(2, address)
      .U24(6, count)
      .U8(9, kWholeSector | (c2 ? kC2Flags : 0U))
      .U8(10, static_cast<std::uint8_t>(sub));
}

}  // namespace ts5
