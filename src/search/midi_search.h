// The melody search of one MIDI file.
//
// The first track of a file with several tracks only tells time signatures and tempo and is not searched.
// Hits count the tracks behind it from 0.
#pragma once

#include <string>

#include "platform/base/bytes.h"
#include "search/hit_sink.h"
#include "search/melody_query.h"

namespace ts5 {

// The image of a whole file. WrongFormat: no MIDI file. DamagedMidi: a track is missing or breaks off; the
// hits of the tracks before it were sent. Else what the sink or the cancel check ended it with.
[[nodiscard]] SearchOutcome SearchMidiImage(ByteView file, const std::string& path, const MelodyQuery& query,
                                            const HitSink& sink, const CancelCheck& cancelled);

// The file itself. WrongFormat also when it cannot be opened; SourceFailed when it cannot be read whole.
[[nodiscard]] SearchOutcome SearchMidiFile(const std::string& path, const MelodyQuery& query,
                                           const HitSink& sink, const CancelCheck& cancelled);

}  // namespace ts5
