// MIDI to wave: lengths, levels, formats and what is left of a run that is stopped.
#include "audio/midi_to_wave.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <tuple>

#include "audio/midi_recording.h"
#include "audio/synthesis.h"
#include "audio/synthesizer_config.h"
#include "audio/texts.h"
#include "audio/wave_file.h"
#include "audio/wave_stream.h"
#include "frame/run_support.h"
#include "midi/midi_sequence.h"
#include "platform/sound/synthesizer.h"
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
    if (Synthesizer::InstalledSoundFont().empty()) GTEST_SKIP() << "no sound font on this machine";
  }

  RunResult Convert(const std::vector<std::string>& files, const MidiToWaveParameters& parameters) {
    const FilterModule module = MidiToWaveModule();
    Job job = test::ListJob(files, module);
    job.parameters = ParametersValue(std::make_unique<MidiToWaveParameters>(parameters));
    DestinationRules rules;
    rules.sourceDirectory = false;
    rules.directory = folder_.Path();
    RunSetup setup;
    setup.settings.synthesizerDirectory = synthesizer_;
    setup.settings.recordMixerName = "Stereo-Mix";
    setup.devices = devices_;
    return test::RunJob(job, module, rules, host_, std::move(setup));
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
  std::string synthesizer_ = folder_.File("timidity");
  RunDevices devices_;
  std::shared_ptr<test::RecordingHost> host_ =
      std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::Yes});
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
        ASSERT_THAT(RenderMidiFile(kScale, target, parameters.SynthesisFormat(), synthesizer_), IsOk());
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
  ASSERT_THAT(RenderMidiFile(song, "", parameters.SynthesisFormat(), synthesizer_), IsOk())
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
  ASSERT_EQ(result.counts[0], 2U);
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
  EXPECT_EQ(result.counts[0], 1U);
  EXPECT_EQ(result.counts[1], 1U);
  EXPECT_EQ(result.items.at(0).code, Code(Outcome::WrongFormat));

  const std::string target = folder_.File("halb.wav");
  int asked = 0;
  EXPECT_THAT(
      RenderMidiFile(kScale, target, AudioCdFormat(), synthesizer_, {[&] { return ++asked > 2; }, {}}),
      FailsWith(Outcome::Cancelled));
  EXPECT_EQ(test::Listing(folder_.Path()).find("halb"), std::string::npos);
  folder_.Write("timidity/timidity.cfg", "soundfont \"" + broken + "\"\n");
  EXPECT_THAT(RenderMidiFile(kScale, target, AudioCdFormat(), synthesizer_),
              FailsWith(Outcome::LibraryNotLoaded));
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
  EXPECT_EQ(module.missing(job), texts::MidiWaveChooseRate);
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
  const auto start = std::chrono::steady_clock::now();
  ASSERT_THAT(RecordMidi(song, *target, AudioCdFormat(), {"capture:" + capture, "null"}), IsOk());
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  ASSERT_THAT(target->Commit(), IsOk());
  const auto wave = WaveFile::Open(folder_.File("aufnahme.wav"));
  ASSERT_THAT(wave, IsOk());
  EXPECT_EQ(wave->Format(), AudioCdFormat());
  const double length = static_cast<double>(wave->DataSize()) / wave->Format().bytesPerSecond;
  const double music = std::chrono::duration<double>(sequence->Duration()).count();
  EXPECT_GT(length, music + 0.7);
  EXPECT_LT(length, taken.count() + 0.5) << "no longer than the recording took";
  EXPECT_FALSE(test::Content(capture).empty());
  auto again = StagedFile::Create(folder_.File("nichts.wav"));
  ASSERT_THAT(again, IsOk());
  EXPECT_THAT(RecordMidi(song, *again, AudioCdFormat(), {"gibt es nicht", "null"}),
              FailsWith(Outcome::MidiDeviceFailed));
  EXPECT_THAT(RecordMidi(song, *again, AudioCdFormat(), {"null", "gibt es nicht"}),
              FailsWith(Outcome::ConverterNotOpened));
}

