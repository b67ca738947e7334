// One place where a search found its melody. Indices count from 0; fields without a meaning for the kind of
// file stay 0.
#pragma once

#include <cstdint>
#include <string>

namespace ts5 {

struct SearchHit {
  std::string file;              // full path
  std::int32_t firstSystem = 0;  // score: system of the first and of the last matched item
  std::int32_t lastSystem = 0;
  std::int32_t firstObject = 0;  // score: object within its voice
  std::int32_t lastObject = 0;
  std::int32_t verticalPosition = 0;  // score: accumulated position of the first item's staff
  std::int32_t track = 0;             // MIDI: track; score: staff line
  std::int32_t voice = 0;             // score
  std::int32_t bar = 0;
  std::int32_t time = 0;    // MIDI: milliseconds; score: beat within the bar
  std::int32_t melody = 0;  // which of the melodies that were looked for together

  bool operator==(const SearchHit&) const = default;
};

}  // namespace ts5
