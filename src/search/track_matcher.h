// The melody matcher of the MIDI search: one track against one melody.
//
// It compares onsets and durations, not sounding notes: the duration of a played note is the distance to the
// next onset that is no chord note. Matching has no memory but its own state: an event that breaks a match is
// itself tried as a first note, and after a hit it goes on behind the last matched note, so that hits never
// overlap and the time is linear in the track for any melody.
//
// Products are formed in double precision and truncated; the factors that are single precision are named.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "midi/conductor.h"
#include "platform/bytes.h"
#include "search/hit_sink.h"
#include "search/search_melody.h"
#include "search/search_options.h"

namespace ts5 {

// A melody note in a file's own ticks. Durations wrap around at 16 bits.
struct PreparedNote {
  int key = 0;
  std::uint16_t duration = 0;

  bool operator==(const PreparedNote&) const = default;
};

using PreparedMelody = std::vector<PreparedNote>;

// The notes of a melody for files of the division. The rest directly behind a note lengthens it; further
// rests are left out.
[[nodiscard]] PreparedMelody PrepareMelody(const std::vector<MelodyElement>& elements,
                                           std::uint16_t division);

// The played key when it may be the melody's first note.
[[nodiscard]] std::optional<int> FirstNoteMatches(PitchMode mode, int melodyKey, int playedKey);

// By how many ticks a played duration may differ from a prepared one; truncated.
[[nodiscard]] std::uint64_t DurationTolerance(std::uint16_t duration, Tolerance tolerance);

// Milliseconds of a tick at one tempo, truncated; 0 for a file of division 0.
[[nodiscard]] std::int32_t HitTime(std::uint64_t tick, std::uint16_t division, std::uint32_t tempo);

// What a file says about its tracks.
struct TrackContext {
  const PreparedMelody& melody;
  const SearchOptions& options;
  const TimeSignatureMap& signatures;
  std::uint16_t division = 0;
  std::uint32_t tempo = 120;  // beats per minute, for the times of the hits
  const std::string& file;
  const HitSink& sink;
  const std::function<bool()>& cancelled;
};

struct TrackOutcome : SearchOutcome {
  bool whole = false;  // the track was walked to its end and is sound
};

// Searches a track image. DamagedMidi: the track breaks off, or does so behind a possible match; hits that
// were sent before stay sent. OutOfMemory and what else the sink answers end it, and so does Cancelled. An
// empty melody finds nothing.
[[nodiscard]] TrackOutcome SearchMidiTrack(ByteView track, std::int32_t trackNumber,
                                           const TrackContext& context);

}  // namespace ts5
