// Practising with MIDI files: what a device gets, and when.
#include <gmock/gmock.h>

#include <functional>
#include <vector>

#include "midi/midi_sequencer.h"
#include "midi/midi_transposer.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using testing::Pair;

// A device whose time goes on as fast as the player says.
class TimedDevice final : public MidiOutput {
 public:
  Outcome Send(std::uint32_t message) override {
    if ((message & 0xE0) == 0x80) {
      notes.emplace_back(now, message);
      if (onNote) onNote();
    }
    return Outcome::Success;
  }
  Outcome SendSystemExclusive(ByteView) override { return Outcome::Success; }
  bool KeepsTime() const override { return true; }
  void Elapse(nanoseconds time) override { now += time; }

  // The keys that were struck, and when.
  [[nodiscard]] std::vector<std::pair<nanoseconds, int>> Struck() const {
    std::vector<std::pair<nanoseconds, int>> struck;
    for (const auto& [time, message] : notes) {
      if ((message & 0xF0) == 0x90 && message >> 16 != 0)
        struck.emplace_back(time, static_cast<int>(message >> 8 & 0x7F));
    }
    return struck;
  }

  std::vector<std::pair<nanoseconds, std::uint32_t>> notes;
  nanoseconds now{};
  std::function<void()> onNote;
};

// Two tracks: five notes of 100 ms one after the other on channel 1, and a long one on channel 2.
MidiSequence Song() {
  const auto track = [](const Bytes& body) {
    ByteWriter out;
    out.Append("MTrk");
    out.U32Be(static_cast<std::uint32_t>(body.size() + 4));
    out.Append(body);
    out.Append(Bytes{0, 0xFF, 0x2F, 0});
    return out.Release();
  };
  Bytes scale;
  for (std::uint8_t key = 60; key < 65; ++key) {
    const Bytes note{0, 0x90, key, 100, 50, 0x80, key, 0};  // 50 ticks of 2 ms
    scale.insert(scale.end(), note.begin(), note.end());
  }
  ByteWriter out;
  out.Append("MThd");
  out.U32Be(6);
  out.U16Be(1);
  out.U16Be(2);
  out.U16Be(250);
  out.Append(track(scale));
  out.Append(track({0, 0x91, 40, 100, 0x81, 0x7A, 0x81, 40, 0}));
  auto sequence = MidiSequence::FromFile(out.View());
  EXPECT_THAT(sequence, test::IsOk());
  return *std::move(sequence);
}

Practice OnlyScale() {
  Practice practice;
  practice.solo = {0};
  return practice;
}

TEST(MidiPractice, APassageGoesOverAndOverWithoutDrift) {
  const MidiSequence song = Song();
  TimedDevice device;
  MidiSequencer sequencer(song, device);
  Practice practice = OnlyScale();
  practice.passage = PracticePassage{100ms, 300ms};
  sequencer.Practise(practice);
  sequencer.Seek(100ms);
  device.onNote = [&] {
    if (device.Struck().size() == 6) sequencer.Stop();
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Cancelled);
  EXPECT_THAT(device.Struck(), ElementsAre(Pair(0ms, 61), Pair(100ms, 62), Pair(200ms, 61), Pair(300ms, 62),
                                           Pair(400ms, 61), Pair(500ms, 62)));
  EXPECT_EQ(device.notes.back().second & 0xF0, 0x80U) << "nothing sounds on";
}

TEST(MidiPractice, ItGoesOnFromThePassageWhenThatIsGivenUp) {
  const MidiSequence song = Song();
  TimedDevice device;
  MidiSequencer sequencer(song, device);
  Practice practice = OnlyScale();
  practice.passage = PracticePassage{0ms, 200ms};
  sequencer.Practise(practice);
  device.onNote = [&] {
    if (device.Struck().size() == 4) sequencer.Practise(OnlyScale());
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  std::vector<int> keys;
  for (const auto& [time, key] : device.Struck()) keys.push_back(key);
  EXPECT_THAT(keys, ElementsAre(60, 61, 60, 61, 62, 63, 64));
}

TEST(MidiPractice, HalfTheSpeedTakesTwiceTheTime) {
  const MidiSequence song = Song();
  TimedDevice device;
  MidiSequencer sequencer(song, device);
  Practice practice = OnlyScale();
  practice.speed = 50;
  sequencer.Practise(practice);
  device.onNote = [&] {
    practice.speed = 200;
    if (device.Struck().size() == 3) sequencer.Practise(practice);
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  EXPECT_THAT(device.Struck(),
              ElementsAre(Pair(0ms, 60), Pair(200ms, 61), Pair(400ms, 62), Pair(450ms, 63), Pair(500ms, 64)));
}

TEST(MidiPractice, ATrackThatBecomesSilentEndsItsNotesAtOnce) {
  const MidiSequence song = Song();
  TimedDevice device;
  MidiSequencer sequencer(song, device);
  Practice practice;
  practice.muted = {1};
  device.onNote = [&] {
    if (device.Struck().size() == 3) sequencer.Practise(practice);
  };
  EXPECT_EQ(sequencer.Run(), Outcome::Success);
  std::vector<std::pair<nanoseconds, std::uint32_t>> second;
  for (const auto& note : device.notes) {
    if ((note.second & 0x0F) == 1) second.push_back(note);
  }
  ASSERT_EQ(second.size(), 2U);
  EXPECT_EQ(second[1].first, 100ms);
  EXPECT_EQ(second[1].second & 0xF0, 0x80U);
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
  for (const auto& [time, message] : device.notes) sent.push_back(message & 0xFFFF);
  EXPECT_THAT(sent, ElementsAre(0x4890, 0x4880, 0x3C99, 0x3091, 0x3081, 0x3C91, 0x3C91));
}

}  // namespace
}  // namespace ts5
