// MIDI to wave: lengths, levels, formats and what is left of a run that is stopped.
#include "audio/midi_to_wave.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>

#include "audio/midi_recording.h"
#include "audio/synthesis.h"
#include "audio/synthesizer_config.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "frame/run_support.h"
#include "midi/midi_sequence.h"
#include "platform/synthesizer.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::DataPath;
using test::FailsWith;
using test::IsOk;

const std::string kScale = DataPath("midi/jazzsoft_test-c-major-scale.mid");

class MidiToWaveTest : public testing::Test {
 protected:
  void SetUp() override {
    setenv("STAVORA_TIMIDITY_DIR", folder_.File("timidity").c_str(), 1);
    if (Synthesizer::InstalledSoundFont().empty()) GTEST_SKIP() << "no sound font on this machine";
  }

  RunResult Convert(const std::vector<std::string>& files, const MidiToWaveParameters& parameters) {
    const FilterModule module = MidiToWaveModule();
    Job job = test::ListJob(files, module);
    job.parameters = ParametersValue(std::make_unique<MidiToWaveParameters>(parameters));
    DestinationRules rules;
    rules.sourceDirectory = false;
    rules.directory = folder_.Path();
    return test::RunJob(job, module, rules);
  }
  // Peak of all samples, 1 is full scale.
  static double Peak(const std::string& path) {
    auto wave = WaveFile::Open(path);
    if (!wave) return -1;
    const double full = wave->Format().bitsPerSample == 8 ? 128 : 32768;
    const auto peaks = ScanPeak(*wave);
    return peaks ? std::max(peaks->left, peaks->right) / full : -1;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(MidiToWaveTest, RendersEveryFormatAtTheLengthOfTheMusic) {
  const std::string content = test::Content(kScale);
  const auto sequence = MidiSequence::FromFile(AsBytes(content));
  ASSERT_THAT(sequence, IsOk());
  const double seconds = std::chrono::duration<double>(sequence->Duration()).count();
  for (const std::int32_t rate : kSynthesisRates) {
    for (const std::int32_t channels : {1, 2}) {
      for (const std::int32_t bits : {8, 16}) {
        MidiToWaveParameters parameters;
        parameters.format = {rate, channels, bits};
        const std::string target = folder_.File("ton.wav");
        ASSERT_THAT(RenderMidiFile(kScale, target, parameters.SynthesisFormat()), IsOk());
        const auto wave = WaveFile::Open(target);
        ASSERT_THAT(wave, IsOk());
        EXPECT_EQ(wave->Format(), parameters.SynthesisFormat());
        const double length = static_cast<double>(wave->DataSize()) / wave->Format().bytesPerSecond;
        EXPECT_GT(length, seconds);
        EXPECT_LT(length, seconds + kLongestDecaySeconds);
        EXPECT_GT(Peak(target), 0.02);
      }
    }
  }
}

TEST_F(MidiToWaveTest, TheFirstNoteBeginsWhereTheFileSaysAndTheEndIsQuiet) {
  // A second of rest, then a note that nobody ends.
  const std::string song = folder_.Write(
      "pause.mid",
      std::string("MThd\0\0\0\6\0\0\0\1\1\xF4MTrk\0\0\0\x0E\x87\x68\x99\x26\x7F\x87\x68\x90\x3C\x7F"
                  "\0\xFF\x2F\0",
                  36));
  const std::string target = folder_.File("pause.wav");
  MidiToWaveParameters parameters;
  ASSERT_THAT(RenderMidiFile(song, "", parameters.SynthesisFormat()), IsOk())
      << "the name is that of the source";
  const auto source = OpenPcm(target);
  ASSERT_THAT(source, IsOk());
  std::vector<double> samples(2 * 44100 * 40);
  std::size_t frames = 0;
  for (;;) {
    const auto got = (*source)->Read(std::span(samples).subspan(frames * 2));
    ASSERT_THAT(got, IsOk());
    if (*got == 0) break;
    frames += *got;
  }
  const auto loud = [&](std::size_t from, std::size_t to) {
    double peak = 0;
    for (std::size_t i = 2 * from; i < 2 * std::min(to, frames); ++i)
      peak = std::max(peak, std::abs(samples[i]));
    return peak;
  };
  EXPECT_LT(loud(0, 44000), 0.001);
  EXPECT_GT(loud(44100, 46305), 0.02) << "within 50 ms";
  EXPECT_GT(frames, 2 * 44100U);
  EXPECT_LT(loud(frames - 4410, frames), 0.001) << "died away";
}

TEST_F(MidiToWaveTest, NormalisesEachFileOrTheProject) {
  const std::string other = DataPath("midi/jazzsoft_test-multichannel-chords-1.mid");
  MidiToWaveParameters parameters;
  parameters.format = {11025, 1, 16};
  parameters.normalise = static_cast<std::int32_t>(NormaliseMode::Each);
  RunResult result = Convert({kScale, other}, parameters);
  ASSERT_EQ(result.lines[0].count, 2U);
  for (const RunItem& item : result.items) EXPECT_GT(Peak(item.destination), 0.99) << item.destination;

  parameters.normalise = static_cast<std::int32_t>(NormaliseMode::Project);
  result = Convert({kScale, other}, parameters);
  const double first = Peak(result.items.at(0).destination);
  const double second = Peak(result.items.at(1).destination);
  EXPECT_GT(std::max(first, second), 0.99);
  EXPECT_LT(std::min(first, second), 0.98) << "the quieter one keeps its distance";
}

TEST_F(MidiToWaveTest, BadSourcesAreCountedAndAStopLeavesNothing) {
  const std::string broken = folder_.Write("kaputt.mid", "MThd kaputt");
  const RunResult result = Convert({broken, kScale}, {});
  EXPECT_EQ(result.lines[0].count, 1U);
  EXPECT_EQ(result.lines[1].count, 1U);
  EXPECT_EQ(result.items.at(0).code, Code(Outcome::WrongFormat));

  const std::string target = folder_.File("halb.wav");
  int asked = 0;
  EXPECT_THAT(RenderMidiFile(kScale, target, AudioCdFormat(), {[&] { return ++asked > 2; }, {}}),
              FailsWith(Outcome::Cancelled));
  EXPECT_EQ(test::Listing(folder_.Path()).find("halb"), std::string::npos);
  folder_.Write("timidity/timidity.cfg", "soundfont \"" + broken + "\"\n");
  EXPECT_THAT(RenderMidiFile(kScale, target, AudioCdFormat()), FailsWith(Outcome::LibraryNotLoaded));
}

TEST_F(MidiToWaveTest, TheConfigurationIsMadeOnceAndChoosesTheSoundFont) {
  EXPECT_EQ(NewSynthesizerConfig("C:\\T"), "dir \"C:\\T\"\ndir \"C:\\T\\eawpats\"\n");
  const std::string folder = folder_.File("timidity");
  ASSERT_THAT(EnsureSynthesizerConfig(folder), IsOk());
  const std::string config = folder + "/timidity.cfg";
  EXPECT_EQ(test::Content(config), "dir \"" + folder + "\"\ndir \"" + folder + "/eawpats\"\n");
  EXPECT_EQ(ConfiguredSoundFont(folder), "");
  folder_.Write("timidity/eawpats/mein.sf2", "x");
  folder_.Write("timidity/timidity.cfg", test::Content(config) + "bank 0\n soundfont mein.sf2\r\n");
  EXPECT_EQ(ConfiguredSoundFont(folder), folder + "/eawpats/mein.sf2");
  ASSERT_THAT(EnsureSynthesizerConfig(folder), IsOk());
  EXPECT_THAT(test::Content(config), testing::HasSubstr("bank 0")) << "left as it is";
}

TEST_F(MidiToWaveTest, AnUnknownRateKeepsTheRunFromStarting) {
  const FilterModule module = MidiToWaveModule();
  Job job = test::ListJob({kScale}, module);
  EXPECT_FALSE(module.missing(job));
  auto& parameters = static_cast<MidiToWaveParameters&>(*job.parameters);
  parameters.format[0] = 48000;
  EXPECT_EQ(module.missing(job), TextId::MidiWaveChooseRate);
}

TEST(MidiRecording, FindsTheRecordingSumByAPartOfItsName) {
  const std::vector<std::string> inputs{"Mikrofon", "Monitor of Built-in Audio", "Stereo-Mix"};
  EXPECT_EQ(RecordingSource(inputs, "stereo-mix"), "Stereo-Mix");
  EXPECT_EQ(RecordingSource(inputs, "MONITOR"), "Monitor of Built-in Audio");
  EXPECT_EQ(RecordingSource(inputs, "Was Sie hören"), "");
  EXPECT_EQ(RecordingSource(inputs, ""), "");
}

TEST_F(MidiToWaveTest, RecordsTheInputWhileTheDevicePlays) {
  const std::string song = DataPath("midi/made_c_major_scale.rmi");
  const std::string content = test::Content(song);
  const auto sequence = MidiSequence::FromFile(AsBytes(content));
  ASSERT_THAT(sequence, IsOk());
  ASSERT_LT(sequence->Duration(), std::chrono::seconds(15));
  const std::string capture = folder_.File("mitschnitt.mid");
  auto target = StagedFile::Create(folder_.File("aufnahme.wav"));
  ASSERT_THAT(target, IsOk());
  ASSERT_THAT(RecordMidi(song, *target, AudioCdFormat(), {"capture:" + capture, "null"}), IsOk());
  ASSERT_THAT(target->Commit(), IsOk());
  const auto wave = WaveFile::Open(folder_.File("aufnahme.wav"));
  ASSERT_THAT(wave, IsOk());
  EXPECT_EQ(wave->Format(), AudioCdFormat());
  const double length = static_cast<double>(wave->DataSize()) / wave->Format().bytesPerSecond;
  const double music = std::chrono::duration<double>(sequence->Duration()).count();
  EXPECT_GT(length, music + 0.7);
  EXPECT_LT(length, music + 3);
  EXPECT_FALSE(test::Content(capture).empty());
  auto again = StagedFile::Create(folder_.File("nichts.wav"));
  ASSERT_THAT(again, IsOk());
  EXPECT_THAT(RecordMidi(song, *again, AudioCdFormat(), {"gibt es nicht", "null"}),
              FailsWith(Outcome::ConverterNotOpened));
  EXPECT_THAT(RecordMidi(song, *again, AudioCdFormat(), {"null", "gibt es nicht"}),
              FailsWith(Outcome::EncoderNotStarted));
}

}  // namespace
}  // namespace ts5
