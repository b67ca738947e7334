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

void MidiSequencer::Practise(const Practice& practice) {
  {
    const std::lock_guard lock(mutex_);
    wanted_ = practice;
  }
  transport_.SetRate(practice.Rate());
  transport_.Change();
}

nanoseconds MidiSequencer::Position() const {
  return std::min(transport_.Position(), sequence_.Duration());
}

Outcome MidiSequencer::Run(std::optional<nanoseconds> end) {
  const auto messages = sequence_.Messages();
  std::size_t next = 0;
  Outcome result = Outcome::Success;

  transport_.Begin();
  for (bool over = false; !over && Succeeded(result);) {
    const auto& passage = practice_.passage;
    const nanoseconds last = passage ? passage->to : end.value_or(sequence_.Duration());
    const bool ends = passage || end;
    const bool atEnd = next == messages.size() || (ends && messages[next].time >= last);
    switch (transport_.Await(atEnd ? last : messages[next].time)) {
      case PlayTurn::Due:
        if (atEnd && passage) {
          result = JumpTo(passage->from, next);
        } else if (atEnd) {
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
      case PlayTurn::Seek:
        result = JumpTo(transport_.TakeSeek(), next);
        break;
      case PlayTurn::Change:
        result = TakePractice();
        break;
      case PlayTurn::Stop:
        over = true;
        break;
      case PlayTurn::Gone:
        result = Outcome::WriteFailed;
        break;
    }
  }
  const bool stopped = transport_.End(std::min(transport_.Position(), end.value_or(sequence_.Duration())));

  const Outcome silenced = Silence();
  if (Failed(result)) return result;
  if (Failed(silenced)) return silenced;
  return stopped ? Outcome::Cancelled : Outcome::Success;
}

Outcome MidiSequencer::JumpTo(nanoseconds place, std::size_t& next) {
  next = sequence_.FirstAt(place);
  Outcome result = Silence();
  // What was played so far may lie behind the place.
  if (Succeeded(result) && begun_) result = output_.Reset();
  if (Succeeded(result)) result = Chase(next);
  transport_.Locate(place);
  return result;
}

// The notes of tracks that are to be silent end at once.
Outcome MidiSequencer::TakePractice() {
  {
    const std::lock_guard lock(mutex_);
    practice_ = wanted_;
  }
  for (std::size_t channel = 0; channel < sounding_.size(); ++channel) {
    for (std::uint8_t key = 0; key < 128; ++key) {
      if (!sounding_[channel][key] || practice_.Sounds(soundsOf_[channel][key])) continue;
      if (const Outcome ended = EndNote(channel, key); Failed(ended)) return ended;
      sounding_[channel].reset(key);
    }
  }
  return Outcome::Success;
}

Outcome MidiSequencer::SendMessage(const SequenceMessage& message) {
  begun_ = true;
  if (message.message == 0) return output_.SendSystemExclusive(sequence_.Exclusive(message));
  if (message.IsNote()) {
    // What is silent neither begins nor ends what others play.
    if (!practice_.Sounds(message.track)) return Outcome::Success;
    const std::size_t key = message.message >> 8 & 0x7F;
    sounding_[message.message & 0x0F][key] = message.IsNoteOn();
    soundsOf_[message.message & 0x0F][key] = message.track;
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
      if (const Outcome ended = EndNote(channel, key); Failed(ended)) return ended;
    }
    sounding_[channel].reset();
  }
  return Outcome::Success;
}

Outcome MidiSequencer::EndNote(std::size_t channel, std::uint8_t key) {
  return output_.Send(ShortMidiMessage(static_cast<std::uint8_t>(0x80 | channel), key, 64));
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
