// Samples in and out of their bytes, mixing, resampling, and whole conversions: exact where nothing is lost,
// measured where something is.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <numbers>

#include "audio/channel_mix.h"
#include "audio/format_texts.h"
#include "audio/media_probe.h"
#include "audio/normalise.h"
#include "audio/sample_codec.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "platform/media/media_engine.h"
#include "platform/media/resampler.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

// The data bytes of a conversion of this file.
Bytes ConvertedData(const Bytes& file, const WaveFormat& format) {
  const TemporaryDirectory place;
  place.Write("in.wav", AsText(file));
  EXPECT_THAT(ConvertWaveFile(place.File("in.wav"), place.File("out.wav"), format), IsOk());
  auto wave = WaveFile::Open(place.File("out.wav"));
  if (!wave) return {};
  EXPECT_EQ(wave->Format(), format);
  Bytes data(static_cast<std::size_t>(wave->DataSize()));
  EXPECT_EQ(wave->Read(data).value_or(0), data.size());
  return data;
}

std::vector<double> Values(const WaveFormat& format, const Bytes& data) {
  const SampleType type = *SampleTypeOf(format);
  std::vector<double> values(data.size() / SampleSize(type));
  DecodeSamples(type, data, values);
  return values;
}

// Every depth into every one that is not shallower and back: the same bytes.
TEST(SampleCodecTest, DeeperSamplesComeBackExactly) {
  const std::vector<std::pair<SampleType, SampleType>> pairs{
      {SampleType::Unsigned8, SampleType::Signed16}, {SampleType::Unsigned8, SampleType::Float32},
      {SampleType::Signed16, SampleType::Signed16},  {SampleType::Signed16, SampleType::Signed24},
      {SampleType::Signed16, SampleType::Float32},   {SampleType::Signed24, SampleType::Signed32},
      {SampleType::Signed24, SampleType::Float32},   {SampleType::Signed32, SampleType::Float64},
      {SampleType::Float32, SampleType::Float64},
  };
  for (const auto& [from, to] : pairs) {
    Bytes bytes(SampleSize(from) * 4096);
    std::uint32_t random = 1;
    for (std::uint8_t& byte : bytes)
      byte = static_cast<std::uint8_t>((random = random * 1664525 + 1013904223) >> 24);
    std::vector<double> values(4096);
    DecodeSamples(from, bytes, values);
    // Floats that are none become silence, so they are compared from there on.
    SampleEncoder(from, false).Encode(values, bytes);
    Bytes deeper(SampleSize(to) * values.size());
    SampleEncoder(to, false).Encode(values, deeper);
    std::vector<double> again(values.size());
    DecodeSamples(to, deeper, again);
    Bytes back(bytes.size());
    SampleEncoder(from, false).Encode(again, back);
    EXPECT_EQ(back, bytes) << static_cast<int>(from) << " " << static_cast<int>(to);
  }
}

TEST(SampleCodecTest, RoundsAndLimitsAndNeverWraps) {
  struct Row {
    double value;
    std::int16_t sample;
  };
  for (const Row& row : std::vector<Row>{{0, 0},
                                         {1, 32767},
                                         {-1, -32768},
                                         {1e9, 32767},
                                         {-1e9, -32768},
                                         {1.5 / 32768, 2},
                                         {2.5 / 32768, 2},
                                         {-1.4 / 32768, -1},
                                         {32767.4 / 32768, 32767}}) {
    Bytes out(2);
    SampleEncoder(SampleType::Signed16, false).Encode(std::span(&row.value, 1), out);
    EXPECT_EQ(out, Samples16({row.sample})) << row.value;
  }
  const double values[] = {-2, -1, 0, 1, 2};
  Bytes eight(5);
  SampleEncoder(SampleType::Unsigned8, false).Encode(values, eight);
  EXPECT_THAT(eight, ElementsAre(0, 0, 128, 255, 255));
  Bytes odd(12);
  ByteWriter special;
  special.U32Le(0x7FC00000);  // not a number
  special.U32Le(0xFF800000);  // minus infinity
  special.U32Le(0x3F000000);
  std::vector<double> decoded(3);
  DecodeSamples(SampleType::Float32, special.View(), decoded);
  EXPECT_THAT(decoded, ElementsAre(0, 0, 0.5));
  // The greatest floats that there are go through mixer and resampler without becoming none.
  ByteWriter huge;
  for (int i = 0; i < 1000; ++i) huge.U64Le(0x7FEFFFFFFFFFFFFF);
  const Bytes file = Wave(PcmFormat(8000, 64, 2, kTagFloat), huge.View());
  for (const double value : Values(PcmFormat(44100, 16, 1), ConvertedData(file, PcmFormat(44100, 16, 1))))
    ASSERT_GT(value, 0.9);
}

