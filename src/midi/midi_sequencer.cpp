#include "midi/midi_sequencer.h"

#include <algorithm>

namespace ts5 {

using std::chrono::nanoseconds;

namespace {
constexpr std::uint8_t kAllSoundOff = 120;
}

void MidiSequencer::Seek(nanoseconds position) {
  transport_.Seek(std::clamp(position, nanoseconds{0}, sequence_.Duration()));
}

nanoseconds MidiSequencer::Position() const {
  return std::min(transport_.Position(), sequence_.Duration());
}

Outcome MidiSequencer::Run(std::optional<nanoseconds> end) {
  const auto messages = sequence_.Messages();
  const nanoseconds last = end.value_or(sequence_.Duration());
  std::size_t next = 0;
  Outcome result = Outcome::Success;

  transport_.Begin();
  for (bool over = false; !over && Succeeded(result);) {
    const bool atEnd = next == messages.size() || (end && messages[next].time >= *end);
    switch (transport_.Await(atEnd ? last : messages[next].time)) {
      case PlayTurn::Due:
        if (atEnd) {
          over = true;
        } else {
          result = SendMessage(messages[next++]);
        }
        break;
      case PlayTurn::Pause:
        result = Silence();
        if (Succeeded(result)) result = CutOff();
        transport_.AwaitResume();
        break;
      case PlayTurn::Seek: {
        const nanoseconds target = transport_.TakeSeek();
        next = sequence_.FirstAt(target);
        result = Silence();
        // What was played so far may lie behind the target.
        if (Succeeded(result) && begun_) result = output_.Reset();
        if (Succeeded(result)) result = Chase(next);
        transport_.Locate(target);
        break;
      }
      case PlayTurn::Stop:
        over = true;
        break;
      case PlayTurn::Gone:
        result = Outcome::WriteFailed;
        break;
    }
  }
  const bool stopped = transport_.End(std::min(transport_.Position(), last));

  const Outcome silenced = Silence();
  if (Failed(result)) return result;
  if (Failed(silenced)) return silenced;
  return stopped ? Outcome::Cancelled : Outcome::Success;
}

Outcome MidiSequencer::SendMessage(const SequenceMessage& message) {
  begun_ = true;
  if (message.message == 0) return output_.SendSystemExclusive(sequence_.Exclusive(message));
  if (message.IsNote()) {
    sounding_[message.message & 0x0F][message.message >> 8 & 0x7F] = message.IsNoteOn();
    if (message.IsNoteOn()) struck_.set(message.message & 0x0F);
  }
  return output_.Send(message.message);
}

Outcome MidiSequencer::Chase(std::size_t next) {
  for (const std::size_t index : sequence_.ChaseBefore(next)) {
    if (const Outcome sent = SendMessage(sequence_.Messages()[index]); Failed(sent)) return sent;
  }
  return Outcome::Success;
}

Outcome MidiSequencer::Silence() {
  for (std::size_t channel = 0; channel < sounding_.size(); ++channel) {
    for (std::uint8_t key = 0; key < 128; ++key) {
      if (!sounding_[channel][key]) continue;
      const auto status = static_cast<std::uint8_t>(0x80 | channel);
      if (const Outcome sent = output_.Send(ShortMidiMessage(status, key, 64)); Failed(sent)) return sent;
    }
    sounding_[channel].reset();
  }
  return Outcome::Success;
}

// A pedal that is down holds notes that have ended; it stays down, but nothing sounds.
Outcome MidiSequencer::CutOff() {
  for (std::size_t channel = 0; channel < struck_.size(); ++channel) {
    if (!struck_[channel]) continue;
    const auto status = static_cast<std::uint8_t>(0xB0 | channel);
    if (const Outcome sent = output_.Send(ShortMidiMessage(status, kAllSoundOff)); Failed(sent)) return sent;
  }
  struck_.reset();
  return Outcome::Success;
}

}  // namespace ts5
