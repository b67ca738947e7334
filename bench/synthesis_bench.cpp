// MIDI to wave beside the "fluidsynth" program with the same sound font, through files, at the format of an
// audio CD; "x" are multiples of real time. And the MIDI player's punctuality: how late its messages leave,
// in milliseconds, at most and in 99 of 100 cases.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "audio/midi_to_wave.h"
#include "midi/midi_sequence.h"
#include "midi/midi_sequencer.h"
#include "peak_memory.h"
#include "peer.h"
#include "platform/files/files.h"
#include "platform/sound/midi_out.h"
#include "platform/sound/synthesizer.h"
#include "platform/sound/thread_priority.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

const std::string kSong = TS5_TEST_DATA "/midi/mutopia_debussy-arabesque-no1.mid";

struct Place {
  Place() : path(fs::temp_directory_path() / ("ts5-synthesis-" + std::to_string(getpid()))) {
    fs::create_directories(path);
  }
  ~Place() {
    std::error_code ignored;
    fs::remove_all(path, ignored);
  }
  Place(const Place&) = delete;
  Place& operator=(const Place&) = delete;
  fs::path path;
};

template <typename Work>
void Measure(benchmark::State& state, const Work& work) {
  const auto file = ReadFile(kSong);
  const auto sequence = MidiSequence::FromFile(*file);
  const double seconds = std::chrono::duration<double>(sequence->Duration()).count();
  const Place place;
  ResetPeakMemory();
  const double before = ProcessorSeconds();
  for (auto _ : state) {
    if (!work(place.path)) state.SkipWithError("failed");
  }
  state.counters["MB"] = PeakMemory();
  state.counters["cpu s"] = (ProcessorSeconds() - before) / static_cast<double>(state.iterations());
  state.counters["x"] =
      benchmark::Counter(seconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void Synthesis(benchmark::State& state) {
  Measure(state, [](const fs::path& place) {
    return Succeeded(RenderMidiFile(kSong, (place / "out.wav").string(), AudioCdFormat(), place.string()));
  });
}
BENCHMARK(Synthesis)->Unit(benchmark::kMillisecond)->UseRealTime();

void FluidsynthProgram(benchmark::State& state) {
  if (!HasPeer("fluidsynth")) {
    state.SkipWithError("not installed");
    return;
  }
  Measure(state, [](const fs::path& place) {
    return RunPeer("fluidsynth -ni -r 44100 -O s16 -F " + (place / "peer.wav").string() + " " +
                   Synthesizer::InstalledSoundFont() + " " + kSong);
  });
}
BENCHMARK(FluidsynthProgram)->Unit(benchmark::kMillisecond)->UseRealTime();

// Notes when each message came.
class Stopwatch final : public MidiOutput {
 public:
  Outcome Send(std::uint32_t /*message*/) override {
    times.push_back(Clock::now());
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView /*message*/) override { return Send(0); }
  Outcome Reset() override { return Outcome::Success; }
  Outcome Close() override { return Outcome::Success; }
  std::vector<Clock::time_point> times;
};

void PlayerJitter(benchmark::State& state) {
  const auto file = ReadFile(kSong);
  const auto sequence = MidiSequence::FromFile(*file);
  std::vector<double> late;
  for (auto _ : state) {
    Stopwatch watch;
    watch.times.reserve(sequence->Messages().size());
    MidiSequencer sequencer(*sequence, watch);
    std::jthread thread([&] {
      HurryThisThread();
      (void)sequencer.Run(std::chrono::seconds(20));
    });
    thread.join();
    const auto messages = sequence->Messages();
    for (std::size_t i = 0; i < watch.times.size() && messages[i].time < std::chrono::seconds(20); ++i) {
      const std::chrono::duration<double, std::milli> lateness =
          (watch.times[i] - watch.times[0]) - (messages[i].time - messages[0].time);
      late.push_back(std::abs(lateness.count()));
    }
  }
  std::ranges::sort(late);
  state.counters["most"] = late.empty() ? 0 : late.back();
  state.counters["of 100"] = late.empty() ? 0 : late[late.size() * 99 / 100];
}
BENCHMARK(PlayerJitter)->Iterations(1)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace ts5
