// A MIDI file as a score that can be read: bars, staves, voices, notated values, spelled pitches.
//
//   const auto transcription = TranscribeMidi(bytes, {});
//   const Bytes file = WriteScore(transcription->score);
//
// The way: the notes (performance.h), their beats (beats.h), the hands (staves.h), their places (quantise.h),
// their voices (voices.h), the letters (spelling.h), the bars (notate.h). Repeats are left written out.
#pragma once

#include <cstdint>

#include "converters/transcribe/left_out.h"
#include "converters/transcribe/transcription_options.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_document.h"

namespace ts5::transcribe {

struct Transcription {
  ScoreDocument score;
  std::uint32_t doubled = 0;    // notes that were struck twice at one place and stand once
  std::uint32_t respelled = 0;  // notes that could not be placed as they were spelled
  std::uint32_t lostWords = 0;  // syllables without a note
  std::uint32_t staffless = 0;  // notes of parts that are one too many for a score
  LeftOutCounts leftOut;
  bool beatsFound = false;  // the music does not keep to the beats of its file
};

// WrongFormat: no MIDI file; DamagedMidi; SourceFailed: one without notes or out of all measure; Cancelled.
[[nodiscard]] Result<Transcription> TranscribeMidi(ByteView file, const TranscriptionOptions& options,
                                                   const WorkWatch& watch = {});

}  // namespace ts5::transcribe
