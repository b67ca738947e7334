// What the playback window shows and which of its controls can be used, as data.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "frame/filter_id.h"
#include "frame/player_control.h"
#include "frame/player_parameters.h"
#include "frame/run_state.h"

namespace ts5 {

enum class PositionKey : std::uint8_t { Left, Right, PageUp, PageDown };

// How far a key moves the position: cursor keys by 10 ms, with Ctrl by 100 ms; page keys by 1 s, with Ctrl by
// 10 s. Page up goes on, page down goes back.
[[nodiscard]] std::chrono::milliseconds PositionStep(PositionKey key, bool control);

// "12:07:250" (minutes, seconds, milliseconds) or "5/3" (bar and beat) where the title has bars and they are
// wanted.
[[nodiscard]] std::string PositionText(std::chrono::nanoseconds position, const std::optional<BarBeat>& place,
                                       bool inBars);

// The same for the slim player: "12:07 / 15:30", with the bar before it where there are bars.
[[nodiscard]] std::string ListenTimeText(const PlayerStatus& status);

struct PlaybackForm {
  bool playEnabled = true;     // not while a pause between two titles passes
  bool optionsEnabled = true;  // the page of the options: while stopped only
  bool shortSecondsEnabled = false;
  bool barsEnabled = true;       // the display in bars: for music with bars
  bool positionEnabled = false;  // a title plays or pauses
  bool meterShown = false;
  std::string title;     // name of the file at work, or that there is none
  std::string elapsed;   // as PositionText
  std::string duration;  // likewise, never in bars
  std::string volume;    // "-12 dB"
  std::string balance;   // "links 20 %", "Mitte"

  bool operator==(const PlaybackForm&) const = default;
};

[[nodiscard]] PlaybackForm PlaybackFormOf(FilterId filter, const PlayerOptions& options, RunState state,
                                          const PlayerStatus& status);

}  // namespace ts5
