// How a title is practised: a passage over and over, slower or faster, higher or lower, without some of its
// tracks.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace ts5 {

inline constexpr int kSlowestPractice = 25;  // per cent of the title's own tempo
inline constexpr int kFastestPractice = 200;
inline constexpr int kOwnTempo = 100;
inline constexpr int kFarthestShift = 24;  // semitones
inline constexpr std::chrono::milliseconds kShortestPassage{200};

// From A to B, in the title's own time.
struct PracticePassage {
  std::chrono::nanoseconds from{};
  std::chrono::nanoseconds to{};
  bool operator==(const PracticePassage&) const = default;
};

struct Practice {
  std::optional<PracticePassage> passage = {};  // without it: to the end
  int speed = kOwnTempo;                        // per cent; the pitch stays
  int shift = 0;                                // semitones, for music made of notes; drums stay
  std::set<std::uint32_t> muted = {};           // tracks, counted from 0
  std::set<std::uint32_t> solo = {};            // with any of these, they alone sound

  [[nodiscard]] bool Sounds(std::uint32_t track) const {
    return solo.empty() ? !muted.contains(track) : solo.contains(track);
  }
  // As much of the title's time passes in a second.
  [[nodiscard]] double Rate() const { return speed / 100.0; }
  bool operator==(const Practice&) const = default;
};

// Within its bounds; a passage that is too short, or does not lie in the title, is none, and neither are
// tracks that it does not have.
[[nodiscard]] Practice Limited(Practice practice, std::chrono::nanoseconds duration, std::size_t tracks);

// A passage that is marked while its title plays begins with the bar that sounds, and ends with it; without
// bars, at once. bars: where they begin, in order.
[[nodiscard]] std::chrono::nanoseconds PassageBegin(std::chrono::nanoseconds place,
                                                    std::span<const std::chrono::nanoseconds> bars);
[[nodiscard]] std::chrono::nanoseconds PassageEnd(std::chrono::nanoseconds place,
                                                  std::chrono::nanoseconds duration,
                                                  std::span<const std::chrono::nanoseconds> bars);

// As it is kept: "A=12000 B=15500 speed=75 shift=-2 mute=1,3 solo=2" in milliseconds, "" for plain playing.
[[nodiscard]] std::string PracticeText(const Practice& practice);
// What it does not understand is left out.
[[nodiscard]] Practice ParsePractice(std::string_view text);

}  // namespace ts5
