// The notes of a performance on their staves: which staff each stands on, where it begins on the score, the
// grace notes before it and the syllables under it. Voices and letters are found afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "converters/transcribe/beats.h"
#include "converters/transcribe/notate.h"
#include "converters/transcribe/performance.h"
#include "converters/transcribe/quantise.h"

namespace ts5::transcribe {

// A note on its way from the file to the score.
struct Note {
  double start = 0;  // quarter notes, as played
  double end = 0;
  std::int64_t tick = 0;
  std::uint8_t key = 0;
  std::int64_t place = 0;  // in units
  std::uint8_t voice = 0;
  bool gone = false;
  SpelledPitch pitch = {};
  std::vector<std::vector<SpelledPitch>> graces = {};  // chords before it, one after the other
  std::vector<std::vector<std::uint8_t>> graceKeys = {};
  std::vector<LyricItem> lyrics = {};
};

struct Staff {
  std::size_t part = 0;  // of the performance
  std::string name = {};
  std::vector<Note> notes = {};  // by place, then key
  Divisions divisions = {};
  Timing timing = {};
  bool drums = false;
  std::vector<std::vector<VoiceChord>> voices = {};
};

struct StaffNotes {
  std::vector<Staff> staves;
  std::uint32_t lostWords = 0;  // syllables without a note
  std::uint32_t doubled = 0;    // notes that were struck twice at one place and stand once
  std::uint32_t staffless = 0;  // notes of parts that are one too many
};
// Work that is told to stop gives what it has.
[[nodiscard]] StaffNotes PlaceOnStaves(const Performance& performance, const BeatMap& beats, bool words,
                                       const CancelCheck& cancelled = {});

}  // namespace ts5::transcribe
