#include "search/melody_player.h"

#include <gtest/gtest.h>

#include <atomic>

#include "search/note_names.h"
#include "support/midi_devices.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

MelodyElement Note(int pitch, int duration) {
  return {static_cast<std::int16_t>(pitch), static_cast<std::int16_t>(duration)};
}

TEST(MelodyPlayer, StepsFollowTheCodesAndTheTempo) {
  const std::vector<MelodyElement> melody = {Note(60, 240), Note(kRestCode, 120), Note(11061, 360),
                                             Note(-1063, 30)};
  const auto steps = MelodySteps(melody, 120);
  ASSERT_EQ(steps.size(), 4U);
  EXPECT_EQ(steps[0], (MelodyStep{0x643C90, 499ms, 0x003C90}));  // the factor lies just below 1000/240
  EXPECT_EQ(steps[1], (MelodyStep{std::nullopt, 249ms, 0x003C90}))
      << "a rest ends the key before it once more";
  EXPECT_EQ(steps[2].start, 0x643D90U) << "the clef mark and the accidental do not sound";
  EXPECT_EQ(steps[3].start, 0x643F90U);
  EXPECT_EQ(MelodySteps(melody, 1), MelodySteps(melody, kLeastTempo));
  EXPECT_EQ(MelodySteps(std::vector{Note(500, -5)}, 120),
            (std::vector<MelodyStep>{{std::nullopt, 0ms, std::nullopt}}));
}

struct Sent {
  std::unique_ptr<MidiOutput> Device(Outcome outcome = Outcome::Success) {
    return std::make_unique<test::FakeDevice>(
        [this, outcome](std::uint32_t message) {
          messages.push_back(message);
          return outcome;
        },
        [this] { closed = true; });
  }
  std::vector<std::uint32_t> messages;
  bool closed = false;
};

TEST(MelodyPlayer, PlaysToTheEndOrUntilStopped) {
  const std::vector<MelodyElement> melody = {Note(60, 30), Note(62, 30)};
  Sent sent;
  std::atomic<int> ended = 0;
  MelodyPlayer player;
  player.Start(melody, sent.Device(), 240, 19, [&](Outcome) { ++ended; });
  while (ended == 0) std::this_thread::sleep_for(1ms);
  EXPECT_FALSE(player.Playing());
  EXPECT_TRUE(sent.closed);
  EXPECT_EQ(sent.messages, (std::vector<std::uint32_t>{0x13C0, 0x643C90, 0x003C90, 0x643E90, 0x003E90}));

  Sent stopped;
  const std::vector<MelodyElement> endless(1000, Note(60, 32767));
  player.Start(endless, stopped.Device(), 10, 0, [&](Outcome) { ++ended; });
  EXPECT_TRUE(player.Playing());
  player.Stop();
  EXPECT_TRUE(stopped.closed);
  EXPECT_FALSE(player.Playing());
  EXPECT_EQ(ended, 1) << "a stop is no end";
}

TEST(MelodyPlayer, ADeviceThatHasGoneEndsIt) {
  Sent sent;
  std::atomic<int> ended = 1;
  MelodyPlayer player;
  player.Start(std::vector(100, Note(60, 32767)), sent.Device(Outcome::WriteFailed), 10, 0,
               [&](Outcome outcome) { ended = Code(outcome); });
  while (ended == 1) std::this_thread::sleep_for(1ms);
  EXPECT_EQ(ended, Code(Outcome::WriteFailed));
  EXPECT_EQ(sent.messages.size(), 1U);
}

TEST(NoteNames, GermanNamesOfNotesAndValues) {
  struct Row {
    int pitch;
    const char* name;
  };
  for (const Row row :
       {Row{60, "c1"}, Row{59, "h"}, Row{48, "c"}, Row{47, "H"}, Row{24, "C1"}, Row{1061, "cis1"},
        Row{-1063, "es1"}, Row{-1068, "as1"}, Row{-1070, "b1"}, Row{1060, "his"}, Row{-1059, "ces1"},
        Row{66, "fis1"}, Row{10048, "c"}, Row{-11051, "es"}}) {
    EXPECT_EQ(PitchName(static_cast<std::int16_t>(row.pitch)), row.name) << row.pitch;
  }
  EXPECT_EQ(SpokenMelody(std::vector{Note(60, 240), Note(kRestCode, 480), Note(62, 45), Note(62, 77)}),
            "c1 Viertel, Pause (Halbe), d1 punktierte Zweiunddreißigstel, d1 77/240");
}

}  // namespace
}  // namespace ts5
