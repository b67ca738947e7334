// What is kept of a search beside its hits: for the head and foot of result files and printed results.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "frame/filter_catalogue.h"
#include "platform/base/clock.h"
#include "search/search_melody.h"

namespace ts5 {

enum class SearchKind : std::uint8_t { Midi, Score };
[[nodiscard]] inline SearchKind SearchKindOf(FilterId filter) {
  return Has(filter, kSearchesScores) ? SearchKind::Score : SearchKind::Midi;
}

enum class SearchEnd : std::uint8_t { Cancelled, Finished, Failed };

struct SearchStatistics {
  std::uint32_t searched = 0;    // files whose search ended without an error
  std::uint32_t unsuitable = 0;  // all others
  std::uint64_t hits = 0;        // in the searched files

  bool operator==(const SearchStatistics&) const = default;
};

struct SearchRecord {
  SearchKind kind = SearchKind::Midi;
  std::string melodyName;  // "" for a melody without a name
  std::size_t notes = 0;   // of the melody; rests do not count
  std::vector<MelodyElement> melody = {};
  Clef clef = Clef::Treble;
  CivilTime start;  // local times
  CivilTime end;
  SearchEnd ending = SearchEnd::Finished;
  SearchStatistics statistics;
};

}  // namespace ts5