// The same two songs, whichever way they are normalised; the run says what it did not have to do.
TEST_F(MidiToWaveTest, NormalisesAsItConvertsAndListsWhatIsLoudAlready) {
  const std::string silent =
      folder_.Write("stille.mid", std::string("MThd\0\0\0\6\0\0\0\1\1\xF4MTrk\0\0\0\x04\0\xFF\x2F\0", 26));
  MidiToWaveParameters parameters;
  parameters.format = {11025, 1, 16};
  parameters.normalise = static_cast<std::int32_t>(NormaliseMode::Each);
  const RunResult result = Convert({silent, kScale}, parameters);
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_THAT(result.remarks, testing::ElementsAre("Normalisieren ist nicht erforderlich."));
  EXPECT_EQ(Peak(result.items.at(0).destination), 0);
  EXPECT_GT(Peak(result.items.at(1).destination), 0.99);
}

TEST_F(MidiToWaveTest, AMissingDeviceEndsTheRunAndAMissingFormatIsAskedFor) {
  const std::string song = DataPath("midi/made_c_major_scale.rmi");
  struct Case {
    RunDevices devices;
    Outcome code;
    const char* remark;
  };
  MidiToWaveParameters parameters;
  parameters.method = static_cast<std::int32_t>(MidiWaveMethod::SoundCard);
  parameters.recordingFormats[0] = {44100, 2, 16};
  for (const Case& c : {Case{{"gibt es nicht", "null"},
                             Outcome::MidiDeviceFailed,
                             "Das Midi-Gerät konnte nicht initialisiert werden."},
                        Case{{"null", "gibt es nicht"},
                             Outcome::ConverterNotOpened,
                             "Die Wave-Aufnahme konnte nicht initialisiert werden (Code -401)."}}) {
    devices_ = c.devices;
    const RunResult result = Convert({song, song}, parameters);
    EXPECT_EQ(result.counts[1], 2U);
    EXPECT_THAT(result.remarks, testing::ElementsAre(c.remark));
    EXPECT_EQ(result.items.at(1).code, Code(c.code));
  }
  EXPECT_THAT(host_->questions, testing::IsEmpty());
  parameters.recordingFormats.clear();
  parameters.configureMixer = true;
  devices_ = {"null", ""};
  (void)Convert({song}, parameters);
  EXPECT_THAT(host_->questions, testing::ElementsAre(testing::HasSubstr("noch kein Format festgelegt")));
  EXPECT_THAT(host_->lines, testing::Contains(testing::StartsWith("Die Aufnahmesumme \"Stereo-Mix\" wurde")));
}

TEST(MidiToWaveFields, KeepARecordingFormatPerDevice) {
  MidiToWaveParameters parameters;
  parameters.recordingFormats = {{2, {48000, 1, 8}}, {0, {44100, 2, 16}}};
  const auto fields = MidiToWaveFields();
  const auto field = std::ranges::find(fields, "RecordFormat", &ParameterField::name);
  ASSERT_NE(field, fields.end());
  RegistryValues values;
  field->save(parameters, values);
  EXPECT_EQ(values.Text("RecordFormat"), "0 44100 2 16 2 48000 1 8");
  MidiToWaveParameters again;
  field->load(again, values);
  EXPECT_EQ(again.recordingFormats, parameters.recordingFormats);
  for (const char* wrong :
       {"0", "0 44100 2", "0 44100 3 16", "0 44100 2 24", "-1 44100 2 16", "0 0 2 16", "x"})
    EXPECT_FALSE(field->set(again, wrong)) << wrong;
  EXPECT_EQ(again.recordingFormats, parameters.recordingFormats);
  EXPECT_TRUE(field->set(again, ""));
  EXPECT_FALSE(again.HasRecordingFormat());
}

