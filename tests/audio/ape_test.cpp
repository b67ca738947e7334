// Monkey's Audio files: what the decoder gives back of them is what went in, to the bit; and what a file says
// about itself is true.
#include <gmock/gmock.h>

#include <cmath>
#include <limits>

#include "audio/ape/adaptive_filter.h"
#include "audio/ape/ape_encoder.h"
#include "audio/ape/ape_sink.h"
#include "platform/media/open_media.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using Samples = std::vector<std::int32_t>;

class Random {
 public:
  explicit Random(std::uint64_t seed) : state_(seed) {}
  std::uint32_t Next() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<std::uint32_t>(state_ >> 33);
  }

 private:
  std::uint64_t state_;
};

// Signals that drive the predictors to their limits, in steps of the depth.
enum class Signal : std::uint8_t {
  Tone,
  Noise,
  Extremes,
  Square,
  Overdriven,
  Silence,
  SameChannels,
  OneClick
};

std::int32_t SampleOf(Signal signal, std::size_t i, std::uint32_t channel, double full, Random& random) {
  const auto at = static_cast<double>(i);
  const auto noise = static_cast<double>(random.Next()) / (1U << 31) - 0.5;
  const auto limited = [full](double value) {
    return static_cast<std::int32_t>(std::lrint(std::clamp(value * full, -full, full - 1)));
  };
  switch (signal) {
    case Signal::Tone:
      return limited(0.6 * std::sin(at * 0.05 + channel) + noise * 0.01);
    case Signal::Noise:
      return limited(noise * 2);
    case Signal::Extremes:
      return limited(noise > 0 ? 1 : -1);
    case Signal::Square:
      return limited((i / 37 + channel) % 2 == 0 ? 1 : -1);
    case Signal::Overdriven:
      return limited(3 * std::sin(at * 0.011 * (1 + 0.1 * channel)));
    case Signal::SameChannels:
      return limited(0.5 * std::sin(at * 0.03));
    case Signal::OneClick:
      return i == 77 ? limited(-1) : 0;
    case Signal::Silence:
      break;
  }
  return 0;
}

Samples Make(Signal signal, std::size_t blocks, const ape::Format& format) {
  Random random(blocks + format.bits);
  Samples samples;
  const double full = std::ldexp(1.0, static_cast<int>(format.bits) - 1);
  for (std::size_t i = 0; i < blocks; ++i) {
    for (std::uint32_t channel = 0; channel < format.channels; ++channel)
      samples.push_back(SampleOf(signal, i, channel, full, random));
  }
  return samples;
}

// In uneven pieces, which must make no difference.
Bytes Encode(const Samples& samples, const ape::Format& format, std::size_t piece = 1 << 20) {
  auto encoder = ape::Encoder::Create(format, samples.size() / format.channels);
  EXPECT_THAT(encoder, IsOk());
  Bytes file;
  encoder->Begin(file);
  for (std::size_t at = 0; at < samples.size(); at += piece * format.channels) {
    const std::size_t count = std::min(piece * format.channels, samples.size() - at);
    EXPECT_THAT(encoder->Add(std::span(samples).subspan(at, count), file), IsOk());
  }
  encoder->Finish(file);
  std::ranges::copy(encoder->Head(), file.begin());
  return file;
}

Samples DecodeFile(const std::string& path, const ape::Format& format) {
  const auto reader = OpenMedia(path);
  EXPECT_THAT(reader, IsOk());
  if (!reader) return {};
  EXPECT_EQ((*reader)->Shape().sampleRate, format.sampleRate);
  EXPECT_EQ((*reader)->Shape().channels, format.channels);
  EXPECT_EQ((*reader)->Shape().bits, format.bits);
  Samples samples;
  std::vector<double> block(4096 * std::size_t{format.channels});
  while (true) {
    const auto got = (*reader)->Read(block);
    EXPECT_THAT(got, IsOk());
    if (!got || *got == 0) return samples;
    for (std::size_t i = 0; i < *got * format.channels; ++i) {
      samples.push_back(
          static_cast<std::int32_t>(std::lrint(std::ldexp(block[i], static_cast<int>(format.bits) - 1))));
    }
  }
}

