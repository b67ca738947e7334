// The events of several tracks as one stream in the order in which they take effect.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "midi/midi_events.h"

namespace ts5 {

// By tick; at one tick by the class of the event (names and signatures before tempo, bank select before
// program change, note-offs before note-ons...); within a class by track. Events of one track never change
// places. End of track events are not given.
class MergedEvents {
 public:
  explicit MergedEvents(std::span<const ByteView> tracks);

  // False when all tracks have ended, or at the first damaged one.
  [[nodiscard]] bool Next(MidiEvent& event);
  [[nodiscard]] bool Damaged() const { return damaged_; }
  [[nodiscard]] std::size_t BytesDone() const { return bytesDone_; }  // of all tracks, roughly
  [[nodiscard]] std::size_t BytesTotal() const { return bytesTotal_; }

 private:
  // Tick, then class and track in one number.
  using Key = std::pair<std::uint64_t, std::uint64_t>;

  void Advance(std::size_t track);

  std::vector<MidiEventCursor> cursors_;
  std::vector<MidiEvent> pending_;  // the next event of each track
  std::vector<Key> heap_;           // of the tracks that have one, the earliest on top
  bool damaged_ = false;
  std::size_t bytesDone_ = 0;
  std::size_t bytesTotal_ = 0;
};

// Place of an event among those of its tick, from 0.
[[nodiscard]] unsigned MergeClass(const MidiEvent& event);

}  // namespace ts5
