// Encoders and decoders beside the clock: how many times faster than the music they are. One minute of stereo
// music made of tones and noise.
#include <benchmark/benchmark.h>

#include <cmath>
#include <string>
#include <vector>

#include "audio/encode/encode.h"
#include "audio/sample_codec.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "platform/media/media_engine.h"

namespace ts5 {
namespace {

constexpr std::size_t kSeconds = 60;
constexpr std::size_t kRate = 44100;

const std::string& Minute() {
  static const std::string path = [] {
    const std::string name = "/tmp/ts5-encode-bench.wav";
    const WaveFormat format = PcmFormat(kRate, 16, 2);
    std::vector<double> samples(kSeconds * kRate * 2);
    std::uint32_t noise = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
      noise = noise * 1664525 + 1013904223;
      const double t = static_cast<double>(i / 2) / kRate;
      samples[i] = 0.3 * std::sin(t * 2764) * std::sin(t * 3) +
                   0.2 * std::sin(t * (4147 + static_cast<double>(i % 2))) +
                   0.02 * (static_cast<double>(noise >> 8) / (1 << 23) - 1);
    }
    Bytes bytes(samples.size() * 2);
    SampleEncoder(SampleType::Signed16, false).Encode(samples, bytes);
    auto file = WaveFile::Create(name, format);
    if (file && Succeeded(file->Write(bytes))) (void)file->Close();
    return name;
  }();
  return path;
}

encode::EncodeSettings SettingsOf(encode::EncoderId id) {
  encode::EncodeSettings settings;
  if (id == encode::EncoderId::OggVorbis)
    settings.method = static_cast<std::int32_t>(encode::EncodeMethod::OggVorbis);
  if (id == encode::EncoderId::MonkeysAudio)
    settings.method = static_cast<std::int32_t>(encode::EncodeMethod::MonkeysAudio);
  if (settings.Method() == encode::EncodeMethod::Codec) settings.object = encode::CodecIndexOf(id);
  settings.format = id == encode::EncoderId::Mp2Codec ? 13 : id == encode::EncoderId::WmaCodec ? 9 : 14;
  settings.engine = encode::BeConfig::Defaults(id == encode::EncoderId::Blade ? encode::Mp3Engine::Blade
                                                                              : encode::Mp3Engine::Lame);
  if (id == encode::EncoderId::Lame) settings.engine.Set(encode::lame::bEnableVBR, 0);
  return settings;
}

Outcome EncodeMinute(StagedFile& target, const encode::EncodeSettings& settings) {
  auto source = encode::EncodingSource::Open(Minute(), settings);
  return source ? encode::EncodeFile(*source, target, settings) : source.error();
}

const std::string kTarget = "/tmp/ts5-encode-bench.out";

void Encode(benchmark::State& state) {
  const auto id = static_cast<encode::EncoderId>(state.range(0));
  const encode::EncodeSettings settings = SettingsOf(id);
  for (auto _ : state) {
    auto target = StagedFile::Create(kTarget);
    if (!target || Failed(EncodeMinute(*target, settings))) return state.SkipWithError("not encoded");
    if (Failed(target->Commit())) return state.SkipWithError("not written");
  }
  state.SetLabel(std::string(encode::EncoderById(id).name));
  state.counters["times"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}
BENCHMARK(Encode)->DenseRange(0, 6)->Unit(benchmark::kMillisecond)->UseRealTime();

void Decode(benchmark::State& state) {
  const auto id = static_cast<encode::EncoderId>(state.range(0));
  auto target = StagedFile::Create(kTarget);
  if (!target || Failed(EncodeMinute(*target, SettingsOf(id))) || Failed(target->Commit()))
    return state.SkipWithError("not encoded");
  std::vector<double> block(8192);
  for (auto _ : state) {
    auto source = OpenPcm(kTarget);
    if (!source) return state.SkipWithError("not opened");
    for (auto got = (*source)->Read(block); got && *got > 0; got = (*source)->Read(block)) {
    }
  }
  state.SetLabel(std::string(encode::EncoderById(id).name));
  state.counters["times"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}
BENCHMARK(Decode)->DenseRange(0, 6)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace ts5
