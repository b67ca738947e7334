// MIDI files as scores, as a multiple of real time: a short piano piece and a dense one.
#include <benchmark/benchmark.h>

#include <string>

#include "converters/transcribe/transcription.h"
#include "midi/midi_sequence.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

void Transcribe(benchmark::State& state, const std::string& name) {
  const auto file = ReadFile(TS5_TEST_DATA "/midi/" + name);
  if (!file) return state.SkipWithError("no file");
  const auto sequence = MidiSequence::FromFile(*file);
  const double seconds = std::chrono::duration<double>(sequence->Duration()).count();
  for (auto _ : state) benchmark::DoNotOptimize(transcribe::TranscribeMidi(*file, {}));
  state.counters["times real time"] =
      benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK_CAPTURE(Transcribe, piano, std::string("mutopia_maple-leaf-rag.mid"))
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Transcribe, band, std::string("freedoom_d_e2m7.mid"))->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
