// What a MIDI file plays, as a listener has it: notes with their ends, by track and channel, and what the
// file says of bars, keys, tempo and words. Times are ticks of the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "converters/transcribe/left_out.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "score/score_groups.h"

namespace ts5::transcribe {

struct PlayedNote {
  std::int64_t start = 0;
  std::int64_t end = 0;  // above start
  std::uint8_t key = 0;
  std::uint8_t velocity = 64;
};

struct SungText {
  std::int64_t at = 0;
  std::string text;     // UTF-8
  bool onward = false;  // the word goes on
};

// One channel of one track.
struct PlayedPart {
  std::string name;  // of the track, UTF-8, "" without one
  std::size_t track = 0;
  std::uint8_t channel = 0;
  std::uint8_t program = 0;
  std::uint8_t volume = 100;
  bool drums = false;
  std::vector<PlayedNote> notes;  // by start, then key
  std::vector<SungText> words;
};

struct TempoChange {
  std::int64_t at = 0;
  std::uint32_t quarter = 500'000;  // microseconds
};
struct SignatureChange {
  std::int64_t at = 0;
  ScoreTimeSignature time;
};
struct KeyChange {
  std::int64_t at = 0;
  int sharps = 0;  // -7..7
};

struct Performance {
  std::int64_t division = 480;  // ticks a quarter note
  std::int64_t end = 0;         // of the longest track
  std::string title;            // of a track without notes
  std::string rights;
  std::vector<PlayedPart> parts;  // those with notes, in the order of tracks and channels
  std::vector<TempoChange> tempos;
  std::vector<SignatureChange> signatures;  // all in order of time, the last of a place alone
  std::vector<KeyChange> keys;
  LeftOutCounts leftOut;

  // Seconds that a quarter note lasts at a place.
  [[nodiscard]] double QuarterSeconds(std::int64_t tick) const;
};

// Any of the three containers. WrongFormat: no MIDI file; DamagedMidi; Cancelled.
[[nodiscard]] Result<Performance> ReadPerformance(ByteView file, const WorkWatch& watch = {});

}  // namespace ts5::transcribe
