// Loudness and true peak against the values that EBU Tech 3341 and the formulas of BS.1770 give.
#include "audio/loudness.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>

#include "platform/media/wave_format.h"

namespace ts5 {
namespace {

struct Tone {
  double seconds;
  double level;  // dBFS of the peak
};

Loudness Measure(std::uint32_t rate, std::uint32_t channels, double frequency, const std::vector<Tone>& tones,
                 double phase = 0) {
  LoudnessMeter meter({rate, channels, UsualChannelMask(channels), 16});
  std::uint64_t frame = 0;
  for (const Tone& tone : tones) {
    const double amplitude = tone.level <= -200 ? 0 : std::pow(10, tone.level / 20);
    std::vector<double> block;
    for (std::uint64_t i = 0; i < static_cast<std::uint64_t>(tone.seconds * rate); ++i, ++frame) {
      const double sample =
          amplitude * std::sin(2 * std::numbers::pi * frequency * static_cast<double>(frame) / rate + phase);
      for (std::uint32_t c = 0; c < channels; ++c) block.push_back(sample);
    }
    meter.Add(block);
  }
  return meter.Result();
}

// Stereo sine of 1 kHz; the cases 1 to 5 of EBU Tech 3341, within 0.1 LU, at several rates.
TEST(LoudnessTest, MeetsTheReferenceTones) {
  for (const std::uint32_t rate : {8000U, 11025U, 44100U, 48000U, 96000U}) {
    SCOPED_TRACE(rate);
    EXPECT_NEAR(Measure(rate, 2, 1000, {{3, -23}}).integrated.value_or(0), -23, 0.1);
    EXPECT_NEAR(Measure(rate, 2, 1000, {{3, -33}}).integrated.value_or(0), -33, 0.1);
  }
  EXPECT_NEAR(Measure(8000, 2, 1000, {{10, -36}, {60, -23}, {10, -36}}).integrated.value_or(0), -23, 0.1);
  EXPECT_NEAR(
      Measure(8000, 2, 1000, {{10, -72}, {10, -36}, {60, -23}, {10, -36}, {10, -72}}).integrated.value_or(0),
      -23, 0.1);
  EXPECT_NEAR(Measure(8000, 2, 1000, {{20, -26}, {20.1, -20}, {20, -26}}).integrated.value_or(0), -23, 0.1);
  // One channel alone is 3 dB softer.
  EXPECT_NEAR(Measure(48000, 1, 1000, {{3, -20}}).integrated.value_or(0), -23, 0.1);
}

TEST(LoudnessTest, SilenceHasNoLoudness) {
  const Loudness silence = Measure(44100, 2, 1000, {{2, -200}});
  EXPECT_FALSE(silence.integrated);
  EXPECT_FALSE(silence.truePeak);
  const Loudness brief = Measure(44100, 2, 1000, {{0.1, -6}});
  EXPECT_FALSE(brief.integrated);
  EXPECT_NEAR(brief.truePeak.value_or(0), -6, 0.1);
  EXPECT_FALSE(Measure(44100, 2, 1000, {{2, -80}}).integrated) << "below the gate";
}

// Rates below what the weighting is made for, and floats beyond all measure: a peak, but no loudness.
TEST(LoudnessTest, WhatCannotBeWeighedHasOnlyAPeak) {
  for (const std::uint32_t rate : {1U, 10U, 999U, 3400U}) {
    const Loudness low = Measure(rate, 2, 0, {{5000.0 / rate, -6}}, std::numbers::pi / 2);
    EXPECT_FALSE(low.integrated) << rate;
    EXPECT_TRUE(low.truePeak) << rate;
  }
  EXPECT_FALSE(Measure(44100, 2, 1000, {{1, 4000}}).integrated);
}

// A sine of a quarter of the rate whose samples all lie 3 dB below its crest.
TEST(LoudnessTest, FindsThePeakBetweenTheSamples) {
  const Loudness between = Measure(48000, 2, 12000, {{1, -6}}, std::numbers::pi / 4);
  EXPECT_NEAR(between.truePeak.value_or(0), -6, 0.4);
  const Loudness plain = Measure(48000, 2, 997, {{1, -6}});
  EXPECT_NEAR(plain.truePeak.value_or(0), -6, 0.1);
}

}  // namespace
}  // namespace ts5
