// The commands that the program sends to disc drives, as the bytes of SPC-3 and MMC-5, with the time that
// each may take. Only bytes: who sends them is another matter.
#pragma once

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "platform/disc/disc_address.h"

namespace ts5 {

enum class MmcCommand : std::uint8_t {
  TestUnitReady = 0x00,
  Inquiry = 0x12,
  ModeSense6 = 0x1A,
  StartStopUnit = 0x1B,
  PreventAllowRemoval = 0x1E,
  ReadCapacity = 0x25,
  Write10 = 0x2A,
  SynchronizeCache = 0x35,
  ReadSubChannel = 0x42,
  ReadToc = 0x43,
  PlayAudio10 = 0x45,
  ReadDiscInformation = 0x51,
  ReadTrackInformation = 0x52,
  SendOpc = 0x54,
  ModeSelect10 = 0x55,
  ModeSense10 = 0x5A,
  CloseTrackSession = 0x5B,
  ReadBufferCapacity = 0x5C,
  SendCueSheet = 0x5D,
  Blank = 0xA1,
  SetCdSpeed = 0xBB,
  MechanismStatus = 0xBD,
  ReadCd = 0xBE,
};

// How long a kind of command may take before it counts as lost.
enum class CommandClass : std::uint8_t { Status, Data, Mechanics, Calibration, Flush, Erase };
[[nodiscard]] std::chrono::milliseconds PatienceOf(CommandClass kind);

struct MmcCommandRow {
  MmcCommand code;
  std::uint8_t cdbBytes;
  CommandClass kind;
  std::string_view name;
};
[[nodiscard]] std::optional<MmcCommandRow> FindMmcCommand(std::uint8_t code);

// A command descriptor block: the code, and zeros until its fields are put in (high byte first).
class Cdb {
 public:
  explicit Cdb(MmcCommand command);

  Cdb& U8(std::size_t at, std::uint32_t value) { return Put(at, value, 1); }
  Cdb& U16(std::size_t at, std::uint32_t value) { return Put(at, value, 2); }
  Cdb& U24(std::size_t at, std::uint32_t value) { return Put(at, value, 3); }
  Cdb& U32(std::size_t at, std::uint32_t value) { return Put(at, value, 4); }
  Cdb& Address(std::size_t at, Lba address) { return U32(at, static_cast<std::uint32_t>(address.value)); }

  [[nodiscard]] const std::uint8_t* data() const { return bytes_.data(); }   // NOLINT: the names of a range
  [[nodiscard]] std::size_t size() const { return size_; }                   // NOLINT
  [[nodiscard]] const std::uint8_t* begin() const { return bytes_.data(); }  // NOLINT
  [[nodiscard]] const std::uint8_t* end() const { return begin() + size_; }  // NOLINT
  [[nodiscard]] std::chrono::milliseconds Patience() const { return PatienceOf(kind_); }

 private:
  Cdb& Put(std::size_t at, std::uint32_t value, unsigned count);

  std::array<std::uint8_t, 12> bytes_{};
  std::size_t size_;
  CommandClass kind_;
};

inline constexpr std::size_t kInquiryBytes = 36;
inline constexpr std::uint8_t kLeadOutTrack = 0xAA;  // the number under which a table of contents has the end
inline constexpr std::uint8_t kInvisibleTrack = 0xFF;  // the one that will be written next
inline constexpr std::size_t kTocBytes = 4 + 100 * 8;

// READ TOC/PMA/ATIP.
enum class TocFormat : std::uint8_t { Tracks = 0, Sessions = 1, Full = 2, Atip = 4, CdText = 5 };
enum class SubChannelFormat : std::uint8_t { Position = 1, Catalogue = 2, Isrc = 3 };
enum class CloseWhat : std::uint8_t { Track = 1, Session = 2 };
enum class BlankType : std::uint8_t { Complete = 0, Minimal = 1 };
enum class ReadSub : std::uint8_t { None = 0, Raw = 1, Q = 2 };

inline constexpr std::size_t kRawSubBytes = 96;  // of a sector
inline constexpr std::size_t kQSubBytes = 16;
inline constexpr std::size_t kC2Bytes = 294;  // a bit for each byte of an audio sector

[[nodiscard]] Cdb TestUnitReadyCdb();
[[nodiscard]] Cdb InquiryCdb();
[[nodiscard]] Cdb ModeSense6Cdb(std::uint8_t page, std::uint8_t length);
[[nodiscard]] Cdb ModeSense10Cdb(std::uint8_t page, std::uint16_t length);
[[nodiscard]] Cdb ModeSelect10Cdb(std::uint16_t length);
[[nodiscard]] Cdb EjectCdb();
[[nodiscard]] Cdb LoadCdb();
[[nodiscard]] Cdb PreventRemovalCdb(bool prevent);
[[nodiscard]] Cdb ReadCapacityCdb();
[[nodiscard]] Cdb WriteCdb(Lba address, std::uint16_t sectors);
[[nodiscard]] Cdb SynchronizeCacheCdb();
[[nodiscard]] Cdb ReadSubChannelCdb(SubChannelFormat format, std::uint8_t track, std::uint16_t length);
// Addresses as sectors. start: the first track, or the first session, that is told of.
[[nodiscard]] Cdb ReadTocCdb(TocFormat format = TocFormat::Tracks, std::uint8_t start = 0,
                             std::uint16_t length = kTocBytes);
[[nodiscard]] Cdb PlayAudioCdb(Lba address, std::uint16_t sectors);
[[nodiscard]] Cdb ReadDiscInformationCdb(std::uint16_t length);
[[nodiscard]] Cdb ReadTrackInformationCdb(std::uint8_t track, std::uint16_t length);
[[nodiscard]] Cdb SendOpcCdb();
[[nodiscard]] Cdb CloseTrackSessionCdb(CloseWhat what, std::uint8_t track);  // comes back at once
[[nodiscard]] Cdb SendCueSheetCdb(std::uint32_t length);
[[nodiscard]] Cdb BlankCdb(BlankType type);             // comes back when it is done
[[nodiscard]] Cdb SetCdSpeedCdb(std::uint32_t factor);  // 0: as fast as it goes
[[nodiscard]] Cdb MechanismStatusCdb();
// Audio sectors of 2352 bytes, each followed by what is asked for beside; a sector of another kind ends the
// command.
[[nodiscard]] Cdb ReadCdAudioCdb(Lba address, std::uint32_t count, bool c2 = false,
                                 ReadSub sub = ReadSub::None);

}  // namespace ts5
