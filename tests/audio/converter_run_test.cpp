// The wave converter as a filter of the frame: whole runs over files.
#include <gmock/gmock.h>

#include "audio/wave_converter.h"
#include "audio/wave_file.h"
#include "frame/run_support.h"
#include "support/test_data.h"
#include "wave_bytes.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

const FilterModule& Module() {
  static const FilterModule module = WaveConverterModule();
  return module;
}

Job JobOf(const std::vector<std::string>& files, std::uint32_t rate, std::uint16_t bits,
          std::uint16_t channels) {
  Job job = ListJob(files, Module());
  auto& parameters = static_cast<WaveConverterParameters&>(*job.parameters);
  parameters.sampleRate = rate;
  parameters.bits = bits;
  parameters.channels = channels;
  return job;
}

std::vector<std::int32_t> Codes(const RunResult& result) {
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  return codes;
}

TEST(WaveConverterFieldsTest, TakeWhatIsOfferedOnly) {
  const auto parameters = Module().create();
  const auto& values = static_cast<const WaveConverterParameters&>(*parameters);
  struct Row {
    const char* field;
    const char* value;
    bool taken;
  };
  for (const Row& row : std::vector<Row>{{"SamplesPerSec", "48000", true},
                                         {"SamplesPerSec", "7999", false},
                                         {"SamplesPerSec", "192001", false},
                                         {"BitPerSample", "24", true},
                                         {"BitPerSample", "12", false},
                                         {"BitPerSample", "", false},
                                         {"Channels", "1", true},
                                         {"Channels", "3", false}}) {
    bool taken = false;
    for (const ParameterField& field : Module().fields) {
      if (field.name == row.field) taken = field.set(*parameters, row.value);
    }
    EXPECT_EQ(taken, row.taken) << row.field << " " << row.value;
  }
  EXPECT_EQ(values.Target(), PcmFormat(48000, 24, 1));
}

TEST(WaveConverterRunTest, ConvertsWaveAndAiffAndRefusesTheRest) {
  const TemporaryDirectory place;
  const auto copy = [&](const char* name, const char* as) {
    return place.Write(as, Content(DataPath(std::string("audio/") + name)));
  };
  const std::vector<std::string> files{copy("wav_adpcm_ms_stereo_22050.wav", "adpcm.wav"),
                                       copy("aiff_pcm8_mono_22050.aif", "mac.aif"),
                                       copy("mpeg1_layer3_cbr128.mp3", "lied.mp3"),
                                       copy("wma_v2_stereo_tags.wma", "lied.wma"),
                                       copy("ogg_vorbis_q3_tags.ogg", "lied.ogg"),
                                       place.Write("text.wav", "kein Audio"),
                                       place.File("none.wav")};
  const RunResult result = RunJob(JobOf(files, 22050, 16, 1), Module());
  EXPECT_EQ(TitleText(result), "Ergebnisse der Wave-Konvertierung");
  EXPECT_THAT(Codes(result), ElementsAre(0, 0, -300, -300, -300, -300, -300));
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_EQ(result.counts[1], 5U);
  EXPECT_THAT(result.remarks, ElementsAre("Die Konvertierung konnte nicht initialisiert werden."));
  EXPECT_EQ(Listing(place.Path()),
            "adpcm.cnv.wav adpcm.wav lied.mp3 lied.ogg lied.wma mac.aif mac.cnv.wav text.wav");
  auto wave = WaveFile::Open(place.File("mac.cnv.wav"));
  ASSERT_TRUE(wave);
  EXPECT_EQ(wave->Format(), PcmFormat(22050, 16, 1));
  EXPECT_EQ(wave->DataSize(), 2U * 11025);
}

// A file that was converted in place, on all cores: the same bytes as one after the other, run after run.
TEST(WaveConverterRunTest, ManyFilesGiveTheSameEveryTime) {
  const TemporaryDirectory place;
  std::vector<std::string> files;
  for (int i = 0; i < 20; ++i) {
    std::vector<std::int16_t> samples(static_cast<std::size_t>(1000 + i * 137));
    for (std::size_t s = 0; s < samples.size(); ++s)
      samples[s] = static_cast<std::int16_t>(s * 7919 + 13 * static_cast<std::size_t>(i));
    files.push_back(place.Write("s" + std::to_string(i) + ".wav",
                                AsText(Wave(PcmFormat(44100, 16, 1), Samples16(samples)))));
  }
  std::vector<std::string> first;
  for (int round = 0; round < 2; ++round) {
    const RunResult result = RunJob(JobOf(files, 32000, 8, 2), Module());
    EXPECT_EQ(result.counts[0], files.size());
    for (std::size_t i = 0; i < files.size(); ++i) {
      EXPECT_EQ(result.items[i].source, files[i]);
      const std::string content = Content(result.items[i].destination);
      if (round == 0) first.push_back(content);
      EXPECT_FALSE(content.empty());
      EXPECT_EQ(content, first[i]);
    }
  }
}

// Stops the run as soon as the third file has its turn.
class StoppingHost final : public RecordingHost {
 public:
  void Progress(const RunProgress& event) override {
    if (event.item == 3 && run != nullptr) run->cancelRequest = kUserStop;
    RecordingHost::Progress(event);
  }
  std::shared_ptr<JobRun> run;
};

TEST(WaveConverterRunTest, AStopInTheThirdOfFiveFilesFailsThreeAndLeavesNoTargetOfIt) {
  const TemporaryDirectory place;
  std::vector<std::string> files;
  for (int i = 1; i <= 5; ++i) {
    const std::size_t frames = i == 3 ? 44100 * 100 : 100;
    files.push_back(place.Write(
        std::to_string(i) + ".wav",
        AsText(Wave(PcmFormat(44100, 16, 1), Samples16(std::vector<std::int16_t>(frames, 1000))))));
  }
  const Job job = JobOf(files, 192000, 32, 2);
  const auto host = std::make_shared<StoppingHost>();
  host->run = job.run.Shared();
  const RunResult result = RunJob(job, Module(), {}, host);
  EXPECT_TRUE(result.cancelled);
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_EQ(result.counts[1], 3U);
  EXPECT_THAT(result.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_EQ(Listing(place.Path()), "1.cnv.wav 1.wav 2.cnv.wav 2.wav 3.wav 4.wav 5.wav");
}

TEST(WaveConverterRunTest, ARefusedOverwriteEndsTheRun) {
  const TemporaryDirectory place;
  const std::vector<std::string> files{place.Write("a.wav", AsText(Wave16({1, 2}))),
                                       place.Write("b.wav", AsText(Wave16({3, 4}))),
                                       place.Write("c.wav", AsText(Wave16({5, 6})))};
  place.Write("b.cnv.wav", "alt");
  const auto host = std::make_shared<RecordingHost>(std::deque<Answer>{Answer::No});
  DestinationRules rules;
  rules.overwrite = OverwritePolicy::Ask;
  const RunResult result = RunJob(JobOf(files, 8000, 16, 2), Module(), rules, host);
  EXPECT_THAT(host->questions,
              ElementsAre("Die Zieldatei ist bereits vorhanden. Soll sie überschrieben werden?"));
  EXPECT_THAT(Codes(result), ElementsAre(0, -5));
  EXPECT_EQ(result.counts[0], 1U);
  EXPECT_EQ(result.counts[1], 2U);
  EXPECT_THAT(result.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_EQ(Content(place.File("b.cnv.wav")), "alt");
  EXPECT_EQ(Listing(place.Path()), "a.cnv.wav a.wav b.cnv.wav b.wav c.wav");
}

}  // namespace
}  // namespace ts5