// Triangular dither: no bias, a variance of a quarter step beside the twelfth of rounding, and no trace of a
// signal below one step. Silence stays silence.
TEST(SampleCodecTest, DitherIsTriangularAndWhite) {
  constexpr std::size_t kCount = 1 << 18;
  std::vector<double> values(kCount, 100.25 / 32768);
  Bytes out(kCount * 2);
  SampleEncoder(SampleType::Signed16, true).Encode(values, out);
  std::vector<double> error(kCount);
  DecodeSamples(SampleType::Signed16, out, error);
  for (double& e : error) e = e * 32768 - 100.25;
  double mean = 0;
  double power = 0;
  double neighbours = 0;
  double most = 0;
  for (std::size_t i = 0; i < kCount; ++i) {
    mean += error[i] / kCount;
    power += error[i] * error[i] / kCount;
    if (i > 0) neighbours += error[i] * error[i - 1] / kCount;
    most = std::max(most, std::abs(error[i]));
  }
  EXPECT_NEAR(mean, 0, 0.005);
  EXPECT_NEAR(power, 0.25, 0.005);
  EXPECT_NEAR(neighbours, 0, 0.005);
  EXPECT_LE(most, 1.5);

  std::ranges::fill(values, 0.0);
  SampleEncoder(SampleType::Signed16, true).Encode(values, out);
  EXPECT_TRUE(std::ranges::all_of(out, [](std::uint8_t byte) { return byte == 0; }));
}

TEST(ChannelMixTest, FoldsAsTheTableSays) {
  const auto mixed = [](std::uint32_t from, std::uint32_t to, std::vector<double> frame) {
    std::vector<double> out(to);
    ChannelMix(from, to, UsualChannelMask(from)).Apply(frame, out);
    return out;
  };
  EXPECT_THAT(mixed(1, 2, {0.5}), ElementsAre(0.5, 0.5));
  EXPECT_THAT(mixed(2, 1, {0.5, -0.25}), ElementsAre(0.125));
  EXPECT_THAT(mixed(2, 1, {1, 1}), ElementsAre(1));
  // 5.1: left, right, centre, low frequency, surround left, surround right.
  const double sum = 1 + std::numbers::sqrt2;
  EXPECT_THAT(mixed(6, 2, {1, 0, 0, 0, 0, 0}), ElementsAre(testing::DoubleEq(1 / sum), testing::DoubleEq(0)));
  EXPECT_THAT(mixed(6, 2, {0, 0, 1, 0, 0, 0}),
              ElementsAre(testing::DoubleNear(std::numbers::sqrt2 / 2 / sum, 1e-12),
                          testing::DoubleNear(std::numbers::sqrt2 / 2 / sum, 1e-12)));
  EXPECT_THAT(mixed(6, 2, {0, 0, 0, 1, 0, 0}), ElementsAre(0, 0));
  for (std::uint32_t from = 1; from <= 64; ++from) {
    for (std::uint32_t to = 1; to <= 2; ++to) {
      for (const double sample : mixed(from, to, std::vector<double>(from, 1.0)))
        EXPECT_LE(sample, 1 + 1e-12);
    }
  }
}

