// Tracks by hand: events with their ticks, written with running status where it applies.
#pragma once

#include <initializer_list>

#include "midi/midi_events.h"
#include "platform/base/bytes.h"

namespace ts5::test {

class TrackBuilder {
 public:
  TrackBuilder& Note(std::uint32_t delta, int key, int velocity = 100, int channel = 0) {
    return Message(delta, 0x90 | channel, {key, velocity});
  }
  TrackBuilder& Message(std::uint32_t delta, int status, std::initializer_list<int> data) {
    (void)WriteVarLen(delta, out_);
    if (status != running_) out_.U8(static_cast<std::uint8_t>(status));
    running_ = status;
    for (const int byte : data) out_.U8(static_cast<std::uint8_t>(byte));
    return *this;
  }
  // Meta or system exclusive: everything behind the delta time, as it stands.
  TrackBuilder& Raw(std::uint32_t delta, std::initializer_list<int> bytes) {
    (void)WriteVarLen(delta, out_);
    for (const int byte : bytes) out_.U8(static_cast<std::uint8_t>(byte));
    return *this;
  }
  Bytes End(std::uint32_t delta = 0) { return Raw(delta, {0xFF, 0x2F, 0x00}).Unfinished(); }
  Bytes Unfinished() { return out_.Release(); }

 private:
  ByteWriter out_;
  int running_ = 0;
};

inline void AppendBytes(Bytes& to, ByteView bytes) {
  to.insert(to.end(), bytes.begin(), bytes.end());
}

// A whole Standard MIDI File of the tracks.
inline Bytes MidiImage(std::initializer_list<Bytes> tracks, std::uint16_t division = 192,
                       std::uint16_t format = 1) {
  ByteWriter out;
  out.Append("MThd");
  out.U32Be(6);
  out.U16Be(format);
  out.U16Be(static_cast<std::uint16_t>(tracks.size()));
  out.U16Be(division);
  for (const Bytes& track : tracks) {
    out.Append("MTrk");
    out.U32Be(static_cast<std::uint32_t>(track.size()));
    out.Append(ByteView(track));
  }
  return out.Release();
}

}  // namespace ts5::test
