// Where the beats of a performance are: those of the file's own ticks, or, for music that was played without
// a click, beats that are found in it.
//
// Finding beats: the strength of onsets over time is compared with itself for the most likely distance of
// beats, and the row of beats through it is chosen that hits strong onsets at distances that change little
// (dynamic programming, after D. Ellis, "Beat Tracking by Dynamic Programming", 2007). Long silence is
// counted through at that distance.
#pragma once

#include <cstdint>
#include <vector>

#include "converters/transcribe/performance.h"

namespace ts5::transcribe {

// Ticks and quarter notes of the score, by straight lines between places that are known.
class BeatMap {
 public:
  // The ticks of the file.
  explicit BeatMap(std::int64_t division) : division_(division) {}
  // Beat i at beats[i] ticks, which is after seconds[i]; at least two, in order.
  BeatMap(std::vector<double> beats, std::vector<double> seconds)
      : beats_(std::move(beats)), seconds_(std::move(seconds)) {}

  [[nodiscard]] double Quarters(std::int64_t tick) const;
  [[nodiscard]] bool Found() const { return !beats_.empty(); }
  // Quarter notes a minute around a beat; of found beats only.
  [[nodiscard]] double Tempo(std::size_t beat) const;
  [[nodiscard]] std::size_t Beats() const { return beats_.size(); }

 private:
  std::int64_t division_ = 480;
  std::vector<double> beats_;
  std::vector<double> seconds_;
};

// Whether the notes keep to the beats of the file's ticks, if only roughly.
[[nodiscard]] bool KeepsToTicks(const Performance& performance, const CancelCheck& cancelled = {});

// The beats in ticks, the first one a downbeat; empty when there are too few notes.
[[nodiscard]] std::vector<double> FindBeats(const Performance& performance,
                                            const CancelCheck& cancelled = {});

// The map to use: of the ticks, or of found beats. Work that is told to stop gives what it has.
[[nodiscard]] BeatMap MapBeats(const Performance& performance, const CancelCheck& cancelled = {});

}  // namespace ts5::transcribe