TEST(ConversionTest, ExactWhereNothingIsLost) {
  const Bytes stereo = Wave16({-32768, 32767, 100, 101, -5, 5, 7, 7}, 2, 22050);
  EXPECT_EQ(ConvertedData(stereo, PcmFormat(22050, 16, 2)),
            Samples16({-32768, 32767, 100, 101, -5, 5, 7, 7}));
  // The mean; halves go to the even neighbour.
  EXPECT_EQ(ConvertedData(stereo, PcmFormat(22050, 16, 1)), Samples16({0, 100, 0, 7}));
  const Bytes mono = Wave16({1, -2, 32767}, 1, 8000);
  EXPECT_EQ(ConvertedData(mono, PcmFormat(8000, 16, 2)), Samples16({1, 1, -2, -2, 32767, 32767}));
  const std::uint8_t eight[] = {0, 127, 128, 255};
  EXPECT_EQ(ConvertedData(Wave(PcmFormat(8000, 8, 1), eight), PcmFormat(8000, 16, 1)),
            Samples16({-32768, -256, 0, 32512}));
  EXPECT_THAT(ConvertedData(Wave16({256, -1}), TargetFormat(44100, 24, 1)),
              ElementsAre(0, 0, 1, 0, 0xFF, 0xFF));
  EXPECT_THAT(ConvertedData(Wave16({16384, -32768}), TargetFormat(44100, 32, 1)),
              ElementsAre(0, 0, 0, 0x3F, 0, 0, 0x80, 0xBF));
  // 24 significant bits in samples of 32.
  WaveFormat wide = PcmFormat(44100, 32, 1, kTagExtensible);
  wide.extra = {24, 0, 4, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71};
  const std::uint8_t samples[] = {0, 1, 2, 3, 0, 0xFF, 0xFF, 0xFF};
  EXPECT_THAT(ConvertedData(Wave(wide, samples), PcmFormat(44100, 24, 1)),
              ElementsAre(1, 2, 3, 0xFF, 0xFF, 0xFF));
}

TEST(ConversionTest, ShortFilesAndFullScale) {
  for (const std::uint32_t rate : {8000U, 44100U, 192000U}) {
    for (const std::uint16_t bits : kOfferedBits) {
      const WaveFormat format = TargetFormat(rate, bits, 2);
      EXPECT_EQ(ConvertedData(Wave16({}), format).size(), 0U);
      const std::size_t one = ConvertedData(Wave16({1000}), format).size();
      EXPECT_EQ(one, ResampledLength(1, 44100, rate) * format.blockAlign);
      // A square wave at full scale overshoots when it is resampled: it must be limited, never wrapped.
      std::vector<std::int16_t> square(4000);
      for (std::size_t i = 0; i < square.size(); ++i) square[i] = i / 50 % 2 == 0 ? 32767 : -32768;
      const Bytes data = ConvertedData(Wave(PcmFormat(44100, 16, 1), Samples16(square)), format);
      const auto values = Values(format, data);
      ASSERT_EQ(values.size(), 2 * ResampledLength(4000, 44100, rate));
      const double step = static_cast<double>(rate) / 44100;
      for (std::size_t period = 10; period < 60; ++period) {
        const auto middle = static_cast<std::size_t>((static_cast<double>(period) * 50 + 25) * step);
        EXPECT_GT(values[2 * middle] * (period % 2 == 0 ? 1 : -1), 0.8) << rate << " " << bits;
      }
    }
  }
}