std::string Name(const ape::Format& format, Signal signal, std::size_t blocks) {
  return std::to_string(format.bits) + " bits, " + std::to_string(format.channels) + " channels, level " +
         std::to_string(static_cast<int>(format.level)) + ", signal " +
         std::to_string(static_cast<int>(signal)) + ", " + std::to_string(blocks) + " blocks";
}

constexpr ape::Level kLevels[] = {ape::Level::Fast, ape::Level::Normal, ape::Level::High,
                                  ape::Level::ExtraHigh, ape::Level::Insane};

void ExpectBack(const ape::Format& format, Signal signal, std::size_t blocks) {
  SCOPED_TRACE(Name(format, signal, blocks));
  const TemporaryDirectory directory;
  const Samples samples = Make(signal, blocks, format);
  const std::string path = directory.Write("a.ape", AsText(Encode(samples, format)));
  const Samples back = DecodeFile(path, format);
  ASSERT_EQ(back.size(), samples.size());
  EXPECT_TRUE(back == samples);
}

TEST(Ape, ComesBackToTheBit) {
  for (const std::uint32_t bits : {8U, 16U, 24U}) {
    for (const std::uint32_t channels : {1U, 2U}) {
      for (const ape::Level level : kLevels) {
        for (int signal = 0; signal <= static_cast<int>(Signal::OneClick); ++signal)
          ExpectBack({44100, channels, bits, level}, static_cast<Signal>(signal), 2500);
      }
    }
  }
}

TEST(Ape, ComesBackInEveryLength) {
  for (std::size_t blocks = 0; blocks < 20; ++blocks)
    ExpectBack({8000, 2, 16, ape::Level::High}, Signal::Noise, blocks);
  for (const std::size_t blocks : {ape::kFrameBlocks - 1, ape::kFrameBlocks, ape::kFrameBlocks + 1})
    ExpectBack({96000, 2, 24, ape::Level::High}, Signal::Overdriven, blocks);
  ExpectBack({1, 1, 8, ape::Level::Fast}, Signal::Tone, ape::kFrameBlocks + 12345);
}

TEST(Ape, PiecesMakeNoDifference) {
  const ape::Format format{44100, 2, 16, ape::Level::Normal};
  const Samples samples = Make(Signal::Tone, ape::kFrameBlocks + 1000, format);
  EXPECT_TRUE(Encode(samples, format) == Encode(samples, format, 997));
}

// All of its fields, read back by hand.
TEST(Ape, TheHeadTellsTheTruth) {
  const ape::Format format{48000, 1, 24, ape::Level::Fast};
  const std::size_t blocks = 2 * std::size_t{ape::kFrameBlocks} + 5;
  const Bytes file = Encode(Make(Signal::Tone, blocks, format), format);
  ByteReader in(file);
  EXPECT_EQ(in.Tag(), "MAC ");
  EXPECT_EQ(in.U16Le(), 3990);
  in.Skip(2);
  EXPECT_EQ(in.U32Le(), 52U);
  EXPECT_EQ(in.U32Le(), 24U);
  EXPECT_EQ(in.U32Le(), 12U);  // three places in the seek table
  EXPECT_EQ(in.U32Le(), 0U);
  EXPECT_EQ(in.U64Le(), file.size() - 52 - 24 - 12);
  EXPECT_EQ(in.U32Le(), 0U);
  const ByteView sum = in.Take(16);
  const std::size_t header = in.Position();
  EXPECT_EQ(in.U16Le(), 1000);
  EXPECT_EQ(in.U16Le(), 8 + 32);
  EXPECT_EQ(in.U32Le(), ape::kFrameBlocks);
  EXPECT_EQ(in.U32Le(), 5U);
  EXPECT_EQ(in.U32Le(), 3U);
  EXPECT_EQ(in.U16Le(), 24);
  EXPECT_EQ(in.U16Le(), 1);
  EXPECT_EQ(in.U32Le(), 48000U);
  EXPECT_EQ(in.U32Le(), 52U + 24 + 12);
  const std::uint32_t second = in.U32Le();
  EXPECT_LT(second, in.U32Le());
  Md5Sum md5;
  md5.Add(ByteView(file).subspan(in.Position()));
  md5.Add(ByteView(file).subspan(header, 24 + 12));
  EXPECT_TRUE(std::ranges::equal(md5.Finish(), sum));
}

