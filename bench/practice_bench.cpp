// What practising and looking costs: music at another tempo, as a multiple of real time, and the two bars of
// a hit in a MIDI file and in a score, of which a printed list has thousands.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/media/tempo_change.h"
#include "preview/hit_line.h"
#include "search/melody_text.h"
#include "search/midi_search.h"
#include "search/score_search.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kRate = 44'100;
constexpr std::uint32_t kSeconds = 10;

void BM_TempoChange(benchmark::State& state) {
  std::vector<float> music(std::size_t{kRate} * 2 * kSeconds);
  for (std::size_t i = 0; i < music.size(); ++i)
    music[i] = static_cast<float>(0.3 * std::sin(static_cast<double>(i / 2) * 0.02) +
                                  0.2 * std::sin(static_cast<double>(i / 2) * 0.131));
  std::vector<float> out(2048);
  for (auto _ : state) {
    TempoChange tempo(kRate, 2);
    tempo.SetSpeed(static_cast<double>(state.range(0)) / 100);
    for (std::size_t at = 0; at < music.size(); at += out.size()) {
      tempo.Put(std::span(music).subspan(at, std::min(out.size(), music.size() - at)));
      while (tempo.Take(out) > 0) continue;
    }
  }
  const double sounding = kSeconds * 100.0 / static_cast<double>(state.range(0));
  state.counters["x"] = benchmark::Counter(sounding, benchmark::Counter::kIsIterationInvariantRate);
}
BENCHMARK(BM_TempoChange)->Arg(50)->Arg(75)->Arg(150)->Unit(benchmark::kMillisecond);

// Hits of any three notes that rise by whole tones.
template <typename Search>
std::vector<SearchHit> Hits(const std::string& path, Search search) {
  SearchOptions options;
  options.rhythm = RhythmMode::Any;
  options.pitch = PitchMode::Relative;
  std::vector<SearchHit> hits;
  const MelodyQuery query{MelodyFromNumbers("60:240,62:240,64:240")->elements, options};
  const HitSink sink = [&](const SearchHit& hit) {
    hits.push_back(hit);
    return Outcome::Success;
  };
  (void)search(path, query, sink, CancelCheck());
  if (hits.empty()) std::abort();
  return hits;
}

void DrawHits(benchmark::State& state, const std::vector<SearchHit>& hits) {
  preview::HitLines lines;
  std::size_t drawn = 0;
  for (auto _ : state) {
    for (const SearchHit& hit : hits) drawn += lines.Draw(hit, 3) ? 1 : 0;
  }
  state.counters["drawn"] = static_cast<double>(drawn) / static_cast<double>(state.iterations());
  state.counters["per hit"] =
      benchmark::Counter(static_cast<double>(hits.size()),
                         benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}
void BM_MidiHits(benchmark::State& state) {
  DrawHits(state, Hits(TS5_TEST_DATA "/midi/mutopia_debussy-arabesque-no1.mid", SearchMidiFile));
}
void BM_ScoreHits(benchmark::State& state) {
  DrawHits(state, Hits(TS5_TEST_DATA "/../../demo/Jesus bleibet meine Freude.stv", SearchScoreFile));
}
BENCHMARK(BM_MidiHits)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ScoreHits)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
