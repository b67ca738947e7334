// What goes wrong on the way: files that change, devices that vanish, stops at every stage; and sources of
// every odd shape through every conversion.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <filesystem>

#include "audio/audio_player.h"
#include "audio/format_texts.h"
#include "audio/loudness.h"
#include "audio/media_probe.h"
#include "audio/midi_to_wave.h"
#include "audio/normalise.h"
#include "audio/sample_codec.h"
#include "audio/wave_converter.h"
#include "audio/wave_stream.h"
#include "audio/waveform_overview.h"
#include "frame/player_parameters.h"
#include "frame/run_support.h"
#include "frame/texts.h"
#include "platform/media/resampler.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;

// A second of square wave at full scale, the channels in turn up and down.
Bytes Square(std::uint32_t rate, std::uint16_t channels, std::size_t frames) {
  std::vector<std::int16_t> samples;
  for (std::size_t i = 0; i < frames; ++i) {
    for (std::uint16_t c = 0; c < channels; ++c)
      samples.push_back((i / 40 + c / 2) % 2 == 0 ? 32767 : -32768);
  }
  return Wave(PcmFormat(rate, 16, channels), Samples16(samples));
}

// The offered format number index, to be taken from any of these sources.
TEST(TroubleTest, SquareWavesGoThroughEveryConversionWithoutWrapping) {
  const TemporaryDirectory place;
  struct Source {
    std::uint32_t rate;
    std::uint16_t channels;
  };
  for (const Source& source : {Source{44100, 2}, Source{192000, 1}, Source{48000, 6}, Source{8000, 2}}) {
    const std::string in = place.Write("in.wav", AsText(Square(source.rate, source.channels, 2000)));
    for (const WaveFormat& format : OfferedFormats()) {
      const std::string out = place.File("out.wav");
      ASSERT_THAT(ConvertWaveFile(in, out, format), IsOk());
      auto wave = WaveFile::Open(out);
      ASSERT_THAT(wave, IsOk());
      EXPECT_EQ(wave->Format(), format);
      const auto type = SampleTypeOf(format).value_or(SampleType::Signed16);
      Bytes data(static_cast<std::size_t>(wave->DataSize()));
      ASSERT_EQ(wave->Read(data).value_or(0), data.size());
      std::vector<double> values(data.size() / SampleSize(type));
      DecodeSamples(type, data, values);
      ASSERT_EQ(values.size(), format.channels * ResampledLength(2000, source.rate, format.sampleRate));
      if (source.channels == 6) continue;  // the surround channels cancel the front ones out
      // In the middle of each half wave that has a sample there: its sign, loud.
      const double step = static_cast<double>(format.sampleRate) / source.rate;
      if (step < 0.1) continue;  // above half of the new rate there is nothing left of it
      for (std::size_t half = 5; half < 45; ++half) {
        const auto frame = static_cast<std::size_t>((static_cast<double>(half) * 40 + 20) * step);
        EXPECT_GT(values[frame * format.channels] * (half % 2 == 0 ? 1 : -1), 0.5)
            << source.rate << " -> " << FullFormatText(format) << " at " << frame;
      }
    }
  }
}

TEST(TroubleTest, NothingAndOneSampleAreMeasuredAndConverted) {
  const TemporaryDirectory place;
  for (const std::vector<std::int16_t>& samples : std::vector<std::vector<std::int16_t>>{{}, {-32768}}) {
    const std::string name = place.Write("a.wav", AsText(Wave(PcmFormat(44100, 16, 1), Samples16(samples))));
    EXPECT_EQ(ProbeMedia(name).frames, samples.size());
    auto source = OpenPcm(name);
    ASSERT_THAT(source, IsOk());
    const auto overview = OverviewOf(**source, 3);
    if (overview) {
      EXPECT_EQ(overview->size(), 3U);
    }
    source = OpenPcm(name);
    const auto loudness = MeasureLoudness(**source);
    ASSERT_THAT(loudness, IsOk());
    EXPECT_FALSE(loudness->integrated);
    EXPECT_EQ(loudness->truePeak.has_value(), !samples.empty());
    for (const WaveFormat& format : OfferedFormats()) {
      ASSERT_THAT(ConvertWaveFile(name, place.File("b.wav"), format), IsOk());
      EXPECT_EQ(ProbeMedia(place.File("b.wav")).frames,
                ResampledLength(samples.size(), 44100, format.sampleRate));
    }
  }
}

