// Conversions of a 10-minute piece in audio-CD format, through files: resampling beside the programs a user
// would take (where they are installed), and depth, channels and normalising beside copying the file twice
// with the same staging and flushing. Peers run on one core, as we do. The items "x" are multiples of real
// time, "cpu s" the processor's seconds of one run; "MB" is the highest resident memory, which is not to
// depend on the length.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numbers>
#include <string>
#include <vector>

#include "audio/cd_track_source.h"
#include "audio/loudness.h"
#include "audio/normalise.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "peak_memory.h"
#include "peer.h"
#include "platform/disc/virtual_cd.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
constexpr double kSeconds = 600;

class Piece {
 public:
  Piece() : directory_(fs::temp_directory_path() / ("ts5-audio-" + std::to_string(getpid()))) {
    fs::create_directories(directory_);
    auto wave = WaveFile::Create(Source(), AudioCdFormat());
    if (!wave) std::abort();
    std::vector<std::int16_t> second(44100 * 2);
    std::uint32_t noise = 1;
    for (int s = 0; s < static_cast<int>(kSeconds); ++s) {
      for (std::size_t i = 0; i < second.size(); ++i) {
        noise = noise * 1664525 + 1013904223;
        const double tone = std::sin(static_cast<double>(i) * (0.01 + s * 0.0001)) * 9000;
        second[i] = static_cast<std::int16_t>(tone + static_cast<double>(noise >> 20) - 2048);
      }
      if (Failed(wave->Write({reinterpret_cast<const std::uint8_t*>(second.data()), second.size() * 2})))
        std::abort();
    }
    if (Failed(wave->Close())) std::abort();
  }
  ~Piece() {
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
  }
  Piece(const Piece&) = delete;
  Piece& operator=(const Piece&) = delete;

  [[nodiscard]] std::string Source() const { return (directory_ / "source.wav").string(); }
  [[nodiscard]] std::string Target() const { return (directory_ / "target.wav").string(); }

 private:
  fs::path directory_;
};

const Piece& ThePiece() {
  static const Piece piece;
  return piece;
}

template <typename Work>
void Measure(benchmark::State& state, const Work& work) {
  (void)ThePiece();
  ResetPeakMemory();
  const double before = ProcessorSeconds();
  for (auto _ : state) {
    if (!work()) state.SkipWithError("failed");
  }
  state.counters["MB"] = PeakMemory();
  state.counters["cpu s"] = (ProcessorSeconds() - before) / static_cast<double>(state.iterations());
  state.counters["x"] =
      benchmark::Counter(kSeconds * static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

void Convert(benchmark::State& state, const WaveFormat& format) {
  Measure(state,
          [&] { return Succeeded(ConvertWaveFile(ThePiece().Source(), ThePiece().Target(), format)); });
}
BENCHMARK_CAPTURE(Convert, To48000, PcmFormat(48000, 16, 2))->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Convert, To8Bits, PcmFormat(44100, 8, 2))->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Convert, To24Bits, PcmFormat(44100, 24, 2))->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(Convert, ToMono, PcmFormat(44100, 16, 1))->Unit(benchmark::kMillisecond)->UseRealTime();

// The highest memory of pieces of so many seconds, which is to be the same.
void MemoryByLength(benchmark::State& state) {
  const std::string source = ThePiece().Target() + ".long.wav";
  const std::string target = ThePiece().Target();
  {
    auto wave = WaveFile::Create(source, AudioCdFormat());
    const Bytes second(176400, 7);
    for (std::int64_t s = 0; s < state.range(0); ++s) {
      if (Failed(wave->Write(second))) std::abort();
    }
    if (Failed(wave->Close())) std::abort();
  }
  ResetPeakMemory();
  for (auto _ : state) {
    const bool done = Succeeded(ConvertWaveFile(source, target, PcmFormat(48000, 24, 1))) &&
                      Succeeded(Normalise({&source, 1}, {&target, 1}, 0, 1));
    auto pcm = OpenPcm(source);
    if (!done || !pcm || !MeasureLoudness(**pcm)) state.SkipWithError("failed");
  }
  state.counters["MB"] = PeakMemory();
  std::error_code ignored;
  fs::remove(source, ignored);
}
BENCHMARK(MemoryByLength)->Arg(10)->Arg(100)->Arg(1800)->Iterations(1)->Unit(benchmark::kMillisecond);

