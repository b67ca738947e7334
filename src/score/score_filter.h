// The score-to-MIDI converter as a filter: each score becomes a Standard MIDI File as the score engine plays
// it.
#pragma once

#include <cstdint>
#include <span>

#include "frame/filter_module.h"
#include "frame/remarks.h"
#include "score/playback_parameters.h"

namespace ts5 {

struct ScoreToMidiParameters : ClonableParameters<ScoreToMidiParameters> {
  PlaybackParameters playback;
  std::int32_t method = 0;  // 1 the score engine, any other value the conversion library
  bool playRepeats = true;
  bool automaticSet = false;  // load the parameter set of the score's name
  // of the conversion library
  bool lyrics = true;
  bool repeats = true;
  bool invisible = false;
  std::int32_t noteValue = 95;  // per cent

  [[nodiscard]] bool UsesEngine() const { return method == 1; }
};

[[nodiscard]] std::vector<ParameterField> ScoreToMidiFields();

// What the score filters say of their outcomes.
[[nodiscard]] std::span<const Remark> ScoreRemarks();

void RunScoreToMidi(Run& run);
[[nodiscard]] FilterModule ScoreToMidiModule();

}  // namespace ts5