// A song of format 0, division 500, so that a tick is a millisecond: notes of half a second with these rests
// behind.
std::string Song(std::initializer_list<std::uint32_t> rests, int velocity = 100, int voices = 1) {
  ByteWriter track;
  const auto delta = [&track](std::uint32_t ticks) {
    for (int shift = 21; shift > 0; shift -= 7)
      track.U8(static_cast<std::uint8_t>(0x80 | (ticks >> shift & 0x7F)));
    track.U8(static_cast<std::uint8_t>(ticks & 0x7F));
  };
  std::uint32_t before = 0;
  for (const std::uint32_t rest : rests) {
    for (int strike = 0; strike < 2; ++strike) {
      for (int voice = 0; voice < voices; ++voice) {
        delta(voice > 0 ? 0 : strike == 0 ? before : 500);
        track.U8(static_cast<std::uint8_t>(0x90 + voice / 60));
        track.U8(static_cast<std::uint8_t>(40 + voice % 60));
        track.U8(static_cast<std::uint8_t>(strike == 0 ? velocity : 0));
      }
    }
    before = rest;
  }
  delta(before);
  track.Append(Bytes{0xFF, 0x2F, 0x00});
  ByteWriter file;
  file.Append(std::string_view("MThd\0\0\0\6\0\0\0\1\1\xF4MTrk", 18));
  file.U32Be(static_cast<std::uint32_t>(track.Size()));
  file.Append(track.View());
  return std::string(AsText(file.View()));
}

TEST_F(MidiToWaveTest, LongSilenceIsAskedAboutOnceAndRefusedOtherwise) {
  constexpr std::uint32_t kHour = 3600'000;
  const std::vector<std::string> files = {folder_.Write("gut.mid", Song({59'000})),
                                          folder_.Write("ende.mid", Song({1000, 61'000})),
                                          folder_.Write("pause.mid", Song({1000, 2 * kHour, 0})),
                                          folder_.Write("lang.mid", Song({590'000, 590'000, 0}))};
  MidiToWaveParameters parameters;
  parameters.format = {11025, 1, 8};
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::No});
  const RunResult result = Convert(files, parameters);
  ASSERT_EQ(result.items.size(), files.size());
  const std::int32_t refused = Code(Outcome::LongSilence);
  EXPECT_EQ(result.items[0].code, 0);
  EXPECT_EQ(result.items[1].code, refused);
  EXPECT_EQ(result.items[2].code, refused);
  EXPECT_EQ(result.items[3].code, 0) << "rests below ten minutes are music";
  EXPECT_THAT(result.remarks, testing::ElementsAre(std::string(Text(texts::MidiWaveLongSilence))));
  host_ = std::make_shared<test::RecordingHost>(std::deque<Answer>{Answer::Yes});
  EXPECT_EQ(Convert({files[1]}, parameters).items.at(0).code, 0);
}

TEST_F(MidiToWaveTest, EightBitsAreUsedAndSixteenNeverClipped) {
  const std::string soft = folder_.Write("leise.mid", Song({500, 500}, 30));
  const std::string loud = folder_.Write("laut.mid", Song({500, 500}, 127, 240));
  MidiToWaveParameters parameters;
  for (const auto& [source, bits, least] :
       {std::tuple{soft, 8, 0.98}, {loud, 8, 0.98}, {loud, 16, 0.9}, {soft, 16, 0.001}}) {
    parameters.format = {22050, 2, bits};
    const std::string target = folder_.File("a.wav");
    ASSERT_THAT(RenderMidiFile(source, target, parameters.SynthesisFormat(), synthesizer_), IsOk());
    EXPECT_GE(Peak(target), least) << source << " " << bits;
    auto wave = WaveFile::Open(target);
    ASSERT_THAT(wave, IsOk());
    Bytes data(static_cast<std::size_t>(wave->DataSize()));
    ASSERT_THAT(wave->Read(data), IsOk());
    if (bits == 16) {
      std::size_t full = 0;
      ByteReader in(data);
      while (in.Remaining() >= 2) full += std::abs(in.I16Le()) >= 32767 ? 1 : 0;
      EXPECT_LE(full, 2U) << source;
    }
  }
}

}  // namespace
}  // namespace ts5