TEST(ResamplerTest, GivesTheLengthToTheFrame) {
  for (const auto& [from, to] : std::vector<std::pair<std::uint32_t, std::uint32_t>>{
           {44100, 48000}, {48000, 44100}, {8000, 192000}, {192000, 8000}, {11025, 44100}, {44100, 12345}}) {
    for (const std::size_t frames : {1U, 2U, 999U, 10007U}) {
      auto resampler = Resampler::Create(from, to, 2);
      ASSERT_THAT(resampler, IsOk());
      std::vector<double> out;
      const std::vector<double> in(frames * 2, 0.25);
      for (std::size_t at = 0; at < in.size(); at += 334) {
        const auto portion = std::span(in).subspan(at, std::min<std::size_t>(334, in.size() - at));
        ASSERT_THAT(resampler->Process(portion, out), IsOk());
      }
      ASSERT_THAT(resampler->Finish(out), IsOk());
      EXPECT_EQ(out.size(), 2 * ResampledLength(frames, from, to)) << from << " " << to << " " << frames;
    }
  }
  EXPECT_EQ(ResampledLength(3, 2, 1), 2U);
  EXPECT_EQ(ResampledLength(std::uint64_t{1} << 50, 44100, 48000), 1225469286359319U);
  for (const std::uint32_t rate : {0U, 1U, 0xFFFFFFFFU})
    EXPECT_THAT(Resampler::Create(rate, 44100, 1), FailsWith(Outcome::FormatRefused)) << rate;
}

// Silence without end, that counts what is taken of it.
class EndlessSilence final : public PcmSource {
 public:
  EndlessSilence(std::uint32_t rate, std::uint64_t& taken, std::size_t& most)
      : shape_{rate, 1, 0, 16}, taken_(taken), most_(most) {}
  const PcmShape& Shape() const override { return shape_; }
  std::optional<std::uint64_t> Frames() const override { return std::nullopt; }
  Result<std::size_t> Read(std::span<double> out) override {
    std::ranges::fill(out, 0.0);
    taken_ += out.size();
    most_ = std::max(most_, out.size());
    return out.size();
  }
  Outcome Seek(std::uint64_t /*frame*/) override { return Outcome::Success; }

 private:
  PcmShape shape_;
  std::uint64_t& taken_;
  std::size_t& most_;
};

// Rates as far apart as a header can claim: neither memory without measure nor a long time between two
// questions for a stop.
TEST(WaveStreamTest, RatesThatAreFarApartGoInSmallSteps) {
  struct Row {
    std::uint32_t from;
    std::uint32_t to;
  };
  for (const Row& row : {Row{188, 192000}, Row{8000 * 1024, 8000}, Row{44100, 48000}}) {
    SCOPED_TRACE(row.from);
    std::uint64_t taken = 0;
    std::size_t most = 0;
    auto source = Converted(std::make_unique<EndlessSilence>(row.from, taken, most), row.to, 1);
    ASSERT_THAT(source, IsOk());
    std::vector<double> block(16384);
    for (int reads = 0; reads < 3; ++reads) {
      const std::uint64_t before = taken;
      EXPECT_GT((*source)->Read(block).value_or(0), 0U);
      EXPECT_LE(taken - before, 3'000'000U);
    }
    EXPECT_LE(static_cast<std::uint64_t>(most) * row.to / row.from, 10'000U) << "frames at once";
  }
}

// Amplitude of a frequency in the middle of a signal, by correlation under a window.
double Amplitude(const std::vector<double>& signal, double cyclesPerSample) {
  double real = 0;
  double imaginary = 0;
  double weights = 0;
  for (std::size_t i = 0; i < signal.size(); ++i) {
    const double phase = 2 * std::numbers::pi * static_cast<double>(i) / static_cast<double>(signal.size());
    const double window =
        0.35875 - 0.48829 * std::cos(phase) + 0.14128 * std::cos(2 * phase) - 0.01168 * std::cos(3 * phase);
    const double angle = 2 * std::numbers::pi * cyclesPerSample * static_cast<double>(i);
    real += window * signal[i] * std::cos(angle);
    imaginary += window * signal[i] * std::sin(angle);
    weights += window / 2;
  }
  return std::hypot(real, imaginary) / weights;
}

std::vector<double> Resampled(std::uint32_t from, std::uint32_t to, double frequency) {
  auto resampler = Resampler::Create(from, to, 1);
  std::vector<double> in(from);
  for (std::size_t i = 0; i < in.size(); ++i)
    in[i] = 0.5 * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(i) / from);
  std::vector<double> out;
  EXPECT_THAT(resampler->Process(in, out), IsOk());
  EXPECT_THAT(resampler->Finish(out), IsOk());
  return {out.begin() + to / 4, out.begin() + 3 * to / 4};
}

