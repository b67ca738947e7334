// The score player: each score of a job played on a MIDI device through the score engine.
#pragma once

#include "frame/filter_module.h"
#include "frame/player_parameters.h"
#include "score/playback_fields.h"

namespace ts5 {

struct ScorePlayerParameters : PlayerOptions, ScoreParameters, ClonableParameters<ScorePlayerParameters> {};

[[nodiscard]] FilterModule ScorePlayerModule();

}  // namespace ts5
