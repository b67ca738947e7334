#include "midi/midi_file.h"

#include <algorithm>

namespace ts5 {

MidiFileInfo DetectMidiKind(ByteView beginning) {
  MidiFileInfo info;
  ByteReader in(beginning);
  MidiFileKind kind = MidiFileKind::None;
  std::string_view magic = in.Tag();
  bool open = magic == kSmfMagic;  // the format decides
  if (magic == kSequencerMagic || magic == kScoreVariantMagic) {
    kind = MidiFileKind::Sequencer;
  } else if (magic == kRiffMagic) {
    in.Seek(kRiffMidiStart);
    magic = in.Tag();
    if (magic == kSmfMagic) kind = MidiFileKind::Riff;
  }
  if (!open && kind == MidiFileKind::None) return info;

  MidiFileHeader& header = info.header;
  std::ranges::copy(magic, header.magic.begin());
  header.length = in.U32Be();
  if ((header.length & 0xFF) != 6) return info;
  header.format = in.U16Be();
  header.trackCount = in.U16Be();
  header.division = in.U16Be();
  if (!in.Ok() || (header.division & 0x8000) != 0) return info;

  if (open) kind = header.format == 0 ? MidiFileKind::Format0 : MidiFileKind::Format1;
  if (header.format == 1 && header.trackCount == 1) kind = MidiFileKind::Format0;
  info.kind = kind;
  return info;
}

Result<MidiFileInfo> ReadMidiFileHeader(const std::string& path) {
  const auto file = InputFile::Open(path);
  return file ? ReadMidiFileHeader(*file) : Failure(Outcome::SourceFailed);
}

Result<MidiFileInfo> ReadMidiFileHeader(const InputFile& file) {
  std::array<std::uint8_t, kMidiDetectionSize> beginning{};
  const auto got = file.ReadAt(0, beginning);
  if (!got) return Failure(Outcome::SourceFailed);
  const MidiFileInfo info = DetectMidiKind(ByteView(beginning).first(*got));
  if (info.kind == MidiFileKind::None) return Failure(Outcome::WrongFormat);
  return info;
}

MidiContainer ContainerOf(ByteView file) {
  const std::string_view magic = AsText(file.first(std::min<std::size_t>(4, file.size())));
  if (magic == kRiffMagic) return MidiContainer::Riff;
  if (magic == kSequencerMagic || magic == kScoreVariantMagic) return MidiContainer::Sequencer;
  return MidiContainer::Smf;
}

ByteView MidiBytesOf(ByteView file) {
  const std::size_t start = ContainerOf(file) == MidiContainer::Riff ? kRiffMidiStart : 0;
  if (file.size() < start + kMidiHeaderSize) return {};
  return file.subspan(start);
}

MidiTrackReader::MidiTrackReader(ByteView midi, std::size_t trackCount)
    : midi_(midi), position_(std::min(kMidiHeaderSize, midi.size())), left_(trackCount) {
  // A header that counts none before one that is there contradicts itself; music would be lost silently.
  hasFault_ = trackCount == 0 && ByteReader(midi_.subspan(position_)).Tag() == kTrackMagic;
  if (hasFault_) fault_ = TrackFault::NotATrack;
}

bool MidiTrackReader::Next(ByteView& track) {
  if (left_ == 0 || hasFault_) return false;
  ByteReader in(midi_.subspan(position_));
  const std::string_view magic = in.Tag();
  const std::uint32_t length = in.U32Be();
  hasFault_ = true;
  if (in.Ok() && magic != kTrackMagic) {
    fault_ = TrackFault::NotATrack;
    return false;
  }
  const ByteView bytes = in.Take(length);
  if (!in.Ok()) return false;
  hasFault_ = false;
  track = bytes;
  position_ += kChunkHeaderSize + length;
  --left_;
  return true;
}

Result<std::vector<ByteView>> MidiTracks(ByteView midi, std::size_t trackCount, TrackFaultCodes codes) {
  std::vector<ByteView> tracks;
  MidiTrackReader reader(midi, trackCount);
  for (ByteView track; reader.Next(track);) tracks.push_back(track);
  if (!reader.HasFault()) return tracks;
  return Failure(reader.Fault() == TrackFault::NotATrack ? codes.notATrack : codes.cutShort);
}

}  // namespace ts5
