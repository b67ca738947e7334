// The melody matcher of the MIDI search: one track against one melody, or several in one walk.
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
#include <span>
#include <string>
#include <vector>

#include "midi/conductor.h"
#include "platform/base/bytes.h"
#include "search/hit_sink.h"
#include "search/prepared_melody.h"
#include "search/search_options.h"

namespace ts5 {

// Milliseconds of a tick at one tempo, truncated; 0 for a file of division 0.
[[nodiscard]] std::int32_t HitTime(std::uint64_t tick, std::uint16_t division, std::uint32_t tempo);

// What a file says about its tracks.
struct TrackContext {
  std::span<const PreparedMelody> melodies;
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
// empty melody finds nothing. Hits of several melodies come in the order of their last notes.
[[nodiscard]] TrackOutcome SearchMidiTrack(ByteView track, std::int32_t trackNumber,
                                           const TrackContext& context);

}  // namespace ts5
