// The score player: what a device gets is what the converter writes, from the start, from any other place,
// and whatever the user does meanwhile.
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <map>
#include <tuple>

#include "frame/run_support.h"
#include "midi/midi_sequence.h"
#include "platform/files/paths.h"
#include "random_score.h"
#include "score/bar_times.h"
#include "score/parameter_set.h"
#include "score/score_performer.h"
#include "score/score_player.h"
#include "score_log.h"
#include "support/matchers.h"
#include "support/midi_devices.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using namespace test;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using testing::IsEmpty;

// A score on a device with a time of its own.
struct Stand {
  explicit Stand(Bytes file, const ScoreParameters& chosen = {}) : stage(chosen) { Open(std::move(file)); }

  void Open(Bytes file) {
    ScoreParameters parameters = stage.Parameters();
    auto opened = OpenAndScan(std::move(file), parameters.playback, parameters.playRepeats);
    ASSERT_THAT(opened, IsOk());
    score = *std::move(opened);
    stage.Open(std::make_shared<ScoreAtHand>(DescribeScore("", score)), parameters);
    performer = std::make_unique<ScorePerformer>(score, parameters.playRepeats, stage, device);
  }
  // Where in the score the device's times lie, at the score's own tempo.
  [[nodiscard]] std::map<nanoseconds, std::uint64_t> Ticks() const {
    LogSink silent;
    ScoreOptions options;
    options.leadIn = score.scan.leadIn;
    const PlaybackParameters parameters = stage.Parameters().playback;
    ScoreEngine engine(score.file, score.info, score.voices, parameters, options, &silent);
    std::map<nanoseconds, std::uint64_t> ticks{{0ns, 0}};
    for (Outcome outcome = engine.Begin(); Succeeded(outcome) && !engine.AtEnd(); outcome = engine.Step(1))
      ticks[nanoseconds(static_cast<std::int64_t>(engine.Time()) * 100)] = engine.Ticks();
    return ticks;
  }

  ScoreStage stage;
  OpenScore score;
  TimedDevice device;
  std::unique_ptr<ScorePerformer> performer;
};

Bytes FileOf(const std::string& path) {
  const std::string content = test::Content(path);
  return {content.begin(), content.end()};
}

// Within a tick each channel keeps its order; that of the channels to each other is not heard.
using TickedEvents = std::vector<std::tuple<std::uint64_t, std::uint32_t, std::uint32_t>>;
void SortByChannel(TickedEvents& events) {
  std::ranges::stable_sort(
      events, {}, [](const auto& event) { return std::pair(std::get<0>(event), std::get<1>(event)); });
}

TEST(ScorePlayer, TheDeviceGetsEveryEventThatTheConverterWrites) {
  const auto scores = DemoScores();
  ASSERT_GE(scores.size(), 4U);
  for (const std::string& path : scores) {
    Stand stand(FileOf(path));
    const auto midi = ScoreToMidi(stand.score, stand.stage.Parameters().playback, {});
    ASSERT_THAT(midi, IsOk()) << path;
    const auto file = MidiSequence::FromFile(*midi);
    ASSERT_THAT(file, IsOk()) << path;
    TickedEvents written;
    for (const SequenceMessage& message : file->Messages())
      written.emplace_back(message.tick, message.message & 0x0F, message.message);

    EXPECT_THAT(stand.performer->Run(), IsOk()) << path;
    const auto ticks = stand.Ticks();
    TickedEvents sent;
    for (const auto& [time, message] : stand.device.events) {
      const auto tick = ticks.find(time);
      ASSERT_NE(tick, ticks.end()) << path << " at " << time.count();
      sent.emplace_back(tick->second, message & 0x0F, message);
    }
    SortByChannel(written);
    SortByChannel(sent);
    EXPECT_TRUE(sent == written) << path;
    EXPECT_EQ(stand.performer->Position(), stand.performer->Duration()) << path;
  }
}

