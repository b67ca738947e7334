// Parameter sets: the playback parameters of a score in a profile file (".sps").
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/store/profile.h"
#include "score/playback_parameters.h"

namespace ts5 {

inline constexpr std::string_view kParameterSetExtension = "sps";

// voices: of each staff of the score at hand.
[[nodiscard]] Profile ParameterSetProfile(const PlaybackParameters& parameters,
                                          const std::vector<std::uint8_t>& voices);
// Replaces an existing set as a whole. TargetFailed, WriteFailed.
[[nodiscard]] Outcome SaveParameterSet(const PlaybackParameters& parameters,
                                       const std::vector<std::uint8_t>& voices, const std::string& path);

// SourceFailed: no parameter set, or a value is missing; what was read before it stays in force. Channels and
// sounds are taken only from a set for a score with the same staves and voices.
[[nodiscard]] Outcome ReadParameterSet(const Profile& profile, const std::vector<std::uint8_t>& voices,
                                       PlaybackParameters& parameters);
[[nodiscard]] Outcome LoadParameterSet(PlaybackParameters& parameters,
                                       const std::vector<std::uint8_t>& voices, const std::string& path);

// The set of the same name as the score, whatever the case of its letters; "" when there is none.
[[nodiscard]] std::string AutomaticParameterSet(const std::string& directory, const std::string& score);

}  // namespace ts5
