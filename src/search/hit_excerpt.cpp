#include "search/hit_excerpt.h"

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <optional>
#include <vector>

#include "midi/conductor.h"
#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "midi/track_writer.h"
#include "search/hit_passage.h"

namespace ts5 {
namespace {

constexpr std::uint8_t kMetaKeySignature = 0x59;
constexpr std::uint64_t kMostTicks = 0x0FFFFFFF;  // what a delta time can say

struct Place {
  std::uint64_t begin = 0;  // ticks
  std::uint64_t end = 0;
  TimeSignatureEntry metre;
  std::optional<Bytes> key;  // two bytes of its event
};

// The last key signature that is in force there.
std::optional<Bytes> KeyAt(ByteView track, std::uint64_t tick) {
  std::optional<Bytes> key;
  MidiEventCursor cursor(track);
  for (MidiEvent event; cursor.Next(event) && event.tick <= tick;) {
    if (event.IsMeta(kMetaKeySignature) && event.payload.size() == 2)
      key.emplace(event.payload.begin(), event.payload.end());
  }
  return key;
}

void WriteConductor(const Place& place, ByteWriter& out) {
  MidiTrackWriter track(out);
  const auto meta = [&](std::uint8_t type, const Bytes& data) {
    (void)track.Delta(0);
    out.U8(kMetaStatus);
    out.U8(type);
    out.U8(static_cast<std::uint8_t>(data.size()));
    out.Append(data);
  };
  track.Begin();
  const auto power = static_cast<std::uint8_t>(std::bit_width(place.metre.denominator) - 1);
  meta(kMetaTimeSignature, {static_cast<std::uint8_t>(place.metre.numerator), power, 24, 8});
  if (place.key) meta(kMetaKeySignature, *place.key);
  (void)track.End(place.end - place.begin);
}

void WriteNotes(ByteView notes, const Place& place, ByteWriter& out) {
  MidiTrackWriter track(out);
  std::array<std::bitset<128>, 16> sounding;
  track.Begin();
  MidiEventCursor cursor(notes);
  for (MidiEvent event; cursor.Next(event) && event.tick < place.end;) {
    if (event.tick < place.begin || !event.IsChannelMessage()) continue;
    const std::uint8_t kind = event.status & 0xF0;
    if (kind != 0x80 && kind != 0x90) continue;
    auto& keys = sounding[event.status & 0x0F];
    const std::size_t key = event.data1 & 0x7F;
    if (!event.IsNoteOn() && !keys[key]) continue;  // it began before
    keys[key] = event.IsNoteOn();
    (void)track.Event(event.tick - place.begin, event);
  }
  for (std::uint8_t channel = 0; channel < sounding.size(); ++channel) {
    for (std::uint8_t key = 0; key < 128; ++key) {
      if (!sounding[channel][key]) continue;
      (void)track.Delta(place.end - place.begin);
      out.U8(static_cast<std::uint8_t>(0x80 | channel));
      out.U8(key);
      out.U8(0);
    }
  }
  (void)track.End(place.end - place.begin);
}

}  // namespace

Result<Bytes> MidiExcerpt(ByteView file, const SearchHit& hit, std::size_t notes, std::size_t bars) {
  const auto passage = FindHitPassage(file, hit, notes);
  if (!passage) return Failure(passage.error());
  const MidiFileInfo info = DetectMidiKind(file);
  const std::uint16_t division = info.header.division;
  // The search counts from the track behind the conductor.
  const std::size_t number =
      static_cast<std::size_t>(std::max(hit.track, 0)) + (info.header.trackCount < 2 ? 0 : 1);
  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  ByteView conductor;
  ByteView own;
  for (std::size_t i = 0; i <= number; ++i) {
    if (!tracks.Next(own)) return Failure(Outcome::DamagedMidi);
    if (i == 0) conductor = own;
  }
  const auto scan = ScanConductorTrack(conductor, division);
  if (!scan) return Failure(scan.error());

  Place place;
  place.begin = passage->bar;
  const auto next = std::ranges::upper_bound(scan->signatures, place.begin, {}, &TimeSignatureEntry::tick);
  if (next != scan->signatures.begin()) place.metre = *std::prev(next);
  const std::uint64_t bar = BarTicks(division, place.metre.numerator, place.metre.denominator);
  if (bar == 0 || bar > kMostTicks / std::max<std::size_t>(bars, 1)) return Failure(Outcome::DamagedMidi);
  place.end = place.begin + bar * bars;
  place.key = KeyAt(conductor, place.begin);

  ByteWriter out;
  WriteMidiHeader(out, 1, 2, division);
  WriteConductor(place, out);
  WriteNotes(own, place, out);
  return out.Release();
}

}  // namespace ts5