TEST(ScorePlayer, ASeekSoundsAsStraightPlayDoesFromThere) {
  std::map<std::string, Bytes> scores;
  for (const std::string& path : DemoScores()) scores[path] = FileOf(path);
  for (unsigned seed = 0; seed < 60; ++seed) scores[std::to_string(seed)] = WriteScore(RandomScore(seed));
  for (const auto& [path, file] : scores) {
    Stand straight(file);
    EXPECT_THAT(straight.performer->Run(), IsOk());
    for (const int percent : {1, 30, 50, 77, 99}) {
      Stand sought(file);
      sought.performer->Seek(sought.performer->Duration() * percent / 100);
      EXPECT_THAT(sought.performer->Run(), IsOk());
      const nanoseconds start = straight.device.now - sought.device.now;

      std::map<std::uint32_t, std::uint32_t> state;  // programs and volumes
      std::map<std::uint32_t, int> before;           // what sounds there
      std::vector<TimedDevice::Event> rest;
      for (const auto& [time, message] : straight.device.events) {
        const bool note = (message & 0xF0) == 0x90;
        if (time < start) {
          if (note) {
            before[message & 0xFFFF] += message >> 16 != 0 ? 1 : -1;
          } else {
            state[message & 0xFF] = message;
          }
        } else if (!note || message >> 16 != 0 || before[message & 0xFFFF]-- <= 0) {
          rest.push_back({time - start, message});
        }
      }
      std::map<std::uint32_t, std::uint32_t> chased;
      std::size_t chases = 0;
      for (; chases < state.size() && chases < sought.device.events.size(); ++chases)
        chased[sought.device.events[chases].message & 0xFF] = sought.device.events[chases].message;
      EXPECT_EQ(chased, state) << path << ' ' << percent;
      sought.device.events.erase(sought.device.events.begin(),
                                 sought.device.events.begin() + static_cast<std::ptrdiff_t>(chases));
      EXPECT_TRUE(sought.device.events == rest) << path << ' ' << percent;
    }
  }
}

// Two staves, the first with two voices: eight bars of quarters.
ScoreDocument TwoStaves() {
  ScoreDocument score;
  score.staves = {StaffNamed("Flöte", 73), StaffNamed("Horn", 60)};
  VoiceItems items;
  for (int bar = 0; bar < 8; ++bar) {
    for (int i = 0; i < 4; ++i) items.push_back(Quarter());
    items.push_back(BarItem());
  }
  SystemItems system;
  system.tempo = 120;
  system.staves = {{0, {}, {items, items}}, {1, {}, {items}}};
  score.systems.push_back(system);
  return score;
}

TEST(ScorePlayer, WhatTheUserChangesIsHeardAtTheNextStep) {
  Stand stand(WriteScore(TwoStaves()));
  const ScoreAtHand at = DescribeScore("", stand.score);
  std::vector<std::size_t> marks;
  BarBeat place;
  std::vector<bool> lit;
  ScoreParameters parameters = stand.stage.Parameters();
  const std::pair<nanoseconds, std::function<void()>> steps[] = {
      {1100ms,
       [&] {
         place = stand.performer->Place();
         lit = stand.stage.Look().sounding;
         ChooseSound(at, parameters, 0, 40);
       }},
      {2s, [&] { ChooseChannel(at, parameters, 1, 0, 12); }},
      {3s,
       [&] {
         parameters.silentStaves = {true, false};
       }},
      {4s, [&] { stand.stage.HoldTempo(240); }},
  };
  stand.device.onTime = [&](nanoseconds now) {
    if (marks.size() == std::size(steps) || now < steps[marks.size()].first) return;
    steps[marks.size()].second();
    stand.stage.SetParameters(parameters);
    marks.push_back(stand.device.events.size());
  };
  EXPECT_THAT(stand.performer->Run(), IsOk());
  ASSERT_EQ(marks.size(), 4U);
  EXPECT_EQ(place, (BarBeat{1, 3}));
  EXPECT_THAT(lit, ElementsAre(true, true));
  const auto& events = stand.device.events;
  EXPECT_EQ(events[marks[0]].message, 0x28C0U) << "the new sound on the channels of both voices";
  EXPECT_EQ(events[marks[0] + 1].message, 0x28C1U);
  EXPECT_EQ(events[marks[1]].message, 0x3CCCU) << "a new channel takes sound and volume along";
  EXPECT_EQ(events[marks[1] + 1].message, 0x6407BCU);
  EXPECT_TRUE(
      std::all_of(events.begin() + static_cast<std::ptrdiff_t>(marks[2]), events.end(),
                  [](const auto& event) { return (event.message & 0x0F) == 12 || event.message >> 16 == 0; }))
      << "a silent staff strikes nothing";
  // 32 quarters of 500 ms; what is left after 4 s goes on in half the time.
  const nanoseconds expected = 4s + (32 * 500ms - 4s) / 2;
  EXPECT_LT(std::chrono::abs(stand.device.now - expected), 20ms);
  EXPECT_EQ(stand.performer->Position(), stand.performer->Duration());
  EXPECT_EQ(stand.device.Sounding(), 0);
}