void NormaliseOne(benchmark::State& state) {
  const std::string source = ThePiece().Source();
  const std::string target = ThePiece().Target();
  Measure(state, [&] { return Succeeded(Normalise({&source, 1}, {&target, 1}, 0, 1)); });
}
BENCHMARK(NormaliseOne)->Unit(benchmark::kMillisecond)->UseRealTime();

// The least that any of these has to do, twice.
void CopyTwice(benchmark::State& state) {
  const auto copy = [] {
    const auto from = InputFile::Open(ThePiece().Source());
    auto to = StagedFile::Create(ThePiece().Target());
    Bytes block(std::size_t{1} << 17);
    std::uint64_t at = 0;
    while (from && to) {
      const auto got = from->ReadAt(at, block);
      if (!got || *got == 0) break;
      if (Failed(to->Write(ByteView(block).first(*got)))) return false;
      at += *got;
    }
    return to && Succeeded(to->Commit());
  };
  Measure(state, [&] { return copy() && copy(); });
}
BENCHMARK(CopyTwice)->Unit(benchmark::kMillisecond)->UseRealTime();

void LoudnessOfAll(benchmark::State& state) {
  Measure(state, [] {
    auto source = OpenPcm(ThePiece().Source());
    return source && MeasureLoudness(**source);
  });
}
BENCHMARK(LoudnessOfAll)->Unit(benchmark::kMillisecond)->UseRealTime();

bool ReadAll(PcmSource& source) {
  std::vector<double> block(std::size_t{4096} * 2);
  Result<std::size_t> got = std::size_t{1};
  while (got && *got > 0) got = source.Read(block);
  return got.has_value();
}

// The piece as a track of an audio CD in the virtual drive, by its commands, beside the same file read as
// one.
void CdTrack(benchmark::State& state) {
  const fs::path directory = fs::path(ThePiece().Source()).parent_path();
  ::setenv("XDG_DATA_HOME", directory.c_str(), 1);
  const std::string sheet = (directory / "disc.cue").string();
  std::ofstream(sheet) << "FILE source.wav WAVE\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n";
  const auto place = FindCdTrack(CdTrackEntry(VirtualCdName(), 1));
  if (Failed(InsertVirtualDisc(sheet)) || !place) return state.SkipWithError("no disc");
  Measure(state, [&] {
    const auto track = OpenCdTrack(*place);
    return track && ReadAll(**track);
  });
}
BENCHMARK(CdTrack)->Unit(benchmark::kMillisecond)->UseRealTime();

void ReadWave(benchmark::State& state) {
  Measure(state, [] {
    const auto source = OpenPcm(ThePiece().Source());
    return source && ReadAll(**source);
  });
}
BENCHMARK(ReadWave)->Unit(benchmark::kMillisecond)->UseRealTime();

void Peer(benchmark::State& state, const std::string& command) {
  if (!HasPeer(command)) {
    state.SkipWithError("not installed");
    return;
  }
  std::string line = command;
  for (const auto& [name, path] : {std::pair<std::string, std::string>{"IN", ThePiece().Source()},
                                   std::pair<std::string, std::string>{"OUT", ThePiece().Target()}}) {
    line.replace(line.find(name), name.size(), path);
  }
  Measure(state, [&] { return RunPeer(line); });
}
BENCHMARK_CAPTURE(Peer, SoxRateV, "sox --single-threaded IN -b 16 OUT rate -v 48000")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(
    Peer, FfmpegSoxr28,
    "ffmpeg -y -threads 1 -i IN -af aresample=48000:resampler=soxr:precision=28 -c:a pcm_s16le OUT")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK_CAPTURE(Peer, SoxNorm, "sox --single-threaded --norm IN OUT")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace ts5
