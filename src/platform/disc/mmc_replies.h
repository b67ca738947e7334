// What disc drives answer, read from their bytes (SPC-3, MMC-5). Every length and number in them is a drive's
// word and is checked; what makes no sense is no answer.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/disc/disc_address.h"

namespace ts5 {

// The two name fields of a drive, e.g. "PLEXTOR" and "CD-R PX-W1610A".
struct DriveName {
  std::string vendor;   // at most 8 characters
  std::string product;  // at most 16

  [[nodiscard]] std::string Whole() const { return vendor + " " + product; }
  bool operator==(const DriveName&) const = default;
};
// Nothing when the bytes come from no disc drive.
[[nodiscard]] std::optional<DriveName> ParseInquiry(ByteView bytes);

// The control nibble of a track.
inline constexpr std::uint8_t kControlPreEmphasis = 0x1;
inline constexpr std::uint8_t kControlCopyPermitted = 0x2;
inline constexpr std::uint8_t kControlData = 0x4;

struct TocTrack {
  int number = 0;
  bool audio = true;
  std::uint32_t start = 0;    // sector
  std::uint32_t sectors = 0;  // up to the next track; the gap between two sessions is not counted
  std::uint8_t control = 0;

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

enum class DiscStatus : std::uint8_t { Blank = 0, Open = 1, Finished = 2, Other = 3 };

// READ DISC INFORMATION.
struct DiscInformation {
  DiscStatus status = DiscStatus::Other;
  bool erasable = false;
  std::uint8_t lastSession = 0;  // 0 empty, 1 incomplete, 3 complete
  int firstTrack = 0;
  int sessions = 0;
  int lastTrack = 0;
  std::uint8_t type = 0xFF;         // 0x00 CD-DA or CD-ROM, 0x10 CD-I, 0x20 CD-ROM XA, 0xFF unknown
  std::optional<Lba> leadIn = {};   // start of the lead-in of the next session
  std::optional<Lba> leadOut = {};  // the last possible start of a lead-out

  [[nodiscard]] bool Writable() const { return status == DiscStatus::Blank || status == DiscStatus::Open; }
};
[[nodiscard]] std::optional<DiscInformation> ParseDiscInformation(ByteView bytes);

// READ TRACK INFORMATION.
struct TrackInformation {
  int track = 0;
  int session = 0;
  std::uint8_t trackMode = 0;  // the control nibble
  std::uint8_t dataMode = 0;   // 1, 2: data; 15: audio or unknown
  bool damaged = false;
  bool blank = false;
  Lba start = {};
  std::optional<Lba> nextWritable = {};
  std::uint32_t freeSectors = 0;
  std::uint32_t sectors = 0;
};
[[nodiscard]] std::optional<TrackInformation> ParseTrackInformation(ByteView bytes);

// The page in the answer to MODE SENSE, from its code byte on; empty when it is not there whole.
[[nodiscard]] ByteView FindModePage6(ByteView bytes, std::uint8_t page);
[[nodiscard]] ByteView FindModePage10(ByteView bytes, std::uint8_t page);

inline constexpr std::uint8_t kWriteParametersPage = 0x05;
inline constexpr std::uint8_t kAudioControlPage = 0x0E;
inline constexpr std::uint8_t kCapabilitiesPage = 0x2A;
inline constexpr std::size_t kWriteParametersBytes = 52;

enum class WriteType : std::uint8_t { Packet = 0, TrackAtOnce = 1, SessionAtOnce = 2, Raw = 3 };

// Mode page 5 as far as audio discs need it.
struct WriteParameters {
  WriteType type = WriteType::TrackAtOnce;
  bool testWrite = false;
  bool underrunProtection = false;  // BUFE
  bool copy = false;                // the Copy bit: a higher generation copy
  std::uint8_t trackMode = 0;       // the control nibble of the track
  std::uint8_t dataBlockType = 0;   // 0: raw, 2352 bytes
  std::uint8_t sessionFormat = 0;   // 0: CD-DA or CD-ROM
  std::uint8_t multiSession = 0;    // 0: no further session
  std::uint16_t audioPause = 150;   // sectors before a track
  std::string catalogue = {};       // 13 digits, or ""
  std::string isrc = {};            // 12 characters, or ""

  bool operator==(const WriteParameters&) const = default;
};
[[nodiscard]] std::optional<WriteParameters> ParseWriteParameters(ByteView page);
// Puts the values into a page as the drive gave it, so that what is not named here stays the drive's own.
void PutWriteParameters(const WriteParameters& parameters, std::span<std::uint8_t> page);
// The page as MODE SELECT(10) takes it: behind a header of eight zeros.
[[nodiscard]] Bytes ModeSelectData(ByteView page);

// Mode page 0x2A.
struct DriveCapabilities {
  bool writesCdR = false;
  bool writesCdRw = false;
  bool testWrite = false;
  bool underrunProtection = false;
  bool c2Pointers = false;
  std::uint32_t readSpeed = 0;   // factors of the single speed
  std::uint32_t writeSpeed = 0;  // the greatest
  std::uint32_t currentWriteSpeed = 0;
  std::uint32_t bufferKiB = 0;
};
[[nodiscard]] std::optional<DriveCapabilities> ParseCapabilities(ByteView page);
// kB/s as a factor of the single speed, to the nearest.
[[nodiscard]] constexpr std::uint32_t SpeedFactor(std::uint32_t kilobytes) {
  return (kilobytes * 256 + 22'050) / 44'100;
}

// READ SUB-CHANNEL, current position.
struct SubChannelPosition {
  std::uint8_t audioStatus = 0;  // 0x11 playing, 0x12 paused, 0x13 done, 0x14 stopped by an error
  int track = 0;
  int index = 0;
  Lba address = {};
};
[[nodiscard]] std::optional<SubChannelPosition> ParsePosition(ByteView bytes);
[[nodiscard]] std::string ParseCatalogue(ByteView bytes);  // "" when the disc has none
[[nodiscard]] std::string ParseIsrc(ByteView bytes);       // "" when the track has none
// 13 digits; 12 letters and digits as an ISRC has them.
[[nodiscard]] bool IsCatalogueNumber(std::string_view text);
[[nodiscard]] bool IsIsrc(std::string_view text);

struct MechanismState {
  bool doorOpen = false;
  bool busy = false;
};
[[nodiscard]] std::optional<MechanismState> ParseMechanismStatus(ByteView bytes);

}  // namespace ts5