// Every kind of file that has become shorter, or empty, between opening and reading.
TEST(TroubleTest, AFileThatIsCutWhileItIsReadFailsOrEnds) {
  for (const char* name : {"wav_pcm32_mono_44100.wav", "wav_adpcm_ms_stereo_22050.wav",
                           "aiff_pcm24_stereo_48000.aiff", "mpeg1_layer2_stereo_44100.mp2",
                           "mpeg1_layer3_cbr128.mp3", "ogg_vorbis_q3_tags.ogg", "wma_v2_stereo_tags.wma"}) {
    for (const int part : {0, 2, 3}) {
      SCOPED_TRACE(std::string(name) + " " + std::to_string(part));
      const TemporaryDirectory place;
      const std::string good = Content(DataPath(std::string("audio/") + name));
      const std::string path = place.Write(name, good);
      auto source = OpenPcm(path);
      ASSERT_THAT(source, IsOk());
      const std::uint64_t whole = (*source)->Frames().value_or(0);
      std::vector<double> block(512 * (*source)->Shape().channels);
      std::uint64_t frames = (*source)->Read(block).value_or(0);
      std::filesystem::resize_file(path, part == 0 ? 0 : good.size() / static_cast<std::size_t>(part));
      Result<std::size_t> got = std::size_t{1};
      while (got && *got > 0) {
        got = (*source)->Read(block);
        frames += got.value_or(0);
      }
      EXPECT_LE(frames, whole + 4608);
      (void)(*source)->Seek(0);
      (void)(*source)->Read(block);
    }
  }
}

// Asked for the n-th time, the user says stop: whatever is at work then leaves its target as it was.
template <typename Work>
void StopAtEveryQuestion(const Work& work) {
  int stages = 0;
  for (int allowed = 0;; ++allowed, ++stages) {
    ASSERT_LT(allowed, 100'000);
    int asked = 0;
    const WorkWatch watch{[&] { return asked++ == allowed; }, {}};
    const Outcome outcome = work(watch);
    if (asked <= allowed) {
      EXPECT_THAT(outcome, IsOk());
      break;
    }
    EXPECT_THAT(outcome, FailsWith(Outcome::Cancelled));
  }
  EXPECT_GE(stages, 2);
}

TEST(TroubleTest, StopsAtEveryStageLeaveSourceAndTarget) {
  const TemporaryDirectory place;
  const Bytes bytes = Square(8000, 1, 100'000);
  Bytes quiet = bytes;
  for (std::size_t i = 45; i < quiet.size(); i += 2) quiet[i] = static_cast<std::uint8_t>(quiet[i] / 4);
  const std::string source = place.Write("a.wav", AsText(quiet));
  const std::string target = place.Write("b.wav", "alt");
  const auto untouched = [&](const Outcome outcome) {
    if (Failed(outcome)) {
      EXPECT_EQ(Content(target), "alt");
    } else {
      place.Write("b.wav", "alt");
    }
    EXPECT_EQ(Content(source), AsText(quiet));
    EXPECT_EQ(Listing(place.Path()), "a.wav b.wav");
    return outcome;
  };
  StopAtEveryQuestion([&](const WorkWatch& watch) {
    return untouched(ConvertWaveFile(source, target, PcmFormat(44100, 16, 2), watch));
  });
  StopAtEveryQuestion([&](const WorkWatch& watch) {
    return untouched(Normalise({&source, 1}, {&target, 1}, 0, 1, watch));
  });
  StopAtEveryQuestion([&](const WorkWatch& watch) {
    return untouched(Normalise({&source, 1}, {&target, 1}, kWholeProject, 1, watch));
  });
}

class PlayerTroubleTest : public testing::Test {
 protected:
  static RunResult Play(const std::vector<std::string>& files, const std::string& device,
                        const std::shared_ptr<RecordingHost>& host = std::make_shared<RecordingHost>()) {
    const FilterModule module = AudioPlayerModule();
    RunSetup setup;
    setup.devices.output = device;
    return RunJob(ListJob(files, module), module, {}, host, std::move(setup));
  }
  TemporaryDirectory place_;
};

// An output that takes no more in the middle of a title: the run ends at once and says so.
TEST_F(PlayerTroubleTest, AnOutputThatVanishesEndsTheRun) {
  const std::string song = place_.Write(
      "lang.wav",
      AsText(Wave(PcmFormat(44100, 16, 1), Samples16(std::vector<std::int16_t>(44100 * 60, 100)))));
  EXPECT_EQ(InChild([&] {
              (void)std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{20'000, 20'000};
              if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
              const RunResult result = Play({song, song}, "wave:" + place_.File("aus.wav"));
              return result.items.size() == 1 && result.items[0].code == Code(Outcome::WriteFailed) &&
                     result.remarks.at(0) == Text(texts::PlayerDeviceGone);
            }),
            0);
  EXPECT_EQ(Listing(place_.Path()), "lang.wav");
}

TEST_F(PlayerTroubleTest, ACdTrackWithoutADriveIsSaid) {
  const auto host = std::make_shared<RecordingHost>();
  const RunResult result = Play({"PLEXTOR CD-R\\Track 3"}, "null", host);
  EXPECT_EQ(result.counts[1], 0U);
  const char* const text = "Das Playback der Audio-CD konnte nicht gestartet werden.";
  EXPECT_THAT(host->notices, testing::ElementsAre(text));
  EXPECT_EQ(result.remarks.at(0), text);
}

}  // namespace
}  // namespace ts5
