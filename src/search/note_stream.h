// The note-ons of a track in order, with a look ahead to the next onset. The track is walked block by block
// in bounded memory; every byte is decoded at most twice, whatever the track holds.
//
// Note-ons with velocity 0 are note-offs and do not appear.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>

#include "midi/midi_events.h"
#include "platform/base/bytes.h"

namespace ts5 {

// Notes closer than this to an onset sound with it, like the other notes of a chord.
inline constexpr std::uint64_t kChordTicks = 10;

class NoteStream {
 public:
  // stopAtDrums: the stream ends at the first event of channel 10. The look ahead goes on behind it.
  // measures: Distances are wanted. cancelled: polled by looks far ahead; may be empty.
  NoteStream(ByteView track, bool stopAtDrums, bool measures, const std::function<bool()>& cancelled)
      : cursor_(track), cancelled_(cancelled), stopAtDrums_(stopAtDrums), measures_(measures) {}

  // Decodes the next block; it may be empty. False when there are no more, at the end of the track or of the
  // stream, or at damage.
  [[nodiscard]] bool NextBlock();
  // The track breaks off, and not behind the end of the stream.
  [[nodiscard]] bool Damaged() const { return cursor_.Damaged() && !stopped_; }

  [[nodiscard]] bool Stopped() const { return stopped_; }  // at drums

  // Of the current block.
  [[nodiscard]] std::size_t Size() const { return stopped_ ? stop_ : size_; }
  [[nodiscard]] int Key(std::size_t note) const { return keys_[note]; }  // above 127 in damaged files
  [[nodiscard]] const std::int16_t* Keys() const { return keys_.data(); }
  [[nodiscard]] std::uint64_t Tick(std::size_t note) const {
    return base_ + static_cast<std::uint32_t>(offsets_[note]);
  }
  // Ticks from each note to the one behind it, and to its next onset; 0 where the block ends before. An onset
  // that is not among the next three notes is 0 as well.
  [[nodiscard]] const std::int32_t* Gaps() const { return gaps_.data(); }
  [[nodiscard]] const std::int32_t* Distances() const { return distances_.data(); }
  // How many notes of the block, from its start, are certain to have their next onset inside it.
  [[nodiscard]] std::size_t Settled() const { return settled_; }

  // Where the looks of one reader of the stream have ended, so that they never walk twice. Each reader has
  // its own, and calls BeginBlock for each block before its first look.
  struct Look {
    std::size_t ahead = 0;  // inside the block
    // Behind the block: stands behind a note-on at farTick, or at the end of the track.
    MidiEventCursor far;
    bool farUsed = false;
    bool farNote = false;
    std::uint64_t farTick = 0;

    void BeginBlock() { ahead = 0; }
  };

  // Ticks from the note to the next note-on that lies more than kChordTicks behind it, on any channel. At the
  // end of the track the ticks up to there, but at least kChordTicks. Nothing when the track breaks off
  // before, or the search was cancelled meanwhile. Notes must be asked for in order.
  [[nodiscard]] std::optional<std::uint64_t> NextOnsetDistance(std::size_t note, Look& look) const {
    if (measures_ && distances_[note] != 0) return static_cast<std::uint64_t>(distances_[note]);
    return LookAhead(note, look);
  }

  static constexpr std::size_t kBlock = 2048;  // events

 private:
  [[nodiscard]] bool DecodeBlock();
  void Measure();
  [[nodiscard]] std::optional<std::uint64_t> LookAhead(std::size_t note, Look& look) const;
  [[nodiscard]] std::optional<std::uint64_t> NextOnsetBehindBlock(std::uint64_t tick, Look& look) const;

  std::array<std::int16_t, kBlock> keys_;         // not bytes, whose stores would alias all other state
  std::array<std::int32_t, kBlock + 3> offsets_;  // from base_, below 2^31
  std::array<std::int32_t, kBlock> gaps_;
  std::array<std::int32_t, kBlock> distances_;
  std::uint64_t base_ = 0;
  std::size_t size_ = 0;  // decoded notes
  std::size_t settled_ = 0;
  MidiEventCursor cursor_;  // behind the block
  const std::function<bool()>& cancelled_;
  bool stopAtDrums_;
  bool measures_;
  bool stopped_ = false;
  bool last_ = false;
  std::size_t stop_ = 0;
};

}  // namespace ts5
