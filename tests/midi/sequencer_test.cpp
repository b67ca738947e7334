#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <random>
#include <thread>

#include "midi/midi_capture.h"
#include "midi/midi_sequence.h"
#include "midi/midi_sequencer.h"
#include "midi_bytes.h"
#include "support/matchers.h"
#include "support/midi_devices.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using namespace std::chrono_literals;
using std::chrono::nanoseconds;

// A file of format 1 from the bodies of its tracks; the end of each track is added.
Bytes File(const std::vector<Bytes>& tracks, unsigned division) {
  Bytes file = Header(1, static_cast<unsigned>(tracks.size()), division);
  for (const Bytes& track : tracks) file = Join({file, Track(Join({track, {0, 0xFF, 0x2F, 0}}))});
  return file;
}

// A device's state by controller, program (with the bank it was chosen from), bend and pressure, as messages
// leave it; a channel mode message 121 clears the controllers that it clears on a device.
struct DeviceState {
  std::map<std::uint32_t, std::uint32_t> values;
  std::map<std::uint32_t, std::uint32_t> parameters;  // by channel and registered parameter
  void Take(std::uint32_t message) {
    const std::uint32_t channel = message & 0x0F;
    const std::uint32_t kind = message & 0xF0;
    if (kind == 0x80 || kind == 0x90) return;
    const std::uint32_t controller = message >> 8 & 0x7F;
    if (kind == 0xC0) {
      const auto bank = values.find(0xB0 | channel);
      values[message & 0xFF] = controller << 8 | (bank == values.end() ? 0 : bank->second);
    } else if (kind == 0xB0 && controller == 121) {
      for (const std::uint32_t cleared : {1U, 11U, 64U}) values.erase(0xB0 | channel | cleared << 8);
      values.erase(0xE0 | channel);
    } else if (kind == 0xB0 && controller == 6) {
      parameters[channel << 8 | values[0xB0 | channel | 100U << 8]] = message >> 16;
    } else if (kind == 0xB0 || kind == 0xA0) {
      values[message & 0xFFFF] = message >> 16;
    } else {
      values[message & 0xFF] = message >> 8;
    }
  }
  bool operator==(const DeviceState&) const = default;
};

TEST(MidiSequence, TimesFollowTheTempoMapOfAllTracks) {
  // Division 100: 5 ms a tick at first; 10 ms from tick 100 on, by a Set Tempo in the second track.
  const Bytes file = File({{0, 0x90, 60, 100, 0x81, 0x48, 0x80, 60, 0},  // off at tick 200
                           {0x64, 0xFF, 0x51, 3, 0x0F, 0x42, 0x40, 0x64, 0xC0, 5}},
                          100);
  const auto sequence = MidiSequence::FromFile(file);
  ASSERT_THAT(sequence, IsOk());
  const auto messages = sequence->Messages();
  ASSERT_EQ(messages.size(), 3U);
  EXPECT_EQ(messages[0].time, 0ns);
  EXPECT_EQ(messages[1].time, 1500ms);
  EXPECT_EQ(messages[1].message, 0x003C80U) << "within a tick the tracks keep their order";
  EXPECT_EQ(messages[2].message, 0x05C0U);
  EXPECT_EQ(sequence->Duration(), 1500ms);
  EXPECT_EQ(sequence->TimeOf(101), 510ms);
  EXPECT_EQ(sequence->FirstAt(1ns), 1U);
}

TEST(MidiSequence, ExclusiveMessagesAreSentWhole) {
  const auto sequence =
      MidiSequence::FromFile(File({{0, 0xF0, 5, 0x7E, 0x7F, 9, 1, 0xF7, 0, 0xF0, 2, 1, 2}}, 96));
  ASSERT_THAT(sequence, IsOk());
  ASSERT_EQ(sequence->Messages().size(), 1U) << "the second one is not complete";
  const ByteView sent = sequence->Exclusive(sequence->Messages()[0]);
  EXPECT_EQ(Bytes(sent.begin(), sent.end()), (Bytes{0xF0, 0x7E, 0x7F, 9, 1, 0xF7}));
}

