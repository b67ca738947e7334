// Writing the events of a track: absolute ticks in, delta times and bytes out.
#pragma once

#include <cstdint>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "platform/base/bytes.h"

namespace ts5 {

// Events in order of tick. Begin and End write the chunk around them.
class MidiTrackWriter {
 public:
  explicit MidiTrackWriter(ByteWriter& out) : out_(&out) {}

  void Begin() {
    out_->Append(kTrackMagic);
    out_->U32Be(0);
    start_ = out_->Size();
  }

  // False when the distance to the event before is more than a delta time can say (kMaxVarLen).
  [[nodiscard]] bool Delta(std::uint64_t tick) {
    if (!WriteVarLen(tick - tick_, *out_)) return false;
    tick_ = tick;
    return true;
  }
  // Channel messages with their status byte, all others as they stand.
  [[nodiscard]] bool Event(std::uint64_t tick, const MidiEvent& event) {
    if (!Delta(tick)) return false;
    if (!event.IsChannelMessage()) {
      out_->Append(event.encoded);
    } else {
      out_->U8(event.status);
      out_->U8(event.data1);
      if (ChannelDataSize(event.status) == 2) out_->U8(event.data2);
    }
    return true;
  }
  // The end-of-track event with the delta time that leads to tick, and the length of the chunk.
  [[nodiscard]] bool End(std::uint64_t tick) {
    const bool written = Delta(tick);
    out_->U8(kMetaStatus);
    out_->U8(kMetaEndOfTrack);
    out_->U8(0);
    const std::size_t size = out_->Size() - start_;
    if (!written || size > UINT32_MAX) return false;
    out_->PatchU32Be(start_ - 4, static_cast<std::uint32_t>(size));
    return true;
  }
  [[nodiscard]] std::uint64_t Tick() const { return tick_; }  // of the event written last

 private:
  ByteWriter* out_;
  std::size_t start_ = 0;
  std::uint64_t tick_ = 0;
};

// A plain header of six bytes.
inline void WriteMidiHeader(ByteWriter& out, std::uint16_t format, std::uint16_t tracks,
                            std::uint16_t division) {
  out.Append(kSmfMagic);
  out.U32Be(6);
  out.U16Be(format);
  out.U16Be(tracks);
  out.U16Be(division);
}

}  // namespace ts5
