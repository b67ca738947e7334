// The event walker: a track's bytes, one event after another. Every reader of tracks goes through it.
//
//   MidiEventCursor cursor(track);
//   for (MidiEvent event; cursor.Next(event);) {
//     if (event.IsNoteOn()) ... event.tick, event.Channel(), event.data1
//   }
//   if (cursor.Damaged()) return Failure(Outcome::DamagedMidi);
//
// The walk ends at the end-of-track event (meta 2F), which Next does not give; bytes behind it are never
// looked at. A track that ends without one, or inside an event, is damaged: the events before it have been
// given. Meta and system exclusive events leave the running status as it was. A cursor is a small value: a
// copy of it remembers a place in the track.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/base/bytes.h"

namespace ts5 {

inline constexpr std::uint8_t kMetaStatus = 0xFF;
inline constexpr std::uint8_t kSysExStatus = 0xF0;
inline constexpr std::uint8_t kSysExEscapeStatus = 0xF7;
inline constexpr std::uint8_t kMetaEndOfTrack = 0x2F;
inline constexpr std::uint8_t kMetaSetTempo = 0x51;
inline constexpr std::uint8_t kMetaTimeSignature = 0x58;

// --- variable-length quantities

inline constexpr std::uint32_t kMaxVarLen = 0x0FFFFFFF;  // the most that is ever written: four bytes
inline constexpr std::uint32_t kVarLenTooLarge =
    UINT32_MAX;  // stands for every value that 32 bits cannot hold

struct VarLen {
  std::uint32_t value = 0;
  std::size_t size = 0;  // bytes it took; 0: the bytes end before the quantity does
};

// Seven bits a byte, the most significant first, the top bit set on all bytes but the last. Any number of
// bytes is read; a value that does not fit becomes kVarLenTooLarge.
[[nodiscard]] inline VarLen ReadVarLen(ByteView bytes) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    value = value << 7 | (bytes[i] & 0x7FU);
    if (value > kVarLenTooLarge) value = kVarLenTooLarge;
    if (bytes[i] < 0x80) return {static_cast<std::uint32_t>(value), i + 1};
  }
  return {};
}

// One to four bytes. False, with nothing written, for a value above kMaxVarLen.
[[nodiscard]] inline bool WriteVarLen(std::uint64_t value, ByteWriter& out) {
  if (value > kMaxVarLen) return false;
  for (unsigned shift = 21; shift > 0; shift -= 7) {
    if (value >> shift != 0) out.U8(static_cast<std::uint8_t>(0x80U | (value >> shift & 0x7FU)));
  }
  out.U8(static_cast<std::uint8_t>(value & 0x7FU));
  return true;
}

// --- events

struct MidiEvent {
  std::uint64_t tick = 0;     // from the start of the track; a sum of 32-bit deltas, so it cannot overflow
  std::uint32_t delta = 0;    // ticks since the event before it
  std::uint8_t status = 0;    // 80..EF (running status resolved), F0, F7 or FF
  std::uint8_t data1 = 0;     // channel messages: first data byte, as it stands (above 7F in a damaged file)
  std::uint8_t data2 = 0;     // channel messages: second data byte, 0 where there is only one
  std::uint8_t metaType = 0;  // meta events
  ByteView payload;           // meta and system exclusive: the data behind the length
  ByteView
      encoded;  // all bytes of the event behind its delta time, as they stand (running status: no status)

  [[nodiscard]] bool IsChannelMessage() const { return status < 0xF0; }
  [[nodiscard]] std::uint8_t Channel() const { return status & 0x0F; }      // 0..15
  [[nodiscard]] std::uint8_t MessageType() const { return status & 0xF0; }  // 80, 90 .. E0
  [[nodiscard]] bool IsMeta(std::uint8_t type) const { return status == kMetaStatus && metaType == type; }
  // A Note On with velocity 0 is a note-off.
  [[nodiscard]] bool IsNoteOn() const { return MessageType() == 0x90 && data2 != 0; }
  [[nodiscard]] bool IsNoteOff() const {
    return MessageType() == 0x80 || (MessageType() == 0x90 && data2 == 0);
  }
  // The message as it is sent to a device: status in the low byte, then the data bytes.
  [[nodiscard]] std::uint32_t ShortMessage() const {
    return status | std::uint32_t{data1} << 8 | std::uint32_t{data2} << 16;
  }
};

// One data byte for program change and channel pressure, two for all other channel messages.
[[nodiscard]] constexpr std::size_t ChannelDataSize(std::uint8_t status) {
  return (status & 0xE0) == 0xC0 ? 1 : 2;
}

// Status bytes of channel messages with two data bytes.
inline constexpr std::array<bool, 256> kTwoDataBytes = [] {
  std::array<bool, 256> table{};
  for (std::size_t status = 0x80; status < 0xF0; ++status) {
    table[status] = ChannelDataSize(static_cast<std::uint8_t>(status)) == 2;
  }
  return table;
}();

class MidiEventCursor {
 public:
  MidiEventCursor() = default;
  explicit MidiEventCursor(ByteView track) : at_(track.data()), end_(track.data() + track.size()) {}

  // The next event; false at the end of the track and at damage, and from then on.
  [[nodiscard]] bool Next(MidiEvent& event);
  // For walks that hardly look at the events: the next ones, at most so many, as long as they are channel
  // messages of two data bytes with a delta time below 4000h and not among the last bytes of the track. Calls
  // take(tick, status, data1, data2) for each and gives their number; Next goes on with what comes then.
  template <typename Take>
  std::size_t TakeShortMessages(std::size_t most, Take take);

