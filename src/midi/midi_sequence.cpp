#include "midi/midi_sequence.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "midi/midi_events.h"
#include "midi/midi_file.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kDefaultTempo = 500'000;  // microseconds per quarter note
// Longer than any music: sums of hostile delta times stop here.
constexpr double kLongestSeconds = 100.0 * 24 * 3600;

std::chrono::nanoseconds Nanoseconds(double seconds) {
  return std::chrono::nanoseconds(static_cast<std::int64_t>(std::min(seconds, kLongestSeconds) * 1e9));
}

// Messages whose order among themselves carries meaning, so that none may be left out: program changes and
// the controllers of banks, data entry, registered parameters and channel modes.
bool OrderMatters(std::uint32_t message) {
  if (message == 0 || (message & 0xF0) == 0xC0) return true;
  if ((message & 0xF0) != 0xB0) return false;
  const std::uint32_t controller = message >> 8 & 0x7F;
  return controller == 0 || controller == 32 || controller == 6 || controller == 38 ||
         (controller >= 96 && controller <= 101) || controller >= 120;
}

// What a later message of the same kind makes void: kind and channel, and the controller or key.
std::uint32_t StateKey(std::uint32_t message) {
  const std::uint32_t kind = message & 0xF0;
  return kind == 0xB0 || kind == 0xA0 ? message & 0xFFFF : message & 0xFF;
}

}  // namespace

Result<MidiSequence> MidiSequence::FromFile(ByteView file) {
  if (file.size() > kMaxSequenceFile) return Failure(Outcome::WrongFormat);
  const MidiFileInfo info = DetectMidiKind(file);
  if (info.kind == MidiFileKind::None || info.header.division == 0) return Failure(Outcome::WrongFormat);

  MidiSequence sequence;
  sequence.division_ = info.header.division;
  std::vector<std::pair<std::uint64_t, std::uint32_t>> tempos;
  std::uint64_t lastTick = 0;
  bool anyEvent = false;

  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  for (ByteView track; tracks.Next(track);) {
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event); anyEvent = true) {
      if (event.IsMeta(kMetaSetTempo) && event.payload.size() == 3) {
        if (const std::uint32_t tempo = ByteReader(event.payload).U24Be(); tempo != 0)
          tempos.emplace_back(event.tick, tempo);
      } else if (event.IsChannelMessage()) {
        if ((event.data1 | event.data2) < 0x80)
          sequence.messages_.push_back({{}, event.tick, event.ShortMessage(), 0, 0});
      } else if (event.status == kSysExStatus && !event.payload.empty() && event.payload.back() == 0xF7) {
        const auto at = static_cast<std::uint32_t>(sequence.exclusive_.size());
        sequence.exclusive_.push_back(kSysExStatus);
        sequence.exclusive_.insert(sequence.exclusive_.end(), event.payload.begin(), event.payload.end());
        sequence.messages_.push_back(
            {{}, event.tick, 0, at, static_cast<std::uint32_t>(event.payload.size() + 1)});
      }
    }
    anyEvent = anyEvent || cursor.AtEndOfTrack();
    lastTick = std::max(lastTick, cursor.Tick());
  }
  if (!anyEvent) return Failure(Outcome::DamagedMidi);

  std::ranges::stable_sort(sequence.messages_, {}, &SequenceMessage::tick);
  sequence.BuildTempoMap(std::move(tempos));
  for (SequenceMessage& message : sequence.messages_) message.time = sequence.TimeOf(message.tick);
  sequence.duration_ = sequence.TimeOf(lastTick);
  return sequence;
}

void MidiSequence::BuildTempoMap(std::vector<std::pair<std::uint64_t, std::uint32_t>> tempos) {
  std::ranges::stable_sort(tempos, {}, &std::pair<std::uint64_t, std::uint32_t>::first);
  const auto secondsPerTick = [this](std::uint32_t tempo) { return tempo / 1e6 / division_; };
  tempoMap_.push_back({0, 0, secondsPerTick(kDefaultTempo)});
  for (const auto& [tick, tempo] : tempos) {
    const TempoChange& last = tempoMap_.back();
    const double seconds = last.seconds + static_cast<double>(tick - last.tick) * last.secondsPerTick;
    if (tick == last.tick) tempoMap_.pop_back();
    tempoMap_.push_back({tick, seconds, secondsPerTick(tempo)});
  }
}

std::chrono::nanoseconds MidiSequence::TimeOf(std::uint64_t tick) const {
  const auto next = std::ranges::upper_bound(tempoMap_, tick, {}, &TempoChange::tick);
  const TempoChange& change = *std::prev(next);
  return Nanoseconds(change.seconds + static_cast<double>(tick - change.tick) * change.secondsPerTick);
}

std::uint64_t MidiSequence::TickAt(std::chrono::nanoseconds time) const {
  const double seconds = static_cast<double>(std::max<std::int64_t>(time.count(), 0)) / 1e9;
  const auto next = std::ranges::upper_bound(tempoMap_, seconds, {}, &TempoChange::seconds);
  const TempoChange& change = *std::prev(next);
  const auto ticks = static_cast<std::uint64_t>((seconds - change.seconds) / change.secondsPerTick);
  const std::uint64_t tick = change.tick + ticks;
  return TimeOf(tick + 1) <= time ? tick + 1 : tick;  // where the division fell short of a whole number
}

std::size_t MidiSequence::FirstAt(std::chrono::nanoseconds time) const {
  return static_cast<std::size_t>(std::ranges::lower_bound(messages_, time, {}, &SequenceMessage::time) -
                                  messages_.begin());
}

std::vector<std::size_t> MidiSequence::ChaseBefore(std::size_t message) const {
  std::vector<std::size_t> chase;
  std::unordered_set<std::uint32_t> settled;
  for (std::size_t i = std::min(message, messages_.size()); i-- > 0;) {
    const SequenceMessage& candidate = messages_[i];
    if (candidate.IsNote()) continue;
    if (OrderMatters(candidate.message) || settled.insert(StateKey(candidate.message)).second)
      chase.push_back(i);
  }
  std::ranges::reverse(chase);
  return chase;
}

}  // namespace ts5
