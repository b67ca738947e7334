// How strictly rhythm and pitch must agree, and which tracks are searched.
#pragma once

#include <cstdint>

namespace ts5 {

enum class RhythmMode : std::int32_t { Exact = 0, Relative = 1, Any = 2 };
enum class PitchMode : std::int32_t { Absolute = 0, AnyOctave = 1, Relative = 2, Ignore = 3 };
enum class Tolerance : std::int32_t { None = 0, Low = 1, Medium = 2, High = 3 };

[[nodiscard]] constexpr int Percent(Tolerance tolerance) {
  return static_cast<int>(tolerance) * 10;
}

struct SearchOptions {
  RhythmMode rhythm = RhythmMode::Exact;
  Tolerance tolerance = Tolerance::High;  // of durations in ticks; MIDI search only
  PitchMode pitch = PitchMode::Absolute;
  bool firstTrackOnly = false;
  bool drumTrack = false;  // channel 10 as well

  bool operator==(const SearchOptions&) const = default;
};

// Rhythm and pitch are never both left free: a choice of one moves the other to "relative".
[[nodiscard]] constexpr SearchOptions WithRhythm(SearchOptions options, RhythmMode rhythm) {
  options.rhythm = rhythm;
  if (rhythm == RhythmMode::Any && options.pitch == PitchMode::Ignore) options.pitch = PitchMode::Relative;
  return options;
}
[[nodiscard]] constexpr SearchOptions WithPitch(SearchOptions options, PitchMode pitch) {
  options.pitch = pitch;
  if (pitch == PitchMode::Ignore && options.rhythm == RhythmMode::Any) options.rhythm = RhythmMode::Relative;
  return options;
}

}  // namespace ts5
