// Any bytes are searched as a MIDI file, with a melody and options taken from their first bytes; hits stay
// inside what the file can hold and come in order of time.
#include <cstdlib>

#include "search/midi_search.h"

using namespace ts5;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 8) return 0;
  MelodyQuery query;
  query.options.rhythm = static_cast<RhythmMode>(data[0] % 3);
  query.options.pitch = static_cast<PitchMode>(data[1] % 4);
  query.options.tolerance = static_cast<Tolerance>(data[2] % 4);
  query.options.firstTrackOnly = (data[3] & 1) != 0;
  query.options.drumTrack = (data[3] & 2) != 0;
  for (std::size_t i = 0; i < 1U + data[4] % 5U; ++i) {
    const int key = 60 + (data[5] >> i) % 8;
    query.elements.push_back({static_cast<std::int16_t>(data[6] % 7 == i ? kRestCode : key),
                              static_cast<std::int16_t>(data[7] * 16 - 64)});
  }
  const ByteView file(data + 8, size - 8);
  std::uint64_t hits = 0;
  SearchHit last;
  const HitSink sink = [&](const SearchHit& hit) {
    if (hit.track < last.track || (hit.track == last.track && hit.time < last.time) || hit.bar < 0)
      std::abort();
    last = hit;
    return ++hits > 100'000 ? Outcome::OutOfMemory : Outcome::Success;
  };
  const SearchOutcome outcome = SearchMidiImage(file, "x.mid", query, sink, {});
  if (outcome.hits > hits || hits > size) std::abort();
  return 0;
}
