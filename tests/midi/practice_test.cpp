// Practising with MIDI files: what a device gets, and when.
#include <gmock/gmock.h>

#include <algorithm>
#include <vector>

#include "midi/midi_sequencer.h"
#include "midi/midi_transposer.h"
#include "midi_bytes.h"
#include "support/matchers.h"
#include "support/midi_devices.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using namespace test;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using testing::Pair;

// The keys that were struck, and when.
std::vector<std::pair<nanoseconds, int>> Struck(const TimedDevice& device) {
  std::vector<std::pair<nanoseconds, int>> struck;
  for (const auto& [time, message] : device.Struck())
    struck.emplace_back(time, static_cast<int>(message >> 8 & 0x7F));
  return struck;
}

// Two tracks: five notes of 100 ms one after the other on channel 1, and a long one on channel 2.
MidiSequence Song() {
  std::string scale;
  for (const char* key : {"3C", "3D", "3E", "3F", "40"})
    scale += std::string("00 90 ") + key + "64 32 80" + key + "00";  // 50 ticks of 2 ms
  auto sequence = MidiSequence::FromFile(Join(
      {Header(1, 2, 250), Track(scale + "00 FF 2F 00"), Track("00 91 28 64 81 7A 81 28 00 00 FF 2F 00")}));
  EXPECT_THAT(sequence, IsOk());
  return *std::move(sequence);
}

Practice OnlyScale() {
  Practice practice;
  practice.solo = {0};
  return practice;
}

struct MidiPractice : testing::Test {
  const MidiSequence song = Song();
  TimedDevice device;
  MidiSequencer sequencer{song, device};
};

TEST_F(MidiPractice, APassageGoesOverAndOverWithoutDrift) {
  Practice practice = OnlyScale();
  practice.passage = PracticePassage{100ms, 300ms};
  sequencer.Practise(practice);
  sequencer.Seek(100ms);
  device.onEvent = [&](std::size_t) {
    if (Struck(device).size() == 6) sequencer.Stop();
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Cancelled);
  EXPECT_THAT(Struck(device), ElementsAre(Pair(0ms, 61), Pair(100ms, 62), Pair(200ms, 61), Pair(300ms, 62),
                                          Pair(400ms, 61), Pair(500ms, 62)));
  EXPECT_FALSE(device.events.back().IsStrike()) << "nothing sounds on";
}

TEST_F(MidiPractice, ItGoesOnFromThePassageWhenThatIsGivenUp) {
  Practice practice = OnlyScale();
  practice.passage = PracticePassage{0ms, 200ms};
  sequencer.Practise(practice);
  device.onEvent = [&](std::size_t) {
    if (Struck(device).size() == 4) sequencer.Practise(OnlyScale());
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  std::vector<int> keys;
  for (const auto& [time, key] : Struck(device)) keys.push_back(key);
  EXPECT_THAT(keys, ElementsAre(60, 61, 60, 61, 62, 63, 64));
}

TEST_F(MidiPractice, HalfTheSpeedTakesTwiceTheTime) {
  Practice practice = OnlyScale();
  practice.speed = 50;
  sequencer.Practise(practice);
  device.onEvent = [&](std::size_t) {
    practice.speed = 200;
    if (Struck(device).size() == 3) sequencer.Practise(practice);
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  EXPECT_THAT(Struck(device),
              ElementsAre(Pair(0ms, 60), Pair(200ms, 61), Pair(400ms, 62), Pair(450ms, 63), Pair(500ms, 64)));
}

TEST_F(MidiPractice, ATrackThatBecomesSilentEndsItsNotesAtOnce) {
  Practice practice;
  practice.muted = {1};
  device.onEvent = [&](std::size_t) {
    if (Struck(device).size() == 3) sequencer.Practise(practice);
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  std::vector<TimedDevice::Event> second;
  std::ranges::copy_if(device.events, std::back_inserter(second),
                       [](const auto& event) { return (event.message & 0xEF) == 0x81; });
  ASSERT_EQ(second.size(), 2U);
  EXPECT_EQ(second[1].time, 100ms);
  EXPECT_FALSE(second[1].IsStrike());
}

TEST(MidiTransposer, KeysMoveAndEndWhereTheyBegan) {
  TimedDevice device;
  MidiTransposer transposer(device);
  const auto send = [&](std::uint8_t status, std::uint8_t key, std::uint8_t velocity) {
    EXPECT_THAT(transposer.Send(ShortMidiMessage(status, key, velocity)), test::IsOk());
  };
  transposer.SetShift(12);
  send(0x90, 60, 100);
  transposer.SetShift(-12);
  send(0x80, 60, 0);   // ends at 72, where it began
  send(0x90, 5, 100);  // would leave the keys
  send(0x90, 5, 0);
  send(0x99, 60, 100);  // a drum
  send(0x91, 60, 100);
  transposer.SetShift(0);
  send(0x91, 60, 90);  // struck again at another key: the first one ends
  send(0x91, 60, 0);
  std::vector<std::uint32_t> sent;
  for (const auto& [time, message] : device.events) sent.push_back(message & 0xFFFF);
  EXPECT_THAT(sent, ElementsAre(0x4890, 0x4880, 0x3C99, 0x3091, 0x3081, 0x3C91, 0x3C91));
}

}  // namespace
}  // namespace ts5
