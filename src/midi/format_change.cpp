#include "midi/format_change.h"

#include <algorithm>
#include <array>

#include "midi/merged_events.h"
#include "midi/midi_file.h"
#include "midi/track_writer.h"

namespace ts5 {

namespace {

constexpr TrackFaultCodes kFormatFaults = {Outcome::DamagedMidi, Outcome::ReadFailed};
constexpr std::size_t kMidiChannels = 16;

struct PlainFile {
  std::uint16_t division = 0;
  std::vector<ByteView> tracks;
};

Result<PlainFile> OpenPlainFile(ByteView file) {
  if (file.size() < kMidiHeaderSize) return Failure(Outcome::ReadFailed);
  ByteReader in(file);
  if (in.Tag() != kSmfMagic) return Failure(Outcome::DamagedMidi);
  in.Skip(4);
  const std::uint16_t format = in.U16Be();
  const std::uint16_t trackCount = in.U16Be();
  const std::uint16_t division = in.U16Be();
  // A file of format 0 has one track, even when it forgot to say so.
  const std::size_t count = format == 0 ? std::max<std::size_t>(1, trackCount) : trackCount;
  return MidiTracks(file, count, kFormatFaults).map([&](std::vector<ByteView> tracks) {
    return PlainFile{division, std::move(tracks)};
  });
}

// Hands every event to write(event) -> bool.
template <typename Write>
Outcome ForEachEvent(const PlainFile& file, const WorkWatch& watch, Write write) {
  MergedEvents events(file.tracks);
  WatchedWork work(watch, events.BytesTotal());
  for (MidiEvent event; events.Next(event);) {
    if (!write(event)) return Outcome::DamagedMidi;
    if (!work.GoOn(events.BytesDone())) return Outcome::Cancelled;
  }
  return events.Damaged() ? Outcome::DamagedMidi : Outcome::Success;
}

Result<Bytes> Merge(const PlainFile& file, std::size_t size, const WorkWatch& watch) {
  ByteWriter out;
  out.Reserve(size + size / 4);
  WriteMidiHeader(out, 0, 1, file.division);
  MidiTrackWriter track(out);
  track.Begin();
  const Outcome outcome =
      ForEachEvent(file, watch, [&](const MidiEvent& event) { return track.Event(event.tick, event); });
  if (Failed(outcome)) return Failure(outcome);
  if (!track.End(track.Tick())) return Failure(Outcome::DamagedMidi);
  return out.Release();
}

// Track 0 for what has no channel, then one track a channel.
class SplitTracks {
 public:
  SplitTracks() {
    for (Part& part : parts_) part.writer.Begin();
  }

  [[nodiscard]] bool Add(const MidiEvent& event) {
    Part& part = parts_[event.IsChannelMessage() ? std::size_t{1} + event.Channel() : 0];
    part.occurs = true;
    return part.writer.Event(event.tick, event);
  }

  [[nodiscard]] Result<Bytes> Finish(std::uint16_t division) {
    parts_[0].occurs = true;
    const auto count = std::ranges::count_if(parts_, &Part::occurs);
    ByteWriter out;
    WriteMidiHeader(out, 1, static_cast<std::uint16_t>(count), division);
    for (Part& part : parts_) {
      if (!part.occurs) continue;
      if (!part.writer.End(part.writer.Tick())) return Failure(Outcome::DamagedMidi);
      out.Append(part.bytes.View());
    }
    return out.Release();
  }

 private:
  struct Part {
    ByteWriter bytes;
    MidiTrackWriter writer{bytes};
    bool occurs = false;
  };
  std::array<Part, 1 + kMidiChannels> parts_;
};

Result<Bytes> Split(const PlainFile& file, const WorkWatch& watch) {
  SplitTracks tracks;
  const Outcome outcome =
      ForEachEvent(file, watch, [&](const MidiEvent& event) { return tracks.Add(event); });
  if (Failed(outcome)) return Failure(outcome);
  return tracks.Finish(file.division);
}

}  // namespace

Result<Bytes> MergeTracksToFormat0(ByteView file, const WorkWatch& watch) {
  return OpenPlainFile(file).and_then(
      [&](const PlainFile& plain) { return Merge(plain, file.size(), watch); });
}

Result<Bytes> SplitChannelsToFormat1(ByteView file, const WorkWatch& watch) {
  return OpenPlainFile(file).and_then([&](const PlainFile& plain) { return Split(plain, watch); });
}

}  // namespace ts5
