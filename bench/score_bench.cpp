// Scores: a hundred pages of twenty staves measured, written as a MIDI file, searched for a melody, on one
// core; sought and played.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <thread>
#include <vector>

#include "platform/sound/thread_priority.h"
#include "score/score_midi.h"
#include "score/score_performer.h"
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

using std::chrono::nanoseconds;

// Notes when each message came: in the score's time, or in that of the clock.
class Watch final : public MidiOutput {
 public:
  explicit Watch(bool ownTime) : ownTime_(ownTime) {}
  Outcome Send(std::uint32_t /*message*/) override {
    times.push_back(ownTime_ ? now_ : std::chrono::steady_clock::now().time_since_epoch());
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView /*message*/) override { return Outcome::Success; }
  bool KeepsTime() const override { return ownTime_; }
  void Elapse(nanoseconds time) override { now_ += time; }

  std::vector<nanoseconds> times;

 private:
  bool ownTime_;
  nanoseconds now_{};
};

// Plays so long (TS5_PLAY_SECONDS, 20 unless it is set) and tells how late the messages were, and how much of
// a core it took.
void PlayLargeScore(benchmark::State& state) {
  const char* const wanted = std::getenv("TS5_PLAY_SECONDS");
  const std::chrono::seconds end(wanted == nullptr ? 20 : std::max(std::atoi(wanted), 1));
  PlaybackParameters parameters;
  const auto score = OpenAndScan(WriteScore(LargeScore()), parameters);
  std::vector<double> late;
  double core = 0;
  for (auto _ : state) {
    Watch schedule(true);
    Watch clock(false);
    for (Watch* device : {&schedule, &clock}) {
      ScoreStage stage({});
      ScorePerformer performer(*score, true, stage, *device);
      const std::clock_t before = std::clock();
      // As the player does it.
      std::jthread([&] {
        HurryThisThread();
        benchmark::DoNotOptimize(performer.Run(end));
      }).join();
      core = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC / static_cast<double>(end.count());
    }
    for (std::size_t i = 0; i < std::min(schedule.times.size(), clock.times.size()); ++i) {
      const nanoseconds delay = (clock.times[i] - clock.times[0]) - (schedule.times[i] - schedule.times[0]);
      late.push_back(static_cast<double>(delay.count()) / 1e6);
    }
  }
  std::ranges::sort(late);
  const auto at = [&late](double part) {
    return late.empty() ? 0 : late[static_cast<std::size_t>(part * static_cast<double>(late.size() - 1))];
  };
  state.counters["messages"] = static_cast<double>(late.size());
  state.counters["late_ms_50%"] = at(0.5);
  state.counters["late_ms_99%"] = at(0.99);
  state.counters["late_ms_max"] = at(1);
  state.counters["core_%"] = core * 100;
}
BENCHMARK(PlayLargeScore)->Iterations(1)->UseRealTime()->Unit(benchmark::kMillisecond);

// To the last second: the whole score is interpreted without sound.
void SeekInLargeScore(benchmark::State& state) {
  PlaybackParameters parameters;
  const auto score = OpenAndScan(WriteScore(LargeScore()), parameters);
  for (auto _ : state) {
    Watch device(true);
    ScoreStage stage({});
    ScorePerformer performer(*score, true, stage, device);
    performer.Seek(performer.Duration() - std::chrono::seconds(1));
    benchmark::DoNotOptimize(performer.Run());
  }
}
BENCHMARK(SeekInLargeScore)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
