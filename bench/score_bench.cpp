// Scores: a hundred pages of twenty staves measured, written as a MIDI file and searched for a melody, on one
// core.
#include <benchmark/benchmark.h>

#include "score/score_midi.h"
#include "score/score_writer.h"
#include "search/score_search.h"

namespace ts5 {
namespace {

// Four systems of four bars a page; eighth notes with a mark now and then.
ScoreDocument LargeScore() {
  constexpr int kSystems = 400;
  constexpr int kStaves = 20;
  constexpr int kBars = 4;
  ScoreDocument score;
  for (int i = 0; i < kStaves; ++i) {
    StaffLayout staff;
    staff.name = "Stimme";
    staff.volume = 100;
    score.staves.push_back(std::move(staff));
  }
  for (int s = 0; s < kSystems; ++s) {
    SystemItems system;
    for (std::uint8_t i = 0; i < kStaves; ++i) {
      VoiceItems items = {ClefItem(0), KeyItem(1)};
      for (int bar = 0; bar < kBars; ++bar) {
        for (int note = 0; note < 8; ++note)
          items.push_back(ChordItem(3, {ScoreNote{static_cast<std::int8_t>(note + i - 10), 0, 0}}));
        items.back().drawings.push_back(TextDrawing(bar % 2 == 0 ? "p" : "f"));
        items.push_back(BarItem());
      }
      system.staves.push_back({i, {}, {std::move(items)}});
    }
    score.systems.push_back(std::move(system));
  }
  return score;
}

void ScanLargeScore(benchmark::State& state) {
  const Bytes file = WriteScore(LargeScore());
  double seconds = 0;
  for (auto _ : state) {
    PlaybackParameters parameters;
    const auto score = OpenAndScan(file, parameters);
    seconds = score ? static_cast<double>(score->scan.time) / 1e7 : 0;
    benchmark::DoNotOptimize(score);
  }
  state.counters["times_real"] = benchmark::Counter(seconds, benchmark::Counter::kIsIterationInvariantRate);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}
BENCHMARK(ScanLargeScore)->Unit(benchmark::kMillisecond);

void WriteLargeScore(benchmark::State& state) {
  PlaybackParameters parameters;
  const auto score = OpenAndScan(WriteScore(LargeScore()), parameters);
  for (auto _ : state) benchmark::DoNotOptimize(ScoreToMidi(*score, parameters, {}));
  state.counters["times_real"] = benchmark::Counter(static_cast<double>(score->scan.time) / 1e7,
                                                    benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(WriteLargeScore)->Unit(benchmark::kMillisecond);

// A melody that hardly ever comes, by its keys and by its rhythm alone.
void SearchLargeScore(benchmark::State& state) {
  const Bytes file = WriteScore(LargeScore());
  MelodyQuery query;
  query.elements = {{60, 240}, {67, 120}, {64, 360}, {72, 60}};
  query.options.pitch = static_cast<PitchMode>(state.range(0));
  const HitSink sink = [](const SearchHit&) { return Outcome::Success; };
  for (auto _ : state) {
    if (Failed(SearchScoreImage(file, "x.stv", query, sink, {}).code)) state.SkipWithError("failed");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(file.size()));
}
BENCHMARK(SearchLargeScore)->ArgName("pitch")->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
