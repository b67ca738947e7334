#include "midi/midi_sequence.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "midi/midi_events.h"
#include "midi/midi_file.h"

namespace ts5 {
namespace {

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
  std::vector<TempoEvent> tempos;
  std::uint64_t lastTick = 0;
  bool anyEvent = false;

  MidiTrackReader tracks(MidiBytesOf(file), info.header.trackCount);
  std::uint32_t number = 0;
  for (ByteView track; tracks.Next(track); ++number) {
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event); anyEvent = true) {
      if (event.IsMeta(kMetaSetTempo) && event.payload.size() == 3) {
        if (const std::uint32_t tempo = ByteReader(event.payload).U24Be(); tempo != 0)
          tempos.push_back({event.tick, tempo});
      } else if (event.IsChannelMessage()) {
        if ((event.data1 | event.data2) < 0x80)
          sequence.messages_.push_back({{}, event.tick, event.ShortMessage(), 0, 0, number});
      } else if (event.status == kSysExStatus && !event.payload.empty() && event.payload.back() == 0xF7) {
        const auto at = static_cast<std::uint32_t>(sequence.exclusive_.size());
        sequence.exclusive_.push_back(kSysExStatus);
        sequence.exclusive_.insert(sequence.exclusive_.end(), event.payload.begin(), event.payload.end());
        sequence.messages_.push_back(
            {{}, event.tick, 0, at, static_cast<std::uint32_t>(event.payload.size() + 1), number});
      }
    }
    anyEvent = anyEvent || cursor.AtEndOfTrack();
    lastTick = std::max(lastTick, cursor.Tick());
  }
  if (!anyEvent) return Failure(Outcome::DamagedMidi);

  std::ranges::stable_sort(sequence.messages_, {}, &SequenceMessage::tick);
  sequence.tempos_ = TempoMap(sequence.division_, std::move(tempos));
  for (SequenceMessage& message : sequence.messages_) message.time = sequence.TimeOf(message.tick);
  sequence.duration_ = sequence.TimeOf(lastTick);
  return sequence;
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