TEST(MidiSequence, BadFiles) {
  EXPECT_THAT(MidiSequence::FromFile({}), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(MidiSequence::FromFile(File({{}}, 0)), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(MidiSequence::FromFile(File({}, 96)), FailsWith(Outcome::DamagedMidi));
  // Four deltas of the greatest size, at the slowest tempo and the smallest division: far, but bounded.
  Bytes far = {0, 0xFF, 0x51, 3, 0xFF, 0xFF, 0xFF};
  for (int i = 0; i < 4; ++i) far.insert(far.end(), {0xFF, 0xFF, 0xFF, 0x7F, 0x90, 60, 1});
  const auto sequence = MidiSequence::FromFile(File({far}, 1));
  ASSERT_THAT(sequence, IsOk());
  EXPECT_GT(sequence->Duration(), 1h);
  EXPECT_LE(sequence->Duration(), 100 * 24h);
  // Cut anywhere, it plays as far as it is whole or is refused.
  const Bytes whole = File({{0, 0x90, 60, 100, 10, 60, 0}, {0, 0xC0, 1}}, 96);
  for (std::size_t size = 0; size < whole.size(); ++size) {
    const auto cut = MidiSequence::FromFile(ByteView(whole).first(size));
    if (cut) {
      EXPECT_LE(cut->Messages().size(), 3U);
    }
  }
}

TEST(MidiSequence, AfterAChaseTheDeviceStandsAsAfterStraightPlay) {
  std::mt19937 random(20);
  const auto below = [&](std::uint32_t limit) { return static_cast<std::uint8_t>(random() % limit); };
  constexpr std::uint8_t kControllers[] = {0, 1, 6, 7, 11, 64, 100, 121};
  for (int round = 0; round < 200; ++round) {
    Bytes track;
    for (int i = 0; i < 120; ++i) {
      const std::uint8_t channel = below(2);
      track.push_back(below(3));
      switch (below(5)) {
        case 0:
          track.insert(track.end(), {static_cast<std::uint8_t>(0x90 | channel), below(128), below(128)});
          break;
        case 1:
          track.insert(track.end(), {static_cast<std::uint8_t>(0xC0 | channel), below(8)});
          break;
        case 2:
          track.insert(track.end(), {static_cast<std::uint8_t>(0xE0 | channel), below(128), below(128)});
          break;
        default:
          track.insert(track.end(),
                       {static_cast<std::uint8_t>(0xB0 | channel), kControllers[below(8)], below(4)});
      }
    }
    const auto sequence = MidiSequence::FromFile(File({track}, 96));
    ASSERT_THAT(sequence, IsOk());
    const std::size_t place = random() % (sequence->Messages().size() + 1);
    DeviceState straight;
    DeviceState chased;
    for (std::size_t i = 0; i < place; ++i) straight.Take(sequence->Messages()[i].message);
    for (const std::size_t i : sequence->ChaseBefore(place)) chased.Take(sequence->Messages()[i].message);
    ASSERT_EQ(straight, chased) << "round " << round;
  }
}

TEST(MidiSequencer, PlaysInTimeAndEndsWhatSounds) {
  // 1 ms a tick; a note that is never ended.
  const Bytes file = File({{0, 0x90, 60, 100, 50, 0x90, 62, 100, 50, 62, 0}}, 500);
  const auto sequence = MidiSequence::FromFile(file);
  ASSERT_THAT(sequence, IsOk());
  TimedDevice output;
  EXPECT_THAT(MidiSequencer(*sequence, output).Run(), IsOk());
  EXPECT_EQ(output.events, (std::vector<TimedDevice::Event>{
                               {0ms, 0x643C90}, {50ms, 0x643E90}, {100ms, 0x003E90}, {100ms, 0x403C80}}));
}

TEST(MidiSequencer, SeeksPausesAndStops) {
  // A program at 0 and notes at 1 s and 2 s; a seek to 2 s skips the first note.
  const Bytes file =
      File({{0, 0xC0, 7, 0x87, 0x68, 0x90, 60, 100, 0x87, 0x68, 0x90, 64, 100, 0x87, 0x68, 64, 0}}, 500);
  const auto sequence = MidiSequence::FromFile(file);
  ASSERT_THAT(sequence, IsOk());
  std::vector<std::uint32_t> sent;
  FakeDevice output([&](std::uint32_t message) {
    sent.push_back(message);
    return Outcome::Success;
  });
  MidiSequencer sequencer(*sequence, output);
  sequencer.Seek(2s);
  sequencer.Pause();
  Outcome result = Outcome::Success;
  std::jthread thread([&] { result = sequencer.Run(); });
  std::this_thread::sleep_for(50ms);
  EXPECT_EQ(sequencer.Position(), 2s) << "paused";
  sequencer.Resume();
  while (sequencer.Position() < 2050ms) std::this_thread::sleep_for(5ms);
  sequencer.Stop();
  thread.join();
  EXPECT_EQ(result, Outcome::Cancelled);
  EXPECT_EQ(sent, (std::vector<std::uint32_t>{0x0007C0, 0x644090, 0x404080}));
}

TEST(MidiSequencer, APauseCutsOffWhatThePedalHoldsAndASeekBackLetsGoOfIt) {
  // A short note over a pedal that goes down at 100 ms; the end is at 60 s.
  const Bytes file =
      File({{0, 0x91, 60, 100, 100, 0xB1, 64, 127, 1, 0x81, 60, 0, 0x83, 0xD2, 0x7B, 0x91, 62, 0}}, 500);
  const auto sequence = MidiSequence::FromFile(file);
  ASSERT_THAT(sequence, IsOk());
  std::vector<std::uint32_t> sent;
  FakeDevice output([&](std::uint32_t message) {
    sent.push_back(message);
    return Outcome::Success;
  });
  MidiSequencer sequencer(*sequence, output);
  Outcome result = Outcome::Success;
  std::jthread thread([&] { result = sequencer.Run(); });
  const auto waitFor = [&](nanoseconds position) {
    while (sequencer.Position() < position) std::this_thread::sleep_for(5ms);
  };
  waitFor(150ms);
  sequencer.Pause();
  std::this_thread::sleep_for(50ms);
  sequencer.Seek(10ms);
  sequencer.Resume();
  while (sequencer.Position() > 100ms) std::this_thread::sleep_for(1ms);
  waitFor(20ms);
  sequencer.Stop();
  thread.join();
  EXPECT_EQ(result, Outcome::Cancelled);
  ASSERT_GT(sent.size(), 4U);
  sent.resize(std::min(sent.size(), std::size_t{4 + 64}));
  EXPECT_EQ(sent[2], 0x003C81U);
  EXPECT_EQ(sent[3], 0x0078B1U) << "the pause: all sound off, on the channel that sounds only";
  const auto pedalUp = std::ranges::find(sent, 0x0040B1U);
  EXPECT_NE(pedalUp, sent.end()) << "before the pedal went down it is up";
}

TEST(MidiSequencer, ADeviceThatGoesAwayEndsIt) {
  const auto sequence = MidiSequence::FromFile(File({{0, 0x90, 60, 1, 1, 61, 1, 1, 62, 1}}, 500));
  ASSERT_THAT(sequence, IsOk());
  TimedDevice output;
  output.failsAt = 1;
  EXPECT_EQ(MidiSequencer(*sequence, output).Run(), Outcome::WriteFailed);
}

TEST(MidiSequencer, ADeviceThatGoesAwayInALongRestOrAPauseEndsItAsWell) {
  struct Mortal : FakeDevice {
    Mortal() : FakeDevice([](std::uint32_t) { return Outcome::Success; }) {}
    bool Alive() override { return alive; }
    std::atomic<bool> alive = true;
  };
  const auto sequence = MidiSequence::FromFile(File({{0, 0x90, 60, 1, 0x9E, 0xC2, 0x20, 61, 1}}, 500));
  ASSERT_THAT(sequence, IsOk());
  for (const bool paused : {false, true}) {
    Mortal output;
    MidiSequencer sequencer(*sequence, output);
    if (paused) sequencer.Pause();
    std::jthread killer([&] {
      std::this_thread::sleep_for(50ms);
      output.alive = false;
    });
    EXPECT_EQ(sequencer.Run(), Outcome::WriteFailed) << "and not after the 500 s of the rest";
  }
}

TEST(MidiCapture, WritesWhatItGetsWithItsTimes) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.File("mitschnitt.mid");
  nanoseconds now = 5s;
  auto output = OpenMidiCapture(path, [&] { return now; });
  ASSERT_THAT(output, IsOk());
  EXPECT_THAT((*output)->Send(ShortMidiMessage(0xC3, 40)), IsOk());
  now += 1250ms;
  EXPECT_THAT((*output)->Send(ShortMidiMessage(0x93, 60, 100)), IsOk());
  EXPECT_THAT((*output)->SendSystemExclusive(Bytes{0xF0, 1, 0xF7}), IsOk());
  now -= 100ms;  // a clock that steps back does no harm
  EXPECT_THAT((*output)->Send(ShortMidiMessage(0x83, 60, 0)), IsOk());
  EXPECT_FALSE(test::Listing(directory.Path()).starts_with("mitschnitt"))
      << "the file appears when it is whole";
  ASSERT_THAT((*output)->Close(), IsOk());
  EXPECT_THAT((*output)->Send(ShortMidiMessage(0x83, 60, 0)), FailsWith(Outcome::WriteFailed));

  const std::string content = test::Content(path);
  const auto sequence = MidiSequence::FromFile(AsBytes(content));
  ASSERT_THAT(sequence, IsOk());
  ASSERT_EQ(sequence->Messages().size(), 4U);
  EXPECT_EQ(sequence->Messages()[0].time, 0ns);
  EXPECT_EQ(sequence->Messages()[1].time, 1250ms);
  EXPECT_EQ(sequence->Exclusive(sequence->Messages()[2]).size(), 3U);
  EXPECT_EQ(sequence->Messages()[3].time, 1250ms);
  EXPECT_THAT(OpenMidiDevice("capture:/gibt/es/nicht/a.mid"), FailsWith(Outcome::TargetFailed));
}

}  // namespace
}  // namespace ts5