TEST(Ape, RefusesWhatAFileCannotHold) {
  const struct {
    ape::Format format;
    std::optional<std::uint64_t> blocks;
    Outcome outcome;
  } cases[] = {
      {{44100, 2, 16, ape::Level::High}, std::uint64_t{1} << 29, Outcome::Success},
      {{44100, 2, 16, ape::Level::High}, (std::uint64_t{1} << 29) + 1, Outcome::FormatRefused},
      {{44100, 2, 16, ape::Level::High}, std::numeric_limits<std::uint64_t>::max(), Outcome::FormatRefused},
      {{44100, 1, 8, ape::Level::High}, std::nullopt, Outcome::Success},
      {{44100, 2, 32, ape::Level::High}, 1, Outcome::FormatRefused},
      {{44100, 3, 16, ape::Level::High}, 1, Outcome::FormatRefused},
      {{44100, 0, 16, ape::Level::High}, 1, Outcome::FormatRefused},
      {{0, 2, 16, ape::Level::High}, 1, Outcome::FormatRefused},
  };
  for (const auto& row : cases) EXPECT_EQ(CodeOf(ape::Encoder::Create(row.format, row.blocks)), row.outcome);

  auto encoder = ape::Encoder::Create({44100, 1, 16, ape::Level::High}, 3);
  Bytes out;
  EXPECT_THAT(encoder->Add(Samples(3), out), IsOk());
  EXPECT_THAT(encoder->Add(Samples(1), out), FailsWith(Outcome::FormatRefused));
}

TEST(Ape, StoredLevels) {
  EXPECT_EQ(ape::LevelOf(5000), ape::Level::Insane);
  for (const std::uint32_t stored : {0U, 999U, 1500U, 5001U, 6000U, 0xFFFFFFFFU})
    EXPECT_EQ(ape::LevelOf(stored), ape::Level::High);
}

// The sink rounds, limits, and may not know how many samples will come.
TEST(Ape, SinkOfSamples) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("a.ape");
  const ape::Format format{44100, 1, 16, ape::Level::High};
  auto staged = StagedFile::Create(path);
  auto sink = OpenApeSink(*staged, format, std::nullopt);
  ASSERT_THAT(sink, IsOk());
  const std::vector<double> samples{0, 0.5, 1.5, -7, 1e-9, 0.99999};
  EXPECT_THAT((*sink)->Write(samples), IsOk());
  EXPECT_THAT((*sink)->Finish(), IsOk());
  ASSERT_THAT(staged->Commit(), IsOk());
  EXPECT_EQ(DecodeFile(path, format), (Samples{0, 16384, 32767, -32768, 0, 32767}));
}

// Whatever instructions the processor has, the files are the same.
TEST(Ape, EveryInstructionSetFiltersAlike) {
  if (ape::BestSimd() == ape::Simd::None) GTEST_SKIP() << "one instruction set only";
  for (const std::size_t order : {16U, 32U, 64U, 256U, 1280U}) {
    Random random(order);
    Samples plain;
    for (int i = 0; i < 5000; ++i) {
      const std::uint32_t value = random.Next();
      plain.push_back(i % 3 == 0 ? static_cast<std::int32_t>(value << 1) : static_cast<std::int16_t>(value));
    }
    Samples sse2 = plain;
    Samples best = plain;
    ape::AdaptiveFilter(order, 11, ape::Simd::None).Filter(plain);
    ape::AdaptiveFilter(order, 11, ape::Simd::Sse2).Filter(sse2);
    ape::AdaptiveFilter(order, 11).Filter(best);
    EXPECT_TRUE(plain == sse2);
    EXPECT_TRUE(plain == best);
  }
}

}  // namespace
}  // namespace ts5
