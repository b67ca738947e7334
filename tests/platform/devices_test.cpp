#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <thread>

#include "platform/sound/audio_out.h"
#include "platform/sound/device_pace.h"
#include "platform/sound/live_level.h"
#include "platform/sound/midi_out.h"
#include "platform/sound/synthesizer.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using namespace std::chrono_literals;

constexpr std::uint32_t kRate = 44100;

double Peak(std::span<const float> block) {
  double peak = 0;
  for (const float sample : block) peak = std::max(peak, std::abs(static_cast<double>(sample)));
  return peak;
}

TEST(AudioOut, TheNullDevicePullsInRealTimeAndStops) {
  std::atomic<std::uint64_t> frames{0};
  auto output =
      OpenAudioOutput("null", {kRate, 2}, [&](std::span<float> block) { frames += block.size() / 2; });
  ASSERT_THAT(output, IsOk());
  ASSERT_THAT((*output)->Start(), IsOk());
  const auto start = std::chrono::steady_clock::now();
  std::this_thread::sleep_for(200ms);
  ASSERT_THAT((*output)->Stop(), IsOk());
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  const std::uint64_t pulled = frames;
  EXPECT_GT(pulled, 0U);
  EXPECT_LE(static_cast<double>(pulled), passed.count() * kRate + 2 * 512);
  std::this_thread::sleep_for(30ms);
  EXPECT_EQ(frames, pulled) << "rendered after Stop";
}

TEST(AudioOut, AWaveFileHoldsWhatWasRenderedLimitedAtFullScale) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.File("aus.wav");
  std::atomic<std::uint32_t> frames{0};
  {
    auto output = OpenAudioOutput("wave:" + path, {8000, 1}, [&](std::span<float> block) {
      for (float& sample : block) sample = frames % 2 == 0 ? 3.0F : -0.5F;
      frames += static_cast<std::uint32_t>(block.size());
    });
    ASSERT_THAT(output, IsOk());
    ASSERT_THAT((*output)->Start(), IsOk());
    while (frames == 0) std::this_thread::sleep_for(1ms);
    EXPECT_FALSE(test::Listing(directory.Path()).starts_with("aus.wav"))
        << "the target appears only when it is whole";
    ASSERT_THAT((*output)->Stop(), IsOk());
    ASSERT_THAT((*output)->Stop(), IsOk());
  }
  const std::string file = test::Content(path);
  ByteReader in(AsBytes(file));
  EXPECT_EQ(in.Tag(), "RIFF");
  EXPECT_EQ(in.U32Le(), file.size() - 8);
  in.Skip(8 + 4 + 4);
  EXPECT_EQ(in.U32Le(), 8000U);
  in.Skip(8 + 4);
  EXPECT_EQ(in.U32Le(), frames * 2U);
  EXPECT_EQ(in.U16Le(), 32767) << "limited, not wrapped";
  EXPECT_EQ(in.Remaining(), frames * 2U - 2);
}

TEST(AudioOut, WhatCannotBeOpenedIsRefused) {
  const auto silence = [](std::span<float> block) { std::ranges::fill(block, 0.0F); };
  EXPECT_THAT(OpenAudioOutput("Karte, die es nicht gibt", {}, silence), FailsWith(Outcome::TargetFailed));
  EXPECT_THAT(OpenAudioOutput("wave:/gibt/es/nicht/a.wav", {}, silence), FailsWith(Outcome::TargetFailed));
  EXPECT_THAT(OpenAudioOutput("", {}, silence), IsOk()) << "a machine without sound plays all the same";
}

TEST(Synthesizer, ANoteSoundsAndAResetEndsIt) {
  auto synth = Synthesizer::Create(kRate);
  ASSERT_THAT(synth, IsOk());
  std::vector<float> block(std::size_t{kRate} / 5 * 2);
  (*synth)->Render(block);
  EXPECT_LT(Peak(block), 1e-4);
  (*synth)->ShortMessage(ShortMidiMessage(0x90, 60, 100));
  (*synth)->Render(block);
  EXPECT_GT(Peak(block), 0.01);
  (*synth)->Reset();
  for (int i = 0; i < 20; ++i) (*synth)->Render(block);
  EXPECT_LT(Peak(block), 1e-3);
}

