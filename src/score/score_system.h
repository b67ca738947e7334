// The systems of a score of the current format: which staves each has, and where the objects of their voices
// stand in the file. One walk over a system's records; what they hold is read by whoever needs it.
//
//   ScoreSource in(file, info.bodyOffset);
//   const ScoreSystem system = ReadSystem(in, info.staves.size());   // info.systems times
//   if (!in.Ok()) ...                                                 // damaged
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "score/playback_parameters.h"
#include "score/score_objects.h"

namespace ts5 {

struct VoicePlace {
  std::size_t position = 0;   // of the first object in the file
  std::uint32_t objects = 0;  // so many from there
};
struct SystemStaff {
  std::size_t layout = 0;  // of its staff layout
  ScoreTimeSignature time;
  std::size_t voices = 0;                       // at most kMaxVoices
  std::array<VoicePlace, kMaxVoices> places{};  // further voices are read over
};
struct ScoreSystem {
  std::uint32_t tempo = 0;          // quarter notes per minute, 0 not given
  std::vector<SystemStaff> staves;  // in the order of the score, each layout once: its last voices count
};

// layouts: how many staff layouts the score has; another one makes the record invalid.
[[nodiscard]] ScoreSystem ReadSystem(ScoreSource& in, std::size_t layouts);

}  // namespace ts5
