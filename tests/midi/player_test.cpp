// The MIDI player on real files: what a device gets is what the file says.
#include <gmock/gmock.h>

#include <algorithm>
#include <thread>

#include "frame/player_run.h"
#include "frame/run_support.h"
#include "frame/texts.h"
#include "midi/midi_capture.h"
#include "midi/midi_level.h"
#include "midi/midi_player.h"
#include "midi/midi_sequence.h"
#include "support/matchers.h"
#include "support/midi_devices.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using test::DataPath;
using test::IsOk;
using testing::ElementsAre;

MidiSequence Sequence(const std::string& path) {
  const std::string content = test::Content(path);
  auto sequence = MidiSequence::FromFile(AsBytes(content));
  EXPECT_THAT(sequence, IsOk()) << path;
  return sequence ? *std::move(sequence) : MidiSequence();
}

// A message without its time.
Bytes Sent(const MidiSequence& sequence, const SequenceMessage& message) {
  if (message.message == 0) {
    const ByteView bytes = sequence.Exclusive(message);
    return {bytes.begin(), bytes.end()};
  }
  Bytes bytes;
  for (std::size_t i = 0; i < ShortMidiLength(message.message); ++i)
    bytes.push_back(static_cast<std::uint8_t>(message.message >> (8 * i)));
  return bytes;
}

class MidiPlayerTest : public testing::Test {
 protected:
  // Plays the files; meanwhile steers.
  RunResult Play(const std::vector<std::string>& files, PlayerParameters parameters,
                 const std::function<void(PlayerControl&)>& steer = {}) {
    return test::PlayFiles(module_, files, "capture:" + capture_, parameters, steer, host_);
  }
  static void WaitForPosition(PlayerControl& control, nanoseconds position) {
    for (int i = 0; i < 1000 && control.Status().position < position; ++i) std::this_thread::sleep_for(5ms);
  }

  test::TemporaryDirectory folder_;
  std::string capture_ = folder_.File("mitschnitt.mid");
  FilterModule module_ = MidiPlayerModule();
  std::shared_ptr<test::RecordingHost> host_ = std::make_shared<test::RecordingHost>();
};

TEST_F(MidiPlayerTest, TheDeviceGetsEveryEventOfTheFile) {
  // Short ones, in all containers, with exclusive messages and karaoke texts.
  for (const char* name :
       {"made_c_major_scale.rmi", "jazzsoft_test-multichannel-chords-1.mid",
        "jazzsoft_test-sysex-gs-40-1x-15-drum-part-change.mid", "jazzsoft_test-rpn-00-01-fine-tuning.mid"}) {
    const std::string path = DataPath(std::string("midi/") + name);
    const MidiSequence file = Sequence(path);
    ASSERT_LT(file.Duration(), 30s) << name;
    const RunResult result = Play({path}, {});
    EXPECT_EQ(result.counts[1], 1U) << name;
    const MidiSequence played = Sequence(capture_);
    ASSERT_EQ(played.Messages().size(), file.Messages().size()) << name;
    for (std::size_t i = 0; i < file.Messages().size(); ++i) {
      ASSERT_EQ(Sent(played, played.Messages()[i]), Sent(file, file.Messages()[i])) << name << " event " << i;
    }
    EXPECT_GT(played.Duration(), file.Duration() / 2) << name << ": not all at once";
  }
}

TEST_F(MidiPlayerTest, AShortPlayEndsEachTitleAndThePauseLiesBetweenThem) {
  const std::string song = DataPath("midi/mutopia_maple-leaf-rag.mid");
  PlayerParameters parameters;
  parameters.shortPlay = true;
  parameters.shortSeconds = 1;
  parameters.interval = 1;
  const RunResult result = Play({song, song}, parameters);
  const auto strikes = [](const MidiSequence& music, nanoseconds end) {
    std::vector<nanoseconds> times;
    for (const SequenceMessage& message : music.Messages()) {
      if (message.IsNoteOn() && message.time < end) times.push_back(message.time);
    }
    return times;
  };
  // The first second of it twice, and the pause is the longest silence.
  const auto once = strikes(Sequence(song), 1s);
  const auto played = strikes(Sequence(capture_), 1h);
  ASSERT_EQ(played.size(), 2 * once.size());
  EXPECT_GE(played[once.size()] - played[once.size() - 1], 1s);
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_EQ(result.counts[1], 2U);
  EXPECT_FALSE(result.show);
  EXPECT_THAT(host_->states, testing::Contains(RunState::Waiting).Times(1));
}

TEST_F(MidiPlayerTest, WhatCannotBePlayedIsCountedAndTheRestIsPlayed) {
  const std::string broken = folder_.Write("kaputt.mid", "MThdx");
  PlayerParameters parameters;
  parameters.shortPlay = true;
  parameters.shortSeconds = 1;
  // Its conductor track is all that is left.
  const std::string silent = DataPath("../../demo/Abgebrochene Datei.mid");
  const RunResult result =
      Play({broken, DataPath("midi/made_gymnopedie.rdl"), silent, folder_.File("fehlt.mid")}, parameters);
  EXPECT_THAT((std::vector{result.counts[0], result.counts[1], result.counts[2]}), ElementsAre(1, 1, 3));
  EXPECT_EQ(result.remarks.back(), Text(texts::PlayerSomeFailed));
  EXPECT_GT(Sequence(capture_).Messages().size(), 0U) << "the sequencer file sounds";
}

