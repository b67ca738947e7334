// The melody search of one score.
//
// Durations are compared exactly, and the rests of a melody are elements of it like its notes. Hits come by
// staff line and voice and never overlap.
#pragma once

#include <string>

#include "platform/base/bytes.h"
#include "search/hit_sink.h"
#include "search/melody_query.h"

namespace ts5 {

// The bytes of a whole score of any format. WrongFormat: no score, or one of an older format; SourceFailed: a
// damaged one, without any hit sent. Else what the sink or the cancel check ended it with. Rests at the ends
// of the melody do not count; a melody without notes finds nothing.
[[nodiscard]] SearchOutcome SearchScoreImage(ByteView file, const std::string& path, const MelodyQuery& query,
                                             const HitSink& sink, const CancelCheck& cancelled);

// The file itself. SourceFailed also when it cannot be opened or read whole.
[[nodiscard]] SearchOutcome SearchScoreFile(const std::string& path, const MelodyQuery& query,
                                            const HitSink& sink, const CancelCheck& cancelled);

}  // namespace ts5