TEST(ScorePlayer, APauseEndsWhatSoundsAndMusicGoesOnBehindIt) {
  Stand stand(WriteScore(TwoStaves()));
  int sounding = -1;
  bool paused = false;
  std::jthread user;
  stand.device.onTime = [&](nanoseconds now) {
    if (paused || now < 1200ms) return;
    paused = true;
    stand.performer->Pause();
    user = std::jthread([&] {
      std::this_thread::sleep_for(50ms);
      sounding = stand.device.Sounding();
      stand.performer->Resume();
    });
  };
  EXPECT_THAT(stand.performer->Run(), IsOk());
  EXPECT_EQ(sounding, 0);
  EXPECT_EQ(stand.device.Sounding(), 0);
  EXPECT_EQ(stand.device.now, stand.performer->Duration());
}

TEST(ScorePlayer, StopsAtEveryEventAndLeavesNoNoteSounding) {
  std::size_t whole = 0;
  for (std::size_t at = 0; at == 0 || at <= whole; at += 7) {
    Stand stand(WriteScore(TwoStaves()));
    stand.device.onEvent = [&](std::size_t events) {
      if (events == at) stand.performer->Stop();
    };
    const Outcome outcome = stand.performer->Run();
    if (at == 0) {
      whole = stand.device.events.size();
      ASSERT_GT(whole, 190U);
    } else if (at < whole) {
      EXPECT_EQ(outcome, Outcome::Cancelled) << at;
    }
    EXPECT_EQ(stand.device.Sounding(), 0) << at;
  }
}

TEST(ScorePlayer, ADeviceThatGoesAwayEndsTheTitle) {
  for (const std::size_t at : {0U, 1U, 5U, 100U}) {
    Stand stand(WriteScore(TwoStaves()));
    stand.device.failsAt = at;
    EXPECT_EQ(stand.performer->Run(), Outcome::WriteFailed) << at;
    EXPECT_LE(stand.device.now, 10s) << at;
  }
}

