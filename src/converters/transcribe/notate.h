// One voice of one bar as rests and chords: values that exist, tied where one is not enough, in an order that
// shows the beats; tuplets; rests that follow the metre.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "converters/transcribe/quantise.h"
#include "score/score_document.h"

namespace ts5::transcribe {

// A chord in its voice. Those of a voice do not overlap.
struct VoiceChord {
  std::int64_t place = 0;  // in units, from the start of the score
  std::int64_t end = 0;
  std::vector<SpelledPitch> pitches = {};              // low to high
  std::vector<std::vector<SpelledPitch>> graces = {};  // before it
  std::vector<LyricItem> lyrics = {};
};

struct BarSpan {
  std::int64_t start = 0;  // in units, from the start of the score
  std::int64_t length = 0;
  ScoreTimeSignature time;
  std::int64_t offset = 0;  // of a bar that lacks its beginning: how much of it is missing
};

// "&Balkenautomatik"
enum class Beaming : std::uint8_t { Flags, Small, Middle, Large, WholeBars };

// The items of a bar, without bar line. chords: those of the voice that sound in the bar. A bar without any:
// a whole-bar rest in the first voice, nothing in others.
[[nodiscard]] VoiceItems NotateBar(const BarSpan& bar, std::span<const VoiceChord> chords, bool firstVoice,
                                   Beaming beaming);

}  // namespace ts5::transcribe
