// The parameters of the two melody searches: what is looked for, how strictly, and with what it is played.
#pragma once

#include <optional>
#include <vector>

#include "frame/parameters.h"
#include "platform/sound/midi_out.h"
#include "search/search_melody.h"
#include "search/search_options.h"
#include "search/search_record.h"

namespace ts5 {

inline constexpr std::int32_t kNoMidiOutput = 1000;  // there is no MIDI output device at all
inline constexpr std::int32_t kLeastTempo = 10;
inline constexpr std::int32_t kMostTempo = 240;

struct SearchParameters : ClonableParameters<SearchParameters> {
  SearchMelody melody;
  std::vector<SearchMelody> more;  // that a command looks for with it, in one pass; not stored
  SearchOptions options;
  std::int32_t device = kMidiMapper;  // index of the output device that plays the melody
  std::int32_t tempo = 120;           // beats per minute, kLeastTempo..kMostTempo
  std::int32_t instrument = 0;        // General MIDI program, 0..127
};

// The field table; only the MIDI search has a tolerance. "--set Melody" takes the text of MelodyFromNumbers.
[[nodiscard]] std::vector<ParameterField> SearchFields(SearchKind kind);

// Whether there is a note to look for.
[[nodiscard]] bool HasMelody(const SearchParameters& parameters);

}  // namespace ts5
