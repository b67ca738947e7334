// The place of a hit in its file, read from the file again: where its bar begins and where the melody ends,
// for playing it, and when it sounds by the tempo map of the file. A score is taken as the MIDI file that the
// converter makes of it, without repeats.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

#include "frame/search_hit.h"
#include "midi/midi_sequence.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// In ticks.
struct HitPassage {
  std::uint64_t bar = 0;    // where the bar of the first note begins
  std::uint64_t onset = 0;  // the first note
  std::uint64_t end = 0;    // of the bar in which the last note ends

  bool operator==(const HitPassage&) const = default;
};

// In the image of a whole MIDI file. notes: how many the melody has. WrongFormat: no MIDI file; DamagedMidi:
// the file does not have the hit (any more).
[[nodiscard]] Result<HitPassage> FindHitPassage(ByteView file, const SearchHit& hit, std::size_t notes);

// The music of the file with the times of the passage.
struct PlayableHit {
  MidiSequence sequence;
  std::chrono::nanoseconds bar{};
  std::chrono::nanoseconds onset{};
  std::chrono::nanoseconds end{};
};
// Also SourceFailed, ReadFailed and Cancelled; of a score OldScore and DamagedScore, where it has no such hit
// (any more) too. MIDI files above kMaxSequenceFile are refused, scores above kMaxScoreFile.
[[nodiscard]] Result<PlayableHit> LoadPlayableHit(const SearchHit& hit, std::size_t notes,
                                                  const CancelCheck& cancelled = {});

}  // namespace ts5
