#include "midi/time_base.h"

#include <algorithm>

#include "midi/midi_containers.h"
#include "midi/midi_file.h"
#include "midi/track_writer.h"

namespace ts5 {

namespace {

constexpr TrackFaultCodes kTimeBaseFaults = {Outcome::WrongFormat, Outcome::ReadFailed};
constexpr std::size_t kDivisionPosition = 12;

[[nodiscard]] constexpr bool IsTicksPerQuarter(std::uint16_t division) {
  return division != 0 && division < 0x8000;
}

// Single precision in the product as well: the float nearest to 0.7 lies below it, and a wider product takes
// tick 480 to 335.99999, each beat a tick early. Rounded to a float it is 336, and so for all beats of the
// usual time bases. Floats hold whole numbers up to 2^24; beyond that the quotient is formed of whole
// numbers.
class TickScale {
 public:
  TickScale(std::uint16_t from, std::uint16_t to)
      : from_(from), to_(to), factor_(static_cast<float>(to) / static_cast<float>(from)) {}

  [[nodiscard]] std::uint64_t operator()(std::uint64_t tick) const {
    if (tick / from_ > kFarAway / to_) return UINT64_MAX;
    const std::uint64_t exact = tick / from_ * to_ + tick % from_ * to_ / from_;
    if (std::max(tick, exact) > kMostInFloat) return exact;
    return static_cast<std::uint64_t>(static_cast<float>(tick) * factor_);
  }

 private:
  static constexpr std::uint64_t kMostInFloat = 1U << 24;
  static constexpr std::uint64_t kFarAway = UINT64_MAX / 4;  // a tick that no file can reach
  std::uint64_t from_;
  std::uint64_t to_;
  float factor_;
};

Outcome ScaleTrack(ByteView track, TickScale scale, WatchedWork& work, std::size_t done, ByteWriter& out) {
  MidiTrackWriter writer(out);
  writer.Begin();
  MidiEventCursor cursor(track);
  // Where the two kinds of rounding meet, they may differ by a tick.
  const auto place = [&](std::uint64_t tick) { return std::max(scale(tick), writer.Tick()); };
  for (MidiEvent event; cursor.Next(event);) {
    if (!writer.Delta(place(event.tick))) return Outcome::WrongFormat;
    out.Append(event.encoded);
    if (!work.GoOn(done + track.size() - cursor.Remaining())) return Outcome::Cancelled;
  }
  return !cursor.Damaged() && writer.End(place(cursor.Tick())) ? Outcome::Success : Outcome::WrongFormat;
}

Result<ByteView> MidiDataOf(ByteView file) {
  if (ContainerOf(file) == MidiContainer::Riff) return RiffMidiData(file);
  return file;
}

// Header and tracks with the new division; the magic stays.
Result<Bytes> ScaleFile(ByteView midi, std::uint16_t newDivision, const WorkWatch& watch) {
  const MidiFileInfo info = DetectMidiKind(midi);
  if (info.kind == MidiFileKind::None || !IsTicksPerQuarter(info.header.division)) {
    return Failure(Outcome::WrongFormat);
  }
  const auto tracks = MidiTracks(midi, info.header.trackCount, kTimeBaseFaults);
  if (!tracks) return Failure(tracks.error());

  ByteWriter out;
  out.Reserve(midi.size() + midi.size() / 8);
  out.Append(midi.first(kDivisionPosition));
  out.U16Be(newDivision);
  const TickScale scale(info.header.division, newDivision);
  WatchedWork work(watch, midi.size());
  std::size_t done = 0;
  for (const ByteView track : *tracks) {
    const Outcome outcome = ScaleTrack(track, scale, work, done, out);
    if (Failed(outcome)) return Failure(outcome);
    done += track.size();
  }
  return out.Release();
}

}  // namespace

Result<Bytes> ChangeTimeBase(ByteView file, std::uint16_t newDivision, const WorkWatch& watch) {
  if (!IsTicksPerQuarter(newDivision)) return Failure(Outcome::WrongFormat);
  auto scaled = MidiDataOf(file).and_then([&](ByteView midi) { return ScaleFile(midi, newDivision, watch); });
  if (!scaled || ContainerOf(file) != MidiContainer::Riff) return scaled;
  return WrapInRiff(*scaled);
}

}  // namespace ts5