TEST(ScorePlayer, TemposOfAllKindsComeToTheirEnd) {
  for (const auto& [tempo, quarter] :
       std::map<std::uint32_t, nanoseconds>{{1, 60s}, {0, 500ms}, {1800, 33'333'300ns}, {65535, 915'500ns}}) {
    Stand stand(WriteScore(OneVoice({Quarter(), Quarter()}, tempo)));
    EXPECT_THAT(stand.performer->Run(), IsOk()) << tempo;
    EXPECT_EQ(stand.device.now, 2 * quarter) << tempo;
  }
}

class ScorePlayerRun : public testing::Test {
 protected:
  RunResult Play(const std::vector<std::string>& files, const ScorePlayerParameters& parameters,
                 const std::string& device) {
    Job job = ListJob(files, module_);
    job.parameters = ParametersValue(std::make_unique<ScorePlayerParameters>(parameters));
    RunSetup setup;
    setup.devices.output = device;
    setup.settings.playbackParameterDirectory = folder_.Path();
    return RunJob(job, module_, {}, host_, std::move(setup));
  }
  std::string Score(const std::string& name, const ScoreDocument& document) {
    return folder_.Write(name, AsText(WriteScore(document)));
  }

  test::TemporaryDirectory folder_;
  FilterModule module_ = ScorePlayerModule();
  std::shared_ptr<RecordingHost> host_ = std::make_shared<RecordingHost>();
};

TEST_F(ScorePlayerRun, WritesTheSynthesisedSoundFasterThanItPlays) {
  const std::string wave = folder_.File("klang.wav");
  const RunResult result = Play({Score("a.stv", TwoStaves())}, {}, "synth:" + wave);
  EXPECT_EQ(result.counts[1], 1U);
  // 32 quarters of 500 ms, 44100 frames of 4 bytes, and the decay.
  const auto size = std::filesystem::file_size(wave);
  EXPECT_GT(size, 32U * 500 * 441 * 4 / 10);
  EXPECT_LT(size, 32U * 500 * 441 * 4 / 10 + 44100U * 4 * 20);
}

TEST_F(ScorePlayerRun, SaysOfEachScoreWhyItCouldNotBePlayed) {
  const std::vector<std::string> files = {folder_.Write("keine.stv", "MThd"), folder_.File("fehlt.stv"),
                                          Score("rast.stv", OneVoice({Quarter()}, 65535)),
                                          Score("leer.stv", OneVoice({})),
                                          Score("gut.stv", OneVoice({Quarter(), Quarter()}))};
  const RunResult result = Play(files, {}, "null");
  EXPECT_THAT(CodesOf(result), ElementsAre(-104, -300, 0, -12, 0));
  EXPECT_THAT((std::vector{result.counts[0], result.counts[1], result.counts[2]}), ElementsAre(2, 2, 3));
  EXPECT_EQ(TitleText(result), "Stavora-Playback beendet");
  EXPECT_FALSE(result.show);
  EXPECT_THAT(result.remarks, testing::Contains("Die Spielzeit der Quelldatei beträgt 0 Sekunden."));

  const RunResult none = Play(files, {}, "gibt es nicht");
  EXPECT_EQ(none.items.at(0).code, -602);
  EXPECT_THAT(none.remarks, testing::Contains("Das Midi-Gerät konnte nicht initialisiert werden."));
}

TEST_F(ScorePlayerRun, TakesTheParameterSetOfTheScoresNameAndGoesOnWithoutADamagedOne) {
  const std::string path = Score("lied.stv", TwoStaves());
  PlaybackParameters quiet;
  quiet.baseVelocity = 33;
  ASSERT_THAT(SaveParameterSet(quiet, {2, 1}, folder_.File("lied.sps")), IsOk());
  ScorePlayerParameters parameters;
  parameters.automaticSet = true;
  parameters.shortPlay = true;
  parameters.shortSeconds = 1;
  const std::string capture = folder_.File("mitschnitt.mid");
  const auto loudest = [&] {
    (void)Play({path}, parameters, "capture:" + capture);
    const std::string content = test::Content(capture);
    const auto played = MidiSequence::FromFile(AsBytes(content));
    std::uint32_t velocity = 0;
    for (const SequenceMessage& message : played->Messages()) {
      if (message.IsNoteOn()) velocity = std::max(velocity, message.message >> 16 & 0x7F);
    }
    return velocity;
  };
  EXPECT_EQ(loudest(), 33U);
  std::string set = test::Content(folder_.File("lied.sps"));
  set.erase(set.find("Dynamic mf"), 13);
  folder_.Write("lied.sps", set);
  EXPECT_EQ(loudest(), 33U) << "what was read before the hole stays in force";
  folder_.Write("lied.sps", "[nichts]\r\n");
  EXPECT_EQ(loudest(), 90U);
}

TEST(ScorePractice, BarsBeginInOrderAndFillTheScore) {
  for (const std::string& path : DemoScores()) {
    SCOPED_TRACE(path);
    const Stand stand(FileOf(path));
    const auto bars = BarTimes(stand.score, stand.stage.Parameters().playback, true);
    ASSERT_GE(bars.size(), 8U);
    EXPECT_TRUE(std::ranges::is_sorted(bars));
    EXPECT_EQ(bars.front(), 0ns);
    EXPECT_LE(bars.back(), stand.performer->Duration());
    EXPECT_GT(bars.back(), stand.performer->Duration() * 3 / 4);
  }
}

TEST(ScorePractice, APassageOfBarsSoundsTheSameEachTime) {
  Stand stand(FileOf(DataPath("../../demo/Bruder Jakob.stv")));
  const auto bars = BarTimes(stand.score, stand.stage.Parameters().playback, true);
  Practice practice;
  practice.passage = PracticePassage{bars.at(4), bars.at(6)};
  practice.speed = 50;
  const nanoseconds round = (bars[6] - bars[4]) * 2;
  stand.performer->Practise(practice);
  stand.performer->Seek(bars[4]);
  stand.device.onTime = [&](nanoseconds now) {
    if (now > round * 5 / 2) stand.performer->Stop();
  };
  EXPECT_EQ(stand.performer->Run(), Outcome::Cancelled);
  EXPECT_EQ(stand.device.Sounding(), 0);
  std::vector<std::uint32_t> rounds[2];
  for (const auto& [time, message] : stand.device.Struck()) {
    const auto number = static_cast<std::size_t>((time + 1ms) / round);
    if (number < 2) rounds[number].push_back(message);
  }
  EXPECT_EQ(rounds[0].size(), 18U);
  EXPECT_EQ(rounds[0], rounds[1]);
}

TEST(ScorePractice, SilentStavesAreNotStruckAndTheOthersStay) {
  const auto play = [](const Practice& practice) {
    Stand stand(FileOf(DataPath("../../demo/Bruder Jakob.stv")));
    stand.performer->Practise(practice);
    EXPECT_EQ(stand.performer->Run(), Outcome::Success);
    EXPECT_EQ(stand.device.Sounding(), 0);
    return stand.device.Struck();
  };
  Practice first;
  first.solo = {0};
  Practice others;
  others.muted = {0};
  const auto all = play({});
  auto parts = play(first);
  const auto rest = play(others);
  EXPECT_GT(parts.size(), 10U);
  EXPECT_EQ(rest.size(), parts.size()) << "a canon of two";
  parts.insert(parts.end(), rest.begin(), rest.end());
  std::ranges::sort(parts);
  auto sorted = all;
  std::ranges::sort(sorted);
  EXPECT_EQ(parts, sorted);
}

}  // namespace
}  // namespace ts5
