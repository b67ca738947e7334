// A score as a Standard MIDI File of format 1: a conductor track and one track per staff that has music.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_engine.h"
#include "score/score_image.h"

namespace ts5 {

// A score of the current format, ready to be played: measured, every voice with a channel.
struct OpenScore {
  Bytes file;
  ScoreImage image = {};  // of a file of another format: what its reader says of it, without the bytes
  ScoreFileInfo info;
  std::vector<std::uint8_t> voices;  // of each staff layout
  ScoreScan scan;
};

// OldScore for the older formats, the codes of ReadScoreInfo, DamagedScore, Cancelled. Channels of the
// parameters that are not set are assigned.
[[nodiscard]] Result<OpenScore> OpenAndScan(Bytes file, PlaybackParameters& parameters, bool repeats = true,
                                            const CancelCheck& cancelled = {});
// Also SourceFailed and ReadFailed.
[[nodiscard]] Result<OpenScore> OpenAndScan(const std::string& path, PlaybackParameters& parameters,
                                            bool repeats = true, const CancelCheck& cancelled = {});

// The whole file. DamagedScore, Cancelled.
[[nodiscard]] Result<Bytes> ScoreToMidi(const OpenScore& score, const PlaybackParameters& parameters,
                                        ScoreOptions options, const WorkWatch& watch = {});

}  // namespace ts5
