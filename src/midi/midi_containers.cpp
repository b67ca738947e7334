#include "midi/midi_containers.h"

namespace ts5 {

namespace {

constexpr TrackFaultCodes kContainerFaults = {Outcome::WrongFormat, Outcome::ReadFailed};

// A plain file from the start of its header, or an error: the magic must be the expected one.
Result<ByteView> WithMagic(ByteView midi, std::string_view magic) {
  if (midi.size() < kMidiHeaderSize) return Failure(Outcome::ReadFailed);
  if (AsText(midi.first(4)) != magic) return Failure(Outcome::WrongFormat);
  return midi;
}

// Header and tracks as far as the header counts them.
Result<ByteView> CountedTracks(ByteView midi) {
  ByteReader in(midi.first(kMidiHeaderSize));
  in.Skip(10);
  MidiTrackReader tracks(midi, in.U16Be());
  for (ByteView track; tracks.Next(track);) {
  }
  if (tracks.HasFault()) {
    return Failure(tracks.Fault() == TrackFault::NotATrack ? kContainerFaults.notATrack
                                                           : kContainerFaults.cutShort);
  }
  return midi.first(tracks.Position());
}

Result<ByteView> RiffContent(ByteView riff) {
  const auto isMidi = [](ByteView data) { return WithMagic(data, kSmfMagic); };
  return RiffMidiData(riff).and_then(isMidi).and_then(CountedTracks);
}

Result<ByteView> SequencerContent(ByteView sequencer) {
  return WithMagic(sequencer, kSequencerMagic).and_then(CountedTracks);
}

// The same file with another magic, and settings behind it for a sequencer file.
Bytes PlainFile(ByteView midi, std::string_view magic, ByteView appended = {}) {
  ByteWriter out;
  out.Reserve(midi.size() + appended.size());
  out.Append(magic);
  out.Append(midi.subspan(magic.size()));
  out.Append(appended);
  return out.Release();
}

Bytes SequencerFile(ByteView midi) {
  return PlainFile(midi, kSequencerMagic, DefaultSequencerSettings());
}

// A form RMID; with its DISP and INFO chunks when there is something to write into them.
Result<Bytes> RiffFile(ByteView midi, const RiffFileInfo* info) {
  RiffWriter out;
  out.Content().Reserve(midi.size() + 1024);
  const std::size_t form = out.Begin("RIFF", "RMID");
  const std::size_t data = out.Begin("data");
  out.Content().Append(kSmfMagic);
  out.Content().Append(midi.subspan(kSmfMagic.size()));
  if (!out.End(data)) return Failure(Outcome::ChunkNotWritten);
  if (info != nullptr) {
    const Outcome written = WriteRiffInfo(out, info->attributes, info->created);
    if (Failed(written)) return Failure(written);
  }
  if (!out.End(form)) return Failure(Outcome::ChunkNotWritten);
  return out.Content().Release();
}

}  // namespace

Result<ByteView> RiffMidiData(ByteView riff) {
  const auto content = RiffFormContent(riff, "RMID");
  if (!content) return Failure(Outcome::WrongFormat);
  const auto data = FindRiffChunk(*content, "data");
  if (!data) return Failure(Outcome::WrongFormat);
  return ByteView(data->data.data(), riff.data() + riff.size());
}

Result<Bytes> WrapInRiff(ByteView smf) {
  return RiffFile(smf, nullptr);
}

Result<Bytes> SmfToRiff(ByteView smf, const RiffFileInfo& info) {
  return WithMagic(smf, kSmfMagic).and_then([&](ByteView midi) { return RiffFile(midi, &info); });
}

Result<Bytes> SmfToSequencer(ByteView smf) {
  return WithMagic(smf, kSmfMagic).map(SequencerFile);
}

Result<Bytes> RiffToSmf(ByteView riff) {
  return RiffContent(riff).map([](ByteView midi) { return PlainFile(midi, kSmfMagic); });
}

Result<Bytes> RiffToSequencer(ByteView riff) {
  return RiffContent(riff).map(SequencerFile);
}

Result<Bytes> SequencerToRiff(ByteView sequencer, const RiffFileInfo& info) {
  return SequencerContent(sequencer).and_then([&](ByteView midi) { return RiffFile(midi, &info); });
}

Result<Bytes> SequencerToSmf(ByteView sequencer) {
  return SequencerContent(sequencer).map([](ByteView midi) { return PlainFile(midi, kSmfMagic); });
}

}  // namespace ts5
