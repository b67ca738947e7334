#include "midi/midi_sequencer.h"

#include <algorithm>

namespace ts5 {

using std::chrono::nanoseconds;

void MidiSequencer::Stop() {
  const std::lock_guard lock(mutex_);
  stop_ = true;
  steered_.notify_all();
}

void MidiSequencer::Pause() {
  const std::lock_guard lock(mutex_);
  if (paused_) return;
  located_ = Elapsed();
  paused_ = true;
  steered_.notify_all();
}

void MidiSequencer::Resume() {
  const std::lock_guard lock(mutex_);
  if (!paused_) return;
  paused_ = false;
  locatedAt_ = Clock::now();
  steered_.notify_all();
}

void MidiSequencer::Seek(nanoseconds position) {
  const std::lock_guard lock(mutex_);
  seek_ = std::clamp(position, nanoseconds{0}, sequence_.Duration());
  steered_.notify_all();
}

bool MidiSequencer::Paused() const {
  const std::lock_guard lock(mutex_);
  return paused_;
}

nanoseconds MidiSequencer::Position() const {
  const std::lock_guard lock(mutex_);
  return std::min(seek_.value_or(Elapsed()), sequence_.Duration());
}

nanoseconds MidiSequencer::Elapsed() const {
  return paused_ || !running_ ? located_ : located_ + (Clock::now() - locatedAt_);
}

void MidiSequencer::Locate(nanoseconds position) {
  located_ = position;
  locatedAt_ = Clock::now();
}

Outcome MidiSequencer::Run(std::optional<nanoseconds> end) {
  const auto messages = sequence_.Messages();
  const nanoseconds last = end.value_or(sequence_.Duration());
  std::size_t next = 0;
  Outcome result = Outcome::Success;

  std::unique_lock lock(mutex_);
  running_ = true;
  Locate(nanoseconds{0});
  while (!stop_ && Succeeded(result)) {
    if (seek_) {
      const nanoseconds target = *seek_;
      seek_.reset();
      next = sequence_.FirstAt(target);
      lock.unlock();
      result = Silence();
      if (Succeeded(result)) result = Chase(next);
      lock.lock();
      Locate(target);
      continue;
    }
    if (paused_) {
      lock.unlock();
      result = Silence();
      lock.lock();
      steered_.wait(lock, [this] { return stop_ || !paused_ || seek_; });
      continue;
    }
    const bool atEnd = next == messages.size() || (end && messages[next].time >= *end);
    const nanoseconds due = atEnd ? last : messages[next].time;
    if (Elapsed() < due) {
      steered_.wait_until(lock, locatedAt_ + (due - located_));
      continue;
    }
    if (atEnd) break;
    lock.unlock();
    result = SendMessage(messages[next++]);
    lock.lock();
  }
  located_ = std::min(Elapsed(), last);
  running_ = false;
  const bool stopped = stop_;
  lock.unlock();

  const Outcome silenced = Silence();
  if (Failed(result)) return result;
  if (Failed(silenced)) return silenced;
  return stopped ? Outcome::Cancelled : Outcome::Success;
}

Outcome MidiSequencer::SendMessage(const SequenceMessage& message) {
  if (message.message == 0) return output_.SendSystemExclusive(sequence_.Exclusive(message));
  if (message.IsNote()) {
    sounding_[message.message & 0x0F][message.message >> 8 & 0x7F] = message.IsNoteOn();
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
  for (std::uint8_t channel = 0; channel < sounding_.size(); ++channel) {
    for (std::uint8_t key = 0; key < 128; ++key) {
      if (!sounding_[channel][key]) continue;
      const auto status = static_cast<std::uint8_t>(0x80 | channel);
      if (const Outcome sent = output_.Send(ShortMidiMessage(status, key, 64)); Failed(sent)) return sent;
    }
    sounding_[channel].reset();
  }
  return Outcome::Success;
}

}  // namespace ts5
