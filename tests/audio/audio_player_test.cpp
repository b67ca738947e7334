// The audio player into a wave file: what sounds is what the file holds.
#include "audio/audio_player.h"

#include <gmock/gmock.h>

#include <cmath>
#include <thread>

#include "audio/played_frames.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "audio/waveform_overview.h"
#include "frame/player_run.h"
#include "frame/run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::IsOk;

// 16-bit stereo; no frame is silent, and every one differs from its neighbours.
std::vector<std::int16_t> Ramp(std::size_t frames) {
  std::vector<std::int16_t> samples;
  for (std::size_t i = 0; i < frames; ++i) {
    samples.push_back(static_cast<std::int16_t>(i % 30'000 + 1));
    samples.push_back(static_cast<std::int16_t>(-static_cast<int>(i % 29'000) - 1));
  }
  return samples;
}

std::vector<double> SamplesOf(const std::string& path) {
  auto source = OpenPcm(path);
  EXPECT_THAT(source, IsOk());
  std::vector<double> samples;
  std::vector<double> block(8192);
  while (source) {
    const auto got = (*source)->Read(block);
    if (!got || *got == 0) break;
    samples.insert(samples.end(), block.begin(), block.begin() + static_cast<std::ptrdiff_t>(*got * 2));
  }
  return samples;
}

class AudioPlayerTest : public testing::Test {
 protected:
  std::string Wave(const std::string& name, const std::vector<std::int16_t>& samples, std::uint32_t rate) {
    const std::string path = folder_.File(name);
    auto wave = WaveFile::Create(path, PcmFormat(rate, 16, 2));
    EXPECT_THAT(wave, IsOk());
    ByteWriter bytes;
    for (const std::int16_t sample : samples) bytes.U16Le(static_cast<std::uint16_t>(sample));
    EXPECT_THAT(wave->Write(bytes.View()), IsOk());
    EXPECT_THAT(wave->Close(), IsOk());
    return path;
  }
  RunResult Play(const std::vector<std::string>& files, const PlayerParameters& parameters = {},
                 const std::function<void(PlayerControl&)>& steer = {}) {
    return test::PlayFiles(AudioPlayerModule(), files, "wave:" + out_, parameters, steer, host_);
  }

  test::TemporaryDirectory folder_;
  std::string out_ = folder_.File("gespielt.wav");
  std::shared_ptr<test::RecordingHost> host_ = std::make_shared<test::RecordingHost>();
};

// Where the samples begin in what was played, and how many follow without a gap or a change.
std::pair<std::size_t, std::size_t> FindRun(const std::vector<double>& played,
                                            const std::vector<std::int16_t>& samples) {
  const auto same = [&](std::size_t at, std::size_t i) { return played[at] * 32768 == samples[i]; };
  std::size_t start = 0;
  while (start < played.size() && played[start] == 0) ++start;
  std::size_t count = 0;
  while (start + count < played.size() && count < samples.size() && same(start + count, count)) ++count;
  return {start, count};
}

TEST_F(AudioPlayerTest, PlaysEverySampleOfEachTitleOnce) {
  const auto first = Ramp(48'000);
  const RunResult result = Play({Wave("eins.wav", first, 48'000), Wave("zwei.wav", Ramp(4'800), 48'000)});
  EXPECT_EQ(result.counts[1], 2U);
  const auto played = SamplesOf(out_);
  const auto [start, count] = FindRun(played, first);
  EXPECT_EQ(count, first.size()) << "from " << start;
  const std::vector<double> rest(played.begin() + static_cast<std::ptrdiff_t>(start + count), played.end());
  EXPECT_EQ(FindRun(rest, Ramp(4'800)).second, 9'600U);
}

TEST_F(AudioPlayerTest, VolumeAndBalanceAreGains) {
  PlayerParameters parameters;
  parameters.volume = -600;
  parameters.balance = 2000;  // 20 dB less on the left
  (void)Play({Wave("leise.wav", std::vector<std::int16_t>(44'100, 20'000), 44'100)}, parameters);
  const auto played = SamplesOf(out_);
  std::size_t middle = played.size() / 2;
  middle -= middle % 2;
  const double volume = std::pow(10, -0.3);
  EXPECT_NEAR(played[middle + 1] * 32768, 20'000 * volume, 4);
  EXPECT_NEAR(played[middle] * 32768, 20'000 * volume * 0.1, 4);
}

TEST_F(AudioPlayerTest, SeeksAndStopsWhereItIsTold) {
  const auto song = Ramp(44'100 * 20);
  const std::string path = Wave("lang.wav", song, 44'100);
  PlayerStatus status;
  const RunResult result = Play({path}, {}, [&](PlayerControl& control) {
    for (int i = 0; i < 1000 && (control.Status().position < 50ms || !control.Status().waveform); ++i)
      std::this_thread::sleep_for(5ms);
    status = control.Status();
    control.Seek(19'500ms);
  });
  EXPECT_EQ(result.counts[1], 1U);
  EXPECT_EQ(status.duration, 20s);
  ASSERT_NE(status.waveform, nullptr);
  EXPECT_EQ(status.waveform->size(), kOverviewParts);
  const auto played = SamplesOf(out_);
  EXPECT_LT(played.size(), 2 * 44'100U * 15) << "most of it was passed over";
  std::size_t last = played.size();
  while (last > 0 && played[last - 1] == 0) --last;
  EXPECT_NEAR(played.at(last - 1) * 32768, song.back(), 2) << "played to the end";
}

TEST_F(AudioPlayerTest, WhatIsNoAudioIsCountedAndADeviceThatIsNotThereIsSaid) {
  const RunResult result =
      Play({folder_.Write("kein.wav", "RIFFxxxxWAVE"), Wave("kurz.wav", Ramp(441), 44'100)});
  EXPECT_EQ(result.counts[1], 1U);
  EXPECT_EQ(result.counts[2], 1U);
  out_ = folder_.File("gibt/es/nicht.wav");
  const RunResult failed = Play({Wave("kurz.wav", Ramp(441), 44'100)});
  EXPECT_EQ(failed.counts[1], 0U);
  EXPECT_NE(failed.items.at(0).code, 0);
}

TEST_F(AudioPlayerTest, TheOverviewHoldsThePeaksOfItsParts) {
  std::vector<std::int16_t> samples(2 * 1000);
  samples[2 * 250] = -32768;
  samples[2 * 999 + 1] = 16384;
  const auto source = OpenPcm(Wave("zwei.wav", samples, 8000));
  ASSERT_THAT(source, IsOk());
  const auto overview = OverviewOf(**source, 4);
  ASSERT_THAT(overview, IsOk());
  EXPECT_THAT(*overview, testing::ElementsAre(0, 1, 0, 0.5));
}

// Where the ramp has this frame, in what was played.
std::vector<std::size_t> PlacesOf(const std::vector<double>& played, std::size_t frame) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i + 1 < played.size(); i += 2) {
    if (played[i] * 32768 == static_cast<double>(frame % 30'000 + 1) &&
        played[i + 1] * 32768 == -static_cast<double>(frame % 29'000) - 1)
      places.push_back(i / 2);
  }
  return places;
}

TEST_F(AudioPlayerTest, APassageIsPlayedOverAndOverWithoutARest) {
  const std::string path = Wave("schleife.wav", Ramp(44'100), 44'100);
  Practice practice;
  practice.passage = PracticePassage{200ms, 500ms};
  int rounds = 0;
  const RunResult result = Play({path}, {}, [&](PlayerControl& control) {
    const auto wait = [&](const auto& done) {
      for (int i = 0; i < 2000 && !done(control.Status().position); ++i) std::this_thread::sleep_for(2ms);
    };
    wait([](auto place) { return place > 10ms; });
    control.SetPractice(practice);
    for (; rounds < 2; ++rounds) {
      wait([](auto place) { return place > 400ms; });
      wait([](auto place) { return place < 300ms; });
    }
    control.SetPractice({});
  });
  EXPECT_EQ(rounds, 2);
  EXPECT_EQ(result.counts[1], 1U) << "then to its end";
  const auto played = SamplesOf(out_);
  const auto places = PlacesOf(played, 15'000);
  ASSERT_GE(places.size(), 3U);
  EXPECT_EQ(places[1] - places[0], 13'230U) << "300 ms later, to the frame";
  EXPECT_FALSE(PlacesOf(played, 43'000).empty());
}

TEST_F(AudioPlayerTest, SlowerMusicKeepsItsPitch) {
  constexpr double kPitch = 440;
  std::vector<std::int16_t> tone;
  for (int i = 0; i < 44'100; ++i) {
    const auto sample =
        static_cast<std::int16_t>(20'000 * std::sin(2 * 3.14159265358979 * kPitch * i / 44'100));
    tone.insert(tone.end(), {sample, sample});
  }
  const std::string path = Wave("ton.wav", tone, 44'100);
  const RunResult result = Play({path}, {}, [](PlayerControl& control) {
    for (int i = 0; i < 2000 && control.Status().title.empty(); ++i) std::this_thread::sleep_for(1ms);
    Practice practice;
    practice.speed = 50;
    control.SetPractice(practice);
  });
  EXPECT_EQ(result.counts[1], 1U);
  const auto played = SamplesOf(out_);
  std::size_t sounding = 0;
  std::size_t rises = 0;
  for (std::size_t i = 2; i < played.size(); i += 2) {
    if (std::abs(played[i]) > 0.001) ++sounding;
    if (played[i - 2] <= 0 && played[i] > 0) ++rises;
  }
  const double seconds = static_cast<double>(sounding) / 44'100;
  EXPECT_NEAR(seconds, 2, 0.2);
  EXPECT_NEAR(static_cast<double>(rises) / seconds, kPitch, 10);
}

TEST(PlayedFrames, ATitleThatJumpsIsWhereItSounds) {
  PlayedFrames frames;
  frames.Begin(1000, 0.5);
  EXPECT_EQ(frames.FrameAt(200), 1100U);
  frames.Jump(400, 1000);
  frames.Jump(800, 1000);
  EXPECT_EQ(frames.FrameAt(399), 1199U);
  EXPECT_EQ(frames.FrameAt(402), 1001U);
  EXPECT_EQ(frames.FrameAt(1000), 1100U);
  frames.Begin(7, 1);
  EXPECT_EQ(frames.FrameAt(3), 10U);
}

}  // namespace
}  // namespace ts5
