#include "midi/conductor.h"

#include <algorithm>
#include <iterator>

#include "midi/midi_events.h"

namespace ts5 {

namespace {

constexpr std::uint32_t kMicrosecondsPerMinute = 60'000'000;
constexpr std::uint8_t kMaxDenominatorExponent = 31;
constexpr std::size_t kEventsPerPoll = 1 << 16;

void AddSignature(const MidiEvent& event, std::uint16_t division, TimeSignatureEntry& current,
                  TimeSignatureMap& map) {
  if (event.payload.size() < 2 || event.payload[1] > kMaxDenominatorExponent) return;
  const std::uint32_t numerator = event.payload[0];
  const std::uint32_t denominator = std::uint32_t{1} << event.payload[1];
  if (BarTicks(division, numerator, denominator) == 0) return;

  const std::uint64_t bar = BarTicks(division, current.numerator, current.denominator);
  const std::uint64_t since = event.tick - current.tick;
  const std::uint64_t bars = current.bars + since / bar;
  if (bars > 0 && map.empty()) map.push_back({});
  current = {event.tick - since % bar, bars, numerator, denominator};
  map.push_back(current);
}

}  // namespace

Result<Conductor> ScanConductorTrack(ByteView track, std::uint16_t division,
                                     const std::function<bool()>& stopped) {
  Conductor conductor;
  TimeSignatureEntry current;
  MidiEventCursor cursor(track);
  const auto passOver = [](std::uint64_t, std::uint8_t, std::uint8_t, std::uint8_t) {};
  std::size_t untilPoll = kEventsPerPoll;
  for (MidiEvent event;;) {
    untilPoll -= cursor.TakeShortMessages(untilPoll, passOver);
    if (untilPoll == 0) {
      if (stopped && stopped()) return Failure(Outcome::Cancelled);
      untilPoll = kEventsPerPoll;
      continue;
    }
    if (!cursor.Next(event)) break;
    --untilPoll;
    if (event.status != kMetaStatus) continue;
    if (event.metaType == kMetaTimeSignature) {
      AddSignature(event, division, current, conductor.signatures);
    } else if (event.metaType == kMetaSetTempo && !conductor.tempo && event.payload.size() >= 3) {
      const std::uint32_t quarter = ByteReader(event.payload).U24Be();
      if (quarter != 0) conductor.tempo = kMicrosecondsPerMinute / quarter;
    }
  }
  if (cursor.Damaged()) return Failure(Outcome::DamagedMidi);
  if (conductor.signatures.empty()) conductor.signatures.push_back({});
  return conductor;
}

std::uint64_t BarOf(const TimeSignatureMap& map, std::uint16_t division, std::uint64_t tick) {
  const auto after = std::ranges::upper_bound(map, tick, {}, &TimeSignatureEntry::tick);
  if (after == map.begin()) return 0;
  const TimeSignatureEntry& entry = *std::prev(after);
  const std::uint64_t bar = BarTicks(division, entry.numerator, entry.denominator);
  return bar == 0 ? entry.bars : entry.bars + (tick - entry.tick) / bar;
}

}  // namespace ts5