TEST(ResamplerTest, PassesTheBandAndStopsWhatFoldsBack) {
  for (const double frequency : {20.0, 1000.0, 10000.0, 18000.0, 20000.0}) {
    const auto out = Resampled(44100, 48000, frequency);
    EXPECT_NEAR(20 * std::log10(Amplitude(out, frequency / 48000) / 0.5), 0, 0.0002) << frequency;
  }
  // Above half of the new rate: nothing may be left, least of all at the mirrored place.
  for (const double frequency : {22500.0, 23000.0, 23900.0}) {
    const auto out = Resampled(48000, 44100, frequency);
    EXPECT_LT(20 * std::log10(Amplitude(out, (44100 - frequency) / 44100) + 1e-12), -140) << frequency;
  }
}

TEST(WaveStreamTest, SeeksToTheFrame) {
  const TemporaryDirectory place;
  std::vector<std::int16_t> ramp(20000);
  for (std::size_t i = 0; i < ramp.size(); ++i) ramp[i] = static_cast<std::int16_t>(i);
  const std::string name = place.Write("a.wav", AsText(Wave(PcmFormat(44100, 16, 1), Samples16(ramp))));
  auto source = OpenPcm(name);
  ASSERT_THAT(source, IsOk());
  std::vector<double> block(10);
  ASSERT_THAT((*source)->Seek(12345), IsOk());
  ASSERT_EQ((*source)->Read(block).value_or(0), 10U);
  EXPECT_EQ(block[0] * 32768, 12345);
  ASSERT_THAT((*source)->Seek(1 << 20), IsOk());
  EXPECT_EQ((*source)->Read(block).value_or(7), 0U);
}

TEST(ConversionTest, RefusesWhatIsNoAudio) {
  const TemporaryDirectory place;
  const std::string text = place.Write("a.wav", "kein Audio");
  EXPECT_THAT(ConvertWaveFile(text, place.File("b.wav"), AudioCdFormat()), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(ConvertWaveFile(place.File("none.wav"), place.File("b.wav"), AudioCdFormat()),
              FailsWith(Outcome::SourceFailed));
  const std::string good = place.Write("c.wav", AsText(Wave16({1, 2, 3})));
  const WorkWatch stop{[] { return true; }, {}};
  EXPECT_THAT(ConvertWaveFile(good, place.File("b.wav"), AudioCdFormat(), stop),
              FailsWith(Outcome::Cancelled));
  EXPECT_THAT(ConvertWaveFile(good, "/dev/full", AudioCdFormat()), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(Listing(place.Path()), "a.wav c.wav");
}

// A disk that is full in the middle: the code for it, and nothing is left of the target.
TEST(ConversionTest, AFullDiskLeavesNothing) {
  const TemporaryDirectory place;
  const std::string source = place.Write(
      "a.wav", AsText(Wave(PcmFormat(44100, 16, 1), Samples16(std::vector<std::int16_t>(100000, 5)))));
  EXPECT_EQ(InChild([&] {
              (void)std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{50000, 50000};
              return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 &&
                     ConvertWaveFile(source, place.File("b.wav"), AudioCdFormat()) == Outcome::WriteFailed &&
                     Normalise({&source, 1}, {}, 0, 1) == Outcome::WriteFailed;
            }),
            0);
  EXPECT_EQ(Listing(place.Path()), "a.wav");
  EXPECT_EQ(Content(source).size(), 200044U);
}

}  // namespace
}  // namespace ts5
