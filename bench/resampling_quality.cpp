// How good the change of the sample rate is, measured alike for us and for the programs a user would take:
// steps of a sine from 20 Hz up through the tool, in 64-bit floats, and what comes out compared with what
// should. Counters, all in dB: "ripple", the greatest deviation of the level of 20 Hz..20 kHz (44100 to
// 48000); "noise", what is there beside the tone, relative to it; "alias", what is left of tones above half
// of the new rate (48000 to 44100).
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "platform/media/media_engine.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
constexpr double kLevel = 0.5;

using Tool = std::function<bool(const std::string& in, const std::string& out, std::uint32_t rate)>;

// One second of each frequency.
void WriteTones(const std::string& path, std::uint32_t rate, const std::vector<double>& frequencies) {
  auto file = WaveFile::Create(path, PcmFormat(rate, 64, 1, kTagFloat));
  if (!file) std::abort();
  auto sink = WaveSink(std::move(*file), {rate, 1, 4, 0});
  std::vector<double> second(rate);
  for (const double frequency : frequencies) {
    for (std::size_t i = 0; i < second.size(); ++i)
      second[i] = kLevel * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / rate);
    if (Failed((*sink)->Write(second))) std::abort();
  }
  if (Failed((*sink)->Finish())) std::abort();
}

struct Reading {
  double tone = 0;  // amplitudes
  double rest = 0;
};

// The tone under a window without side lobes to speak of, taken off, and what is left.
Reading Analyse(const std::vector<double>& signal, double cycles) {
  double real = 0;
  double imaginary = 0;
  double weights = 0;
  std::vector<double> window(signal.size());
  for (std::size_t i = 0; i < signal.size(); ++i) {
    const double phase = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(signal.size());
    window[i] =
        0.35875 - 0.48829 * std::cos(phase) + 0.14128 * std::cos(2 * phase) - 0.01168 * std::cos(3 * phase);
    const double angle = 2 * std::numbers::pi * cycles * static_cast<double>(i);
    real += window[i] * signal[i] * std::cos(angle);
    imaginary += window[i] * signal[i] * std::sin(angle);
    weights += window[i];
  }
  real *= 2 / weights;
  imaginary *= 2 / weights;
  double power = 0;
  double windowPower = 0;
  for (std::size_t i = 0; i < signal.size(); ++i) {
    const double angle = 2 * std::numbers::pi * cycles * static_cast<double>(i);
    const double rest = signal[i] - real * std::cos(angle) - imaginary * std::sin(angle);
    power += window[i] * window[i] * rest * rest;
    windowPower += window[i] * window[i];
  }
  return {std::hypot(real, imaginary), std::sqrt(2 * power / windowPower)};
}

double Db(double ratio) {
  return 20 * std::log10(std::max(ratio, 1e-12));
}

// The middle half of the second of each frequency.
template <typename Take>
bool ForEachTone(const std::string& path, std::uint32_t rate, const std::vector<double>& frequencies,
                 const Take& take) {
  auto source = OpenPcm(path);
  if (!source || (*source)->Shape().sampleRate != rate) return false;
  for (std::size_t i = 0; i < frequencies.size(); ++i) {
    if (Failed((*source)->Seek(i * rate + rate / 4))) return false;
    std::vector<double> middle(rate / 2);
    if ((*source)->Read(middle).value_or(0) != middle.size()) return false;
    take(Analyse(middle, frequencies[i] / rate));
  }
  return true;
}

void Quality(benchmark::State& state, const Tool& tool) {
  const fs::path place = fs::temp_directory_path() / ("ts5-quality-" + std::to_string(getpid()));
  fs::create_directories(place);
  const std::string in = (place / "in.wav").string();
  const std::string out = (place / "out.wav").string();
  double ripple = 0;
  double noise = -300;
  double alias = -300;
  for (auto _ : state) {
    std::vector<double> band;
    for (double f = 20; f < 20000; f *= 1.3) band.push_back(f);
    band.push_back(20000);
    WriteTones(in, 44100, band);
    bool done = tool(in, out, 48000) && ForEachTone(out, 48000, band, [&](const Reading& reading) {
                  ripple = std::max(ripple, std::abs(Db(reading.tone / kLevel)));
                  noise = std::max(noise, Db(reading.rest / reading.tone));
                });
    const std::vector<double> above{22300, 22500, 22800, 23200, 23600, 23900};
    WriteTones(in, 48000, above);
    done = done && tool(in, out, 44100) && ForEachTone(out, 44100, above, [&](const Reading& reading) {
             alias = std::max(alias, Db(std::hypot(reading.tone, reading.rest) / kLevel));
           });
    if (!done) state.SkipWithError("not installed, or failed");
  }
  state.counters["ripple"] = ripple;
  state.counters["noise"] = noise;
  state.counters["alias"] = alias;
  std::error_code ignored;
  fs::remove_all(place, ignored);
}

bool Ours(const std::string& in, const std::string& out, std::uint32_t rate) {
  return Succeeded(ConvertWaveFile(in, out, TargetFormat(rate, 32, 1)));
}
bool Sox(const std::string& in, const std::string& out, std::uint32_t rate) {
  const std::string line =
      "sox " + in + " -b 32 -e floating-point " + out + " rate -v " + std::to_string(rate);
  return std::system((line + " >/dev/null 2>&1").c_str()) == 0;
}
bool Ffmpeg(const std::string& in, const std::string& out, std::uint32_t rate) {
  const std::string line = "ffmpeg -nostdin -y -i " + in + " -af aresample=" + std::to_string(rate) +
                           ":resampler=soxr:precision=28:osf=flt -c:a pcm_f32le " + out;
  return std::system((line + " >/dev/null 2>&1").c_str()) == 0;
}
BENCHMARK_CAPTURE(Quality, Ours, Ours)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Quality, SoxRateV, Sox)->Iterations(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Quality, FfmpegSoxr28, Ffmpeg)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