  [[nodiscard]] bool Damaged() const { return state_ == State::Damaged; }
  [[nodiscard]] bool AtEndOfTrack() const { return state_ == State::Ended; }
  // Absolute tick of the event given last; at the end of the track that of the end-of-track event.
  [[nodiscard]] std::uint64_t Tick() const { return tick_; }
  // How many bytes of the track lie behind the cursor's place.
  [[nodiscard]] std::size_t Remaining() const { return static_cast<std::size_t>(end_ - at_); }

 private:
  enum class State : std::uint8_t { Walking, Ended, Damaged };
  // With so many bytes left, any delta of one or two bytes and a channel message behind it lie inside the
  // track.
  static constexpr std::ptrdiff_t kFastBytes = 5;

  [[nodiscard]] bool NextSlowly(MidiEvent& event);
  bool Stop(State state) {
    state_ = state;
    return false;
  }
  // Takes a quantity; false when the bytes end inside it.
  [[nodiscard]] bool TakeVarLen(std::uint32_t& value) {
    const VarLen quantity = ReadVarLen({at_, Remaining()});
    value = quantity.value;
    at_ += quantity.size;
    return quantity.size != 0;
  }

  const std::uint8_t* at_ = nullptr;
  const std::uint8_t* end_ = nullptr;
  std::uint64_t tick_ = 0;
  std::uint8_t runningStatus_ = 0;  // 0: none yet
  State state_ = State::Walking;
};

// The road of nearly all events: a delta time of one or two bytes and a channel message, so far from the end
// of the track that no byte needs its own check. Whether a status byte or a second delta byte comes is left
// to branches: real tracks repeat their patterns, and a guess that is right costs nothing, where arithmetic
// without branches makes each event wait for the lengths of the one before (measured: half the speed).
inline bool MidiEventCursor::Next(MidiEvent& event) {
  if (end_ - at_ < kFastBytes || state_ != State::Walking) return NextSlowly(event);
  const std::uint8_t* at = at_;
  std::uint32_t delta = *at++;
  if (delta >= 0x80) {
    const std::uint32_t low = *at++;
    if (low >= 0x80) return NextSlowly(event);
    delta = (delta & 0x7FU) << 7 | low;
  }
  const std::uint8_t* start = at;
  std::uint8_t status = *at;
  if (status < 0x80) {
    status = runningStatus_;
  } else {
    ++at;
  }
  if (status < 0x80 || status >= 0xF0) return NextSlowly(event);
  runningStatus_ = status;
  tick_ += delta;
  event.tick = tick_;
  event.delta = delta;
  event.status = status;
  event.data1 = *at++;
  event.data2 = 0;
  if (ChannelDataSize(status) == 2) event.data2 = *at++;
  event.encoded = {start, at};
  at_ = at;
  return true;
}

// Without a branch that depends on the length of an event: whether a second delta byte or a status byte comes
// is arithmetic. It takes the same time for any music; a walk with work of its own for each event is better
// off with Next.
template <typename Take>
std::size_t MidiEventCursor::TakeShortMessages(std::size_t most, Take take) {
  if (state_ != State::Walking) return 0;
  const std::uint8_t* at = at_;
  std::uint64_t tick = tick_;
  unsigned running = runningStatus_;
  std::size_t taken = 0;
  for (; taken < most && end_ - at >= kFastBytes; ++taken) {
    const unsigned first = at[0];
    const unsigned second = at[1];
    const unsigned third = at[2];
    const unsigned longer = first >> 7;                  // 1: the delta takes two bytes
    const unsigned lead = longer != 0 ? third : second;  // status or first data byte
    const unsigned hasStatus = lead >> 7;
    const unsigned status = hasStatus != 0 ? lead : running;
    if (!kTwoDataBytes[status] || (longer & second >> 7) != 0) [[unlikely]]
      break;
    const std::uint8_t* data = at + 1 + longer + hasStatus;
    tick += first ^ ((first ^ ((first & 0x7F) << 7 | second)) & (0U - longer));
    running = status;
    take(tick, static_cast<std::uint8_t>(status), data[0], data[1]);
    at = data + 2;
  }
  at_ = at;
  tick_ = tick;
  runningStatus_ = static_cast<std::uint8_t>(running);
  return taken;
}

inline bool MidiEventCursor::NextSlowly(MidiEvent& event) {
  if (state_ != State::Walking) return false;
  if (!TakeVarLen(event.delta) || at_ == end_) return Stop(State::Damaged);
  tick_ += event.delta;
  event.tick = tick_;
  const std::uint8_t* start = at_;
  if (*at_ >= 0x80) {
    event.status = *at_++;
  } else {
    event.status = runningStatus_;
    if (runningStatus_ == 0) return Stop(State::Damaged);
  }
  if (event.IsChannelMessage()) {
    const std::size_t size = ChannelDataSize(event.status);
    if (Remaining() < size) return Stop(State::Damaged);
    runningStatus_ = event.status;
    event.data1 = at_[0];
    event.data2 = size == 2 ? at_[1] : std::uint8_t{0};
    at_ += size;
    event.encoded = {start, at_};
    return true;
  }
  if (event.status == kMetaStatus) {
    if (at_ == end_) return Stop(State::Damaged);
    event.metaType = *at_++;
    if (event.metaType == kMetaEndOfTrack) return Stop(State::Ended);
  } else if (event.status != kSysExStatus && event.status != kSysExEscapeStatus) {
    return Stop(State::Damaged);  // system common and real-time messages have no place in a track
  }
  std::uint32_t length = 0;
  if (!TakeVarLen(length) || length > Remaining()) return Stop(State::Damaged);
  event.payload = {at_, length};
  at_ += length;
  event.encoded = {start, at_};
  return true;
}

}  // namespace ts5
