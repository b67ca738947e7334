// The score-to-MIDI converter as a filter of the frame: whole runs over files.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>

#include "frame/run_support.h"
#include "midi/midi_sequence.h"
#include "score/parameter_set.h"
#include "score/score_filter.h"
#include "score/texts.h"
#include "score_log.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

class ScoreConverterRun : public testing::Test {
 protected:
  ScoreConverterRun() { parameters_.method = 1; }

  RunResult Convert(const std::vector<std::string>& files, const DestinationRules& rules = {},
                    const std::string& sets = {}) {
    Job job = ListJob(files, module_);
    job.parameters = ParametersValue(std::make_unique<ScoreToMidiParameters>(parameters_));
    RunSetup setup;
    setup.settings.playbackParameterDirectory = sets;
    if (cancelled_) job.run->cancelRequest = kUserStop;
    return RunJob(job, module_, rules, host_, std::move(setup));
  }
  std::string Score(const std::string& name, const ScoreDocument& document) {
    return place_.Write(name, AsText(WriteScore(document)));
  }
  // The velocity of the first note, 0 when nothing sounds.
  std::uint32_t Velocity(const std::string& name) {
    const std::string content = Content(place_.File(name));
    const auto midi = MidiSequence::FromFile(AsBytes(content));
    for (const SequenceMessage& message : midi->Messages()) {
      if (message.IsNoteOn()) return message.message >> 16;
    }
    return 0;
  }

  TemporaryDirectory place_;
  FilterModule module_ = ScoreToMidiModule();
  ScoreToMidiParameters parameters_;
  bool cancelled_ = false;
  std::shared_ptr<RecordingHost> host_ = std::make_shared<RecordingHost>();
};

TEST_F(ScoreConverterRun, TellsWhatBecameOfEachScore) {
  ScoreDocument damaged = OneVoice({Quarter()});
  damaged.systems[0].staves[0].voices[0].push_back({.kind = 6});
  const RunResult result =
      Convert({Score("gut.stv", OneVoice({Quarter()})), place_.Write("alt.stv", AsText(OldScore(1, false))),
               place_.Write("text.stv", "keine Partitur"), Score("leer.stv", OneVoice({})),
               Score("kaputt.stv", damaged), place_.File("fehlt.stv")});
  EXPECT_THAT(CodesOf(result), ElementsAre(0, -1001, -104, -12, -1000, -300));
  EXPECT_EQ(TitleText(result), "Ergebnisse der Partitur-Midi-Konvertierung");
  EXPECT_TRUE(result.show);
  EXPECT_EQ(Lines(result)[0], (RunLine{"Erfolgreich konvertierte Dateien:", 1}));
  EXPECT_EQ(Lines(result)[1], (RunLine{"Nicht (ordnungsgemäß) konvertierte Dateien:", 5}));
  EXPECT_THAT(result.remarks,
              ElementsAre("Die Quelle hat ein ungültiges Dateiformat.",  // both of them
                          "Die Spielzeit der Quelldatei beträgt 0 Sekunden.", "Fehler in der Stavora-Datei.",
                          "Es trat ein Fehler in der Quelldatei auf."));
  EXPECT_THAT(host_->status, testing::Contains("Lese und untersuche \"gut.stv\"..."));
  EXPECT_EQ(Listing(place_.Path()), "alt.stv gut.mid gut.stv kaputt.stv leer.stv text.stv");
}

TEST_F(ScoreConverterRun, ATargetThatCannotBeMadeAndAStopAreSaid) {
  const std::string score = Score("lied.stv", OneVoice({Quarter()}));
  const RunResult none =
      Convert({score}, {.sourceDirectory = false, .directory = place_.File("gibt es nicht")});
  EXPECT_EQ(none.items.at(0).code, -200);
  EXPECT_THAT(none.remarks,
              ElementsAre("Die Datei konnte nicht erstellt werden. Möglicherweise hat die Quelle "
                          "ein ungültiges Format."));
  cancelled_ = true;
  const RunResult stopped = Convert({score});
  EXPECT_TRUE(stopped.cancelled);
  EXPECT_THAT(stopped.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_EQ(Listing(place_.Path()), "lied.stv");
}

TEST_F(ScoreConverterRun, AFullDiskLeavesNothingBehind) {
  const std::string score = Score("lied.stv", OneVoice(VoiceItems(5000, Quarter())));
  EXPECT_EQ(
      InChild([&] {
        (void)std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{20'000, 20'000};
        if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return false;
        const RunResult result = Convert({score, score});
        return result.items.size() == 2 && result.items[0].code == -101 && result.items[1].code == -101 &&
               result.remarks == std::vector<std::string>{"In eine Datei konnte nicht geschrieben werden."};
      }),
      0);
  EXPECT_EQ(Listing(place_.Path()), "lied.stv");
}

TEST_F(ScoreConverterRun, WritesWhatThePagesSay) {
  ScoreDocument document = OneVoice({Quarter(), Quarter()});
  document.staves.push_back(StaffNamed("B", 40));
  document.systems[0].staves.push_back({1, {}, {{Quarter(), Quarter()}}});
  const std::string score = Score("lied.stv", document);
  const std::string other = Score("anderes.stv", document);
  PlaybackParameters quiet;
  quiet.baseVelocity = 33;
  ASSERT_THAT(SaveParameterSet(quiet, {1, 1}, place_.File("lied.sps")), IsOk());

  (void)Convert({score});
  EXPECT_EQ(Velocity("lied.mid"), 90U) << "sets are not loaded unless it is asked for";
  parameters_.automaticSet = true;
  (void)Convert({score, other}, {.overwrite = OverwritePolicy::Replace}, place_.Path());
  EXPECT_EQ(Velocity("lied.mid"), 33U);
  EXPECT_EQ(Velocity("anderes.mid"), 90U) << "a set holds for its score alone";

  parameters_.automaticSet = false;
  parameters_.chosenFor = score;
  parameters_.silentStaves = {true, true};
  (void)Convert({score, other}, {.overwrite = OverwritePolicy::Replace});
  EXPECT_EQ(Velocity("lied.mid"), 0U);
  EXPECT_EQ(Velocity("anderes.mid"), 90U);
}

}  // namespace
}  // namespace ts5
