// The melody search: from memory, beside the walk over the same bytes and the mere reading of them; and over
// a tree of files, beside the reading of every byte of it.

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "midi/midi_events.h"
#include "platform/files.h"
#include "search/midi_search.h"
#include "search/track_matcher.h"

namespace ts5 {
namespace {

// A piece for one player: melody notes with their note-offs, chords, controllers and bends between, times a
// little off the beat as they are played.
Bytes MusicTrack(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  const auto pick = [&](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
  ByteWriter out;
  out.Reserve(size + 64);
  int running = 0;
  const auto message = [&](std::uint32_t delta, int status, unsigned a, unsigned b) {
    (void)WriteVarLen(delta, out);
    if (status != running) out.U8(static_cast<std::uint8_t>(status));
    running = status;
    out.U8(static_cast<std::uint8_t>(a));
    out.U8(static_cast<std::uint8_t>(b));
  };
  unsigned key = 60;
  while (out.Size() < size) {
    key = 48 + (key - 48 + 36 + pick(8) - 4) % 36;
    const unsigned chord = pick(3) == 0 ? 2 : 0;
    const bool offs = pick(1) == 0;  // note-offs as such, or as note-ons without velocity
    for (unsigned i = 0; i <= chord; ++i)
      message(i == 0 ? pick(40) : pick(2), 0x90, key + 4 * i, 40 + pick(80));
    if (pick(3) == 0) message(pick(60), 0xB0, 7, pick(127));
    for (unsigned i = 0; i <= chord; ++i) {
      message(i == 0 ? 60 + pick(400) : pick(2), offs ? 0x80 : 0x90, key + 4 * i, offs ? 64 : 0);
    }
  }
  out.U32Be(0x00FF2F00);
  return out.Release();
}

const Bytes& Music() {
  static const Bytes kTrack = MusicTrack(std::size_t{32} << 20, 1);
  return kTrack;
}

void SetRate(benchmark::State& state, std::size_t bytes) {
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes) * static_cast<std::int64_t>(state.iterations()));
}

void BM_SearchReadingFloor(benchmark::State& state) {
  for (auto _ : state) {
    std::uint64_t sum = 0;
    for (const std::uint8_t byte : Music()) sum += byte;
    benchmark::DoNotOptimize(sum);
  }
  SetRate(state, Music().size());
}
BENCHMARK(BM_SearchReadingFloor)->Unit(benchmark::kMillisecond);

void BM_SearchWalkFloor(benchmark::State& state) {
  for (auto _ : state) {
    std::size_t notes = 0;
    MidiEventCursor cursor(Music());
    for (MidiEvent event; cursor.Next(event);) notes += static_cast<std::size_t>(event.IsNoteOn());
    benchmark::DoNotOptimize(notes);
  }
  SetRate(state, Music().size());
}
BENCHMARK(BM_SearchWalkFloor)->Unit(benchmark::kMillisecond);

// Eight notes that hardly ever come: rhythm mode, pitch mode.
void BM_SearchTrack(benchmark::State& state) {
  MelodyQuery query;
  for (const int key : {60, 67, 64, 72, 71, 55, 60, 48})
    query.elements.push_back({static_cast<std::int16_t>(key), 240});
  query.options.rhythm = static_cast<RhythmMode>(state.range(0));
  query.options.pitch = static_cast<PitchMode>(state.range(1));
  query.options.drumTrack = true;
  const std::vector<PreparedNote> melody = PrepareMelody(query.elements, 480);
  const TimeSignatureMap signatures = {{}};
  const std::string file = "x.mid";
  const CancelCheck never;
  const HitSink sink = [](const SearchHit&) { return Outcome::Success; };
  const TrackContext context = {melody, query.options, signatures, 480, 120, file, sink, never};
  std::uint64_t hits = 0;
  for (auto _ : state) hits = SearchMidiTrack(Music(), 0, context).hits;
  state.counters["hits"] = static_cast<double>(hits);
  SetRate(state, Music().size());
}
BENCHMARK(BM_SearchTrack)
    ->ArgNames({"rhythm", "pitch"})
    ->ArgsProduct({{0, 1, 2}, {0, 1, 2, 3}})
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
