// The score-to-MIDI converter as a filter: each score becomes a Standard MIDI File as the score engine plays
// it.
#pragma once

#include <cstdint>
#include <span>

#include "frame/filter_module.h"
#include "frame/remarks.h"
#include "score/plain_midi.h"
#include "score/playback_fields.h"

namespace ts5 {

struct ScoreToMidiParameters : ScoreParameters, ClonableParameters<ScoreToMidiParameters> {
  std::int32_t method = 0;  // 1 the score engine, any other value the conversion library
  // of the conversion library
  bool lyrics = true;
  bool repeats = true;
  bool invisible = false;
  std::int32_t noteValue = 95;  // per cent

  [[nodiscard]] bool UsesEngine() const { return method == 1; }
};

// What the library method takes of the parameters for one score.
[[nodiscard]] PlainMidiOptions LibraryOptions(const ScoreToMidiParameters& own,
                                              const ScoreParameters& parameters);

[[nodiscard]] std::vector<ParameterField> ScoreToMidiFields();

// What the score filters say of their outcomes.
[[nodiscard]] std::span<const Remark> ScoreRemarks();

[[nodiscard]] FilterModule ScoreToMidiModule();

}  // namespace ts5