TEST_F(MidiPlayerTest, TheUserPausesSeeksSkipsAndGoesBack) {
  const std::string song = DataPath("midi/mutopia_debussy-arabesque-no1.mid");
  nanoseconds paused{};
  std::string afterSkip;
  const RunResult result =
      Play({song, DataPath("midi/mutopia_satie-gymnopedie-no1.mid")}, {}, [&](PlayerControl& control) {
        WaitForPosition(control, 100ms);
        control.Seek(60s);
        WaitForPosition(control, 60s);
        control.TogglePause();
        std::this_thread::sleep_for(100ms);
        paused = control.Status().position;
        std::this_thread::sleep_for(100ms);
        EXPECT_EQ(control.Status().position, paused);
        EXPECT_TRUE(control.Status().paused);
        control.Step(PlayerStep::Next);
        for (int i = 0; i < 1000 && control.Status().title == song; ++i) std::this_thread::sleep_for(5ms);
        afterSkip = control.Status().title;
        WaitForPosition(control, 50ms);
        control.Seek(10h);  // the end
      });
  EXPECT_GE(paused, 60s);
  EXPECT_LT(paused, 62s);
  EXPECT_THAT(afterSkip, testing::HasSubstr("gymnopedie"));
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_EQ(result.counts[1], 1U) << "the one that was left did not end";
  EXPECT_FALSE(result.cancelled);
}

TEST(MidiSequence, TicksAndTimesBelongTogether) {
  for (const char* name : {"midi/freedoom_d_e2m7.mid", "midi/music21_test10.mid"}) {
    const MidiSequence sequence = Sequence(DataPath(name));
    for (const SequenceMessage& message : sequence.Messages())
      ASSERT_EQ(sequence.TickAt(message.time + 1us), message.tick) << name;
  }
}

class MidiLevelTest : public testing::Test {
 protected:
  void Send(std::initializer_list<std::uint32_t> sent) {
    for (const std::uint32_t message : sent) EXPECT_THAT(level.Send(message), IsOk());
  }

  std::vector<std::uint32_t> messages;
  MidiLevel level{std::make_unique<test::FakeDevice>([this](std::uint32_t message) {
    messages.push_back(message);
    return Outcome::Success;
  })};
};

TEST_F(MidiLevelTest, ScalesVolumesMovesPlacesAndLeavesAllElse) {
  Send({0x5A07B0});  // volume 90
  EXPECT_THAT(messages, ElementsAre(0x5A07B0U));
  level.SetSound({.volume = -4000, .balance = 5000});
  ASSERT_EQ(messages.size(), 33U) << "two controllers on every channel";
  EXPECT_EQ(messages[1], 0x0907B0U) << "a tenth of 90";
  EXPECT_EQ(messages[2], 0x600AB0U) << "from the middle half way to the right";
  EXPECT_EQ(messages[3], 0x0A07B1U) << "a channel that was never set counts as 100";
  messages.clear();
  Send({0x7F07B0, 0x7F0AB0, 0x643C90, 0x7F0BB0});
  EXPECT_THAT(messages, ElementsAre(0x0D07B0U, 0x7F0AB0U, 0x643C90U, 0x7F0BB0U));
  messages.clear();
  level.SetSound({});
  EXPECT_EQ(messages[0], 0x7F07B0U) << "the music's own volume again";
}

TEST_F(MidiLevelTest, AResetUndoesWhatTheMusicHasSetAndNothingElse) {
  // An organ, soft, on channel 2; bends of an octave on channel 3.
  Send({0x0013C1, 0x1E07B1, 0x0065B2, 0x0064B2, 0x0C06B2});
  const auto afterReset = [&] {
    messages.clear();
    EXPECT_THAT(level.Reset(), IsOk());
    messages.erase(messages.begin(), messages.begin() + 64);  // what every reset sends
    return messages;
  };
  EXPECT_THAT(afterReset(), ElementsAre(0x0000B1U, 0x0020B1U, 0x0000C1U, 0x6407B1U,  // channel 2
                                        0x0065B2U, 0x0064B2U, 0x0206B2U, 0x0026B2U,  // channel 3: bends
                                        0x0164B2U, 0x4006B2U, 0x0026B2U, 0x0264B2U, 0x4006B2U,  // its tuning
                                        0x7F65B2U, 0x7F64B2U));
  EXPECT_THAT(afterReset(), testing::IsEmpty());
  level.SetSound({.volume = -4000});
  EXPECT_THAT(afterReset(), testing::Each(testing::AnyOf(testing::Truly([](std::uint32_t message) {
                return (message & 0xFFF0) == 0x07B0 ? message >> 16 == 10 : message >> 16 == 64;
              }))))
      << "but the volume of the window stays";
}

}  // namespace
}  // namespace ts5
