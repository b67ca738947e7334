// MIDI files in their three containers, and what every reader of them shares: the kind of a file, its header
// and its track chunks.
//
//   Standard MIDI File   "MThd" header, "MTrk" chunks (MIDI Manufacturers Association, formats 0, 1 and 2)
//   RIFF RMID (.rmi)     a Standard MIDI File inside a RIFF form, beginning at byte 20
//   sequencer file       a Standard MIDI File with the magic "RDL3" (.rdl) or "STVR", and a block at its end
//
// Nothing is parsed ahead: a track is the bytes of its chunk, walked with midi_events.h where it is needed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/input_file.h"

namespace ts5 {

// The content kinds by their fixed numbers. A file whose header says format 1 with exactly one track is
// Format0, whatever its container; ContainerOf tells how the bytes are wrapped.
enum class MidiFileKind : std::int32_t {
  None = -1,
  Format0 = 13,
  Format1 = 14,  // format 2 as well
  Riff = 15,
  Sequencer = 16,
};

enum class MidiContainer { Smf, Riff, Sequencer };

inline constexpr std::size_t kMidiHeaderSize = 14;
inline constexpr std::size_t kRiffMidiStart = 20;  // where the Standard MIDI File of a RIFF form begins
inline constexpr std::size_t kMidiDetectionSize = kRiffMidiStart + kMidiHeaderSize;
inline constexpr std::size_t kChunkHeaderSize = 8;
inline constexpr std::string_view kSmfMagic = "MThd";
inline constexpr std::string_view kSequencerMagic = "RDL3";
inline constexpr std::string_view kScoreVariantMagic = "STVR";
inline constexpr std::string_view kTrackMagic = "MTrk";
inline constexpr std::string_view kRiffMagic = "RIFF";

struct MidiFileHeader {
  std::array<char, 4> magic{};   // as it stands in the file
  std::uint32_t length = 6;      // of the header chunk; only its last byte is trusted
  std::uint16_t format = 0;      // 0, 1 or 2
  std::uint16_t trackCount = 0;  // as the header claims
  std::uint16_t division = 0;    // ticks per quarter note, below 8000h; 0 in a damaged file

  [[nodiscard]] std::string_view Magic() const { return {magic.data(), magic.size()}; }
};

struct MidiFileInfo {
  MidiFileHeader header;
  MidiFileKind kind = MidiFileKind::None;
};

// Kind and header from the first kMidiDetectionSize bytes of a file (more are welcome). Kind None: unknown
// magic, a header length whose last byte is not 6, SMPTE division, or fewer bytes than the header has; of the
// header, what was read before that.
[[nodiscard]] MidiFileInfo DetectMidiKind(ByteView beginning);

// SourceFailed: the file cannot be opened. WrongFormat: it is no MIDI file.
[[nodiscard]] Result<MidiFileInfo> ReadMidiFileHeader(const std::string& path);
// Of a file that is open already. SourceFailed: it cannot be read.
[[nodiscard]] Result<MidiFileInfo> ReadMidiFileHeader(const InputFile& file);

// How the bytes of a MIDI file are wrapped, from their first four; Smf for everything unknown.
[[nodiscard]] MidiContainer ContainerOf(ByteView file);

// The bytes from the 14-byte header on, whatever the container; empty when the file ends before.
[[nodiscard]] ByteView MidiBytesOf(ByteView file);

// Why the next track cannot be had: the header promises more tracks than the file has whole.
enum class TrackFault {
  NotATrack,  // another chunk stands where a track should, or a track where the header counts none
  CutShort,   // the file ends inside the chunk or before it
};

// The track chunks in file order: as many as the header claims, from a file image that begins with a MIDI
// header (MidiBytesOf). What lies behind the last one is never looked at.
//
//   MidiTrackReader tracks(MidiBytesOf(file), header.trackCount);
//   while (tracks.Next(track)) ...          // the bytes of the chunk, without its eight header bytes
//   if (tracks.Fault()) ...                 // the tracks before were complete
class MidiTrackReader {
 public:
  MidiTrackReader(ByteView midi, std::size_t trackCount);

  [[nodiscard]] bool Next(ByteView& track);
  [[nodiscard]] bool HasFault() const { return hasFault_; }
  [[nodiscard]] TrackFault Fault() const { return fault_; }
  // Behind the last track that was read, counted from the MIDI header.
  [[nodiscard]] std::size_t Position() const { return position_; }

 private:
  ByteView midi_;
  std::size_t position_;
  std::size_t left_;
  bool hasFault_ = false;
  TrackFault fault_ = TrackFault::CutShort;
};

// All tracks the header claims. A fault becomes the code that the caller has for it.
struct TrackFaultCodes {
  Outcome notATrack;
  Outcome cutShort;
};
inline constexpr TrackFaultCodes kReaderFaults = {Outcome::DamagedMidi, Outcome::DamagedMidi};
[[nodiscard]] Result<std::vector<ByteView>> MidiTracks(ByteView midi, std::size_t trackCount,
                                                       TrackFaultCodes codes = kReaderFaults);

}  // namespace ts5