TEST(Synthesizer, HostileMessagesAndFontsDoNoHarm) {
  const test::TemporaryDirectory directory;
  EXPECT_THAT(Synthesizer::Create(kRate, directory.Write("kein.sf2", "RIFF0000WAVE")),
              FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(
      Synthesizer::Create(kRate, directory.Write("halb.sf2", std::string("RIFF\xFF\xFF\xFF\x7Fsfbk", 12))),
      FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(Synthesizer::Create(kRate, directory.File("fehlt.sf2")), FailsWith(Outcome::SourceFailed));

  auto synth = Synthesizer::Create(kRate);
  ASSERT_THAT(synth, IsOk());
  for (std::uint32_t status = 0; status < 256; ++status) (*synth)->ShortMessage(status | 0xFFFFFF00U);
  const Bytes longMessage(100000, 0xF7);
  (*synth)->SystemExclusive({});
  (*synth)->SystemExclusive(longMessage);
  Bytes framed = longMessage;
  framed.front() = 0xF0;
  (*synth)->SystemExclusive(framed);
  std::vector<float> block(1024);
  (*synth)->Render(block);
}

TEST(LiveLevel, ASingleVoiceIsLouderAndABandStaysBelowFullScale) {
  LiveLevel level;
  const auto played = [&](float peak) {
    std::vector<float> block(1024);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = i % 8 < 4 ? peak : -peak;
    level.Apply(block);
    EXPECT_LE(Peak(block), 1.0);
    return Peak(std::span(block).last(512));
  };
  EXPECT_NEAR(played(0.02F), 0.08, 1e-4);
  EXPECT_NEAR(played(0.6F), 0.95, 1e-3) << "as loud as there is room";
  EXPECT_LT(played(0.02F), 0.04) << "what follows does not jump up";
  for (int i = 0; i < 300; ++i) (void)played(0.02F);
  EXPECT_NEAR(played(0.02F), 0.08, 1e-4);
}

TEST(MidiOut, TheBuiltInSynthesizerIsADeviceAndSounds) {
  const std::vector<std::string> ports{"Midi Through:Midi Through Port-0 14:0",
                                       "Stavora Tonstudio 5:Piano 130:0", "Piano:Piano MIDI 1 20:0"};
  const std::string synthesizer(kSynthesizerName);
  EXPECT_EQ(MidiOutputsOf(ports, true), (std::vector{ports[2], synthesizer, ports[0]}))
      << "first what may sound, and nothing that is the program itself";
  EXPECT_EQ(MidiOutputsOf(ports, false), (std::vector{ports[2], ports[0]}));
  EXPECT_THAT(MidiOutputDevices(), testing::Contains(synthesizer));

  const test::TemporaryDirectory directory;
  const std::string path = directory.File("klang.wav");
  auto output = OpenMidiOutput(kSynthesizerName, "wave:" + path);
  ASSERT_THAT(output, IsOk());
  ASSERT_THAT((*output)->Send(ShortMidiMessage(0xC0, 19)), IsOk());
  ASSERT_THAT((*output)->Send(ShortMidiMessage(0x90, 60, 120)), IsOk());
  std::this_thread::sleep_for(150ms);
  ASSERT_THAT((*output)->Close(), IsOk());

  const std::string file = test::Content(path);
  ByteReader in(AsBytes(file));
  in.Skip(44);
  int peak = 0;
  while (in.Remaining() >= 2) peak = std::max(peak, std::abs(static_cast<int>(in.I16Le())));
  EXPECT_GT(peak, 300);
}

TEST(MidiOut, UnknownDevicesAreRefusedAndNullTakesAll) {
  EXPECT_THAT(OpenMidiOutput("Kein solches Gerät"), FailsWith(Outcome::TargetFailed));
  auto null = OpenMidiOutput("null");
  ASSERT_THAT(null, IsOk());
  EXPECT_THAT((*null)->Send(ShortMidiMessage(0x90, 60, 100)), IsOk());
  EXPECT_THAT((*null)->Close(), IsOk());
}

// A device that has gone stops, or takes all there is at once.
TEST(DevicePaceTest, TellsADeviceThatHasGone) {
  const auto at = [](int milliseconds) { return DevicePace::Clock::time_point(1h + 1ms * milliseconds); };
  DevicePace fresh(44100);
  EXPECT_TRUE(fresh.Alive(at(0))) << "not begun";
  fresh.Moved(44100 * 2, at(0));
  EXPECT_TRUE(fresh.Alive(at(0))) << "what it buffers";
  fresh.Moved(44100 * 20, at(1));
  EXPECT_FALSE(fresh.Alive(at(1))) << "runs away";
  DevicePace stopping(44100);
  stopping.Moved(512, at(0));
  EXPECT_TRUE(stopping.Alive(at(4900)));
  EXPECT_FALSE(stopping.Alive(at(5100)));
  stopping.Moved(512, at(5100));
  EXPECT_TRUE(stopping.Alive(at(5100)));
}

}  // namespace
}  // namespace ts5
