// The MIDI-to-score converter as a filter: each MIDI file becomes a score of the notation program, or of the
// format that the name of its target says.
#pragma once

#include <cstdint>
#include <string_view>

#include "converters/transcribe/transcription.h"
#include "frame/filter_module.h"
#include "frame/parameters.h"

namespace ts5::transcribe {

// The thirteen values, in the order in which they are stored.
struct MidiToScoreParameters : ClonableParameters<MidiToScoreParameters> {
  std::int32_t barsPerSystem = 4;  // 0 all, 1..10
  bool lyrics = true;
  bool landscape = false;
  std::int32_t narrowLines = 120;  // distance of staff lines, 1/100 mm, 0..1000
  std::int32_t normalLines = 175;
  std::int32_t above = 6;  // in spaces, 0..100
  std::int32_t below = 6;
  std::int32_t betweenSystems = 0;
  std::int32_t beforeFirstSystem = 0;
  bool slashes = false;      // two slashes between systems
  std::int32_t justify = 1;  // 0 none, 1 all pages but the last, 2 all
  bool barNumbers = true;
  std::int32_t beaming = 2;  // Beaming
};

// A number of the dialog with its range, which the dialog says when it is left.
struct NumberRange {
  std::string_view name;
  std::int32_t MidiToScoreParameters::*member;
  std::int32_t least;
  std::int32_t most;
};
[[nodiscard]] std::span<const NumberRange> MidiToScoreNumbers();

// The library's operation: the bytes of a score. As TranscribeMidi fails.
[[nodiscard]] Result<Bytes> ConvertMIDToSTV(ByteView midi, const MidiToScoreParameters& parameters,
                                            const WorkWatch& watch = {});

[[nodiscard]] FilterModule MidiToScoreModule();

}  // namespace ts5::transcribe
