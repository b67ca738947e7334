// What all players have as parameters: volume and balance, the order of the titles in time, the display.
#pragma once

#include <chrono>
#include <cstdint>

#include "frame/parameters.h"

namespace ts5 {

inline constexpr std::int32_t kLowestVolume = -10'000;  // hundredths of a decibel
inline constexpr std::int32_t kFarBalance = 10'000;     // right; left is the negative of it
inline constexpr std::int32_t kLongestPause = 3600;     // seconds
inline constexpr std::int32_t kLongestShortPlay = 3600;

struct PlayerOptions {
  std::int32_t volume = 0;    // kLowestVolume..0, hundredths of a decibel
  std::int32_t balance = 0;   // -kFarBalance..kFarBalance
  std::int32_t interval = 0;  // seconds between two titles
  std::int32_t device = 0;    // index in the device list; the job's own index counts
  bool resultDialog = false;
  bool timeInBars = true;
  bool shortPlay = false;
  std::int32_t shortSeconds = 10;

  [[nodiscard]] std::chrono::seconds Pause() const { return std::chrono::seconds(interval); }
};

struct PlayerParameters : PlayerOptions, ClonableParameters<PlayerParameters> {};

// The rows of the options, for the table of a player that may have more.
template <typename P>
void AddPlayerFields(FieldTable<P>& table) {
  const auto integer = [&table](const char* name, std::int32_t PlayerOptions::*member, std::int32_t least,
                                std::int32_t most) {
    table.Integer(name, static_cast<std::int32_t P::*>(member), least, most);
  };
  const auto flag = [&table](const char* name, bool PlayerOptions::*member) { table.Flag(name, member); };
  integer("FilterVolume", &PlayerOptions::volume, kLowestVolume, 0);
  integer("FilterBalance", &PlayerOptions::balance, -kFarBalance, kFarBalance);
  integer("FilterInterval", &PlayerOptions::interval, 0, kLongestPause);
  integer("FilterDevice", &PlayerOptions::device, -1, 9999);
  flag("ResultDialog", &PlayerOptions::resultDialog);
  flag("ShowTimeInBars", &PlayerOptions::timeInBars);
  flag("KurzAnspielen?", &PlayerOptions::shortPlay);
  integer("Anspielzeit", &PlayerOptions::shortSeconds, 1, kLongestShortPlay);
}

}  // namespace ts5
