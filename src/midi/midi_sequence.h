// A MIDI file as it is played: the messages of all tracks in order of time, by the file's tempo map.
//
// The tempo is that of the Set Tempo events of all tracks (120 beats per minute before the first one). Within
// one tick the tracks keep their order. Meta events do not sound and are left out; system exclusive messages
// are in; channel messages with data bytes above 7F, which only damaged files have, are left out.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "midi/tempo_map.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

// Larger files are not played.
inline constexpr std::size_t kMaxSequenceFile = std::size_t{64} << 20;

struct SequenceMessage {
  std::chrono::nanoseconds time{};
  std::uint64_t tick = 0;
  std::uint32_t message = 0;      // a channel message, status in the low byte; 0: system exclusive
  std::uint32_t exclusiveAt = 0;  // where the message lies among the exclusive bytes, and its length
  std::uint32_t exclusiveSize = 0;
  std::uint32_t track = 0;  // of the file, from 0

  [[nodiscard]] bool IsNoteOn() const { return (message & 0xF0) == 0x90 && (message >> 16 & 0x7F) != 0; }
  [[nodiscard]] bool IsNote() const { return (message & 0xF0) == 0x90 || (message & 0xF0) == 0x80; }
};

class MidiSequence {
 public:
  // From the image of a MIDI file in any container. A file whose tracks break off plays as far as it is
  // whole. WrongFormat: it is no MIDI file, too large, or has division 0; DamagedMidi: not one event could be
  // read.
  [[nodiscard]] static Result<MidiSequence> FromFile(ByteView file);

  [[nodiscard]] std::span<const SequenceMessage> Messages() const { return messages_; }
  // F0 to F7, as it is sent; empty for a channel message.
  [[nodiscard]] ByteView Exclusive(const SequenceMessage& message) const {
    return ByteView(exclusive_).subspan(message.exclusiveAt, message.exclusiveSize);
  }
  // The end of the last event of any track, which may lie behind the last message.
  [[nodiscard]] std::chrono::nanoseconds Duration() const { return duration_; }
  [[nodiscard]] std::uint16_t Division() const { return division_; }

  // Where a tick lies in time.
  [[nodiscard]] std::chrono::nanoseconds TimeOf(std::uint64_t tick) const { return tempos_.TimeOf(tick); }
  // The last tick at or before the time.
  [[nodiscard]] std::uint64_t TickAt(std::chrono::nanoseconds time) const { return tempos_.TickAt(time); }
  // The first message at or behind the time.
  [[nodiscard]] std::size_t FirstAt(std::chrono::nanoseconds time) const;
  // What must be sent so that the device stands as if everything before that message had been played, but for
  // the notes: programs with their banks, controllers, registered parameters, pitch bends, pressure and
  // exclusive messages. Indices of messages, in their order, without those that a later one makes void.
  [[nodiscard]] std::vector<std::size_t> ChaseBefore(std::size_t message) const;

 private:
  std::vector<SequenceMessage> messages_;
  Bytes exclusive_;
  TempoMap tempos_;
  std::chrono::nanoseconds duration_{};
  std::uint16_t division_ = 0;
};

}  // namespace ts5
