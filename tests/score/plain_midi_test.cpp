// Scores played plainly.
#include "score/plain_midi.h"

#include <gmock/gmock.h>

#include <map>

#include "midi/midi_events.h"
#include "midi/midi_file.h"
#include "score_log.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

struct Heard {
  std::vector<std::string> notes;  // "track tick key length velocity", in the order of their ends
  std::vector<std::string> words;
  int tracks = 0;
};

Heard Listen(ByteView file) {
  Heard heard;
  for (std::size_t at = kMidiHeaderSize; at + kChunkHeaderSize <= file.size(); ++heard.tracks) {
    const std::size_t length = std::size_t{file[at + 6]} << 8 | file[at + 7];
    MidiEventCursor cursor(file.subspan(at + kChunkHeaderSize, length));
    at += kChunkHeaderSize + length;
    std::map<int, std::pair<std::uint64_t, int>> open;
    for (MidiEvent event; cursor.Next(event);) {
      if (event.IsNoteOn()) open[event.data1] = {event.tick, event.data2};
      if (event.IsNoteOff()) {
        const auto [start, velocity] = open[event.data1];
        heard.notes.push_back(std::to_string(heard.tracks) + " " + std::to_string(start) + " " +
                              std::to_string(event.data1) + " " + std::to_string(event.tick - start) + " " +
                              std::to_string(velocity));
      }
      if (event.IsMeta(5)) heard.words.emplace_back(AsText(event.payload));
    }
    EXPECT_FALSE(cursor.Damaged());
  }
  return heard;
}
Heard Listen(const ScoreDocument& score, const PlainMidiOptions& options = {}) {
  const auto midi = ConvertSTVToMID(WriteScore(score), options);
  return midi ? Listen(*midi) : Heard{{ToString(midi.error())}, {}, 0};
}

TEST(PlainMidi, PlaysWhatIsWritten) {
  const ScoreItem staccato = [] {
    ScoreItem item = Quarter(kE);
    item.group.articulation = 1;
    return item;
  }();
  PlainMidiOptions options;
  options.noteValue = 100;
  EXPECT_THAT(Listen(OneVoice({Tied(Quarter(), false, true), Tied(Quarter(), true, false), Grace(kD, 1),
                               staccato, RestItem(2), BarItem()}),
                     options)
                  .notes,
              ElementsAre("1 0 60 960 90", "1 960 62 30 90", "1 990 64 450 90"));
  options.noteValue = 50;
  EXPECT_THAT(
      Listen(OneVoice({Tied(Quarter(), false, true), Tied(Quarter(), true, false), BarItem()}), options)
          .notes,
      ElementsAre("1 0 60 720 90"));
}

TEST(PlainMidi, TakesMarksAsVelocities) {
  PlainMidiOptions options;
  options.noteValue = 100;
  const auto play = [&](VoiceItems items) {
    std::vector<std::string> velocities;
    items.push_back(BarItem());
    for (const std::string& note : Listen(OneVoice(std::move(items)), options).notes)
      velocities.push_back(note.substr(note.rfind(' ') + 1));
    return velocities;
  };
  const ScoreItem plain = Quarter();
  EXPECT_THAT(play({plain, With(plain, TextDrawing("p")), plain, With(plain, TextDrawing("fp")), plain}),
              ElementsAre("90", "44", "44", "90", "44"));
  EXPECT_THAT(play({With(With(plain, TextDrawing("p")), HairpinDrawing(2, false)), plain, plain, plain}),
              ElementsAre("44", "52", "60", "60"));
  options.playback.dynamics = false;
  EXPECT_THAT(play({plain, With(plain, TextDrawing("p"))}), ElementsAre("90", "90"));
}

TEST(PlainMidi, SingsTheVerseOfThePass) {
  ScoreItem sung = Quarter();
  sung.lyrics = {{"Glo", kLyricHyphen}, {"Süß", 0}};
  const ScoreDocument score = OneVoice({sung, BarItem(3)});
  EXPECT_THAT(Listen(score).words, ElementsAre("Glo-", "S\xFC\xDF "));
  PlainMidiOptions options;
  options.repeats = false;
  EXPECT_THAT(Listen(score, options).words, ElementsAre("Glo-"));
  options.lyrics = false;
  EXPECT_TRUE(Listen(score, options).words.empty());
}

TEST(PlainMidi, LeavesOutWhatTheOptionsSay) {
  ScoreDocument score = OneVoice({Flagged(Quarter(), kGroupInvisible), Quarter(kD), BarItem()});
  score.staves.push_back(StaffNamed("B"));
  score.systems[0].staves.push_back({1, {}, {{ChordItem(1, {Note(kE)}), BarItem()}}});
  score.systems[0].staves[0].time = {2, 2};
  PlainMidiOptions options;
  EXPECT_THAT(Listen(score, options).notes, ElementsAre("1 480 62 456 90", "2 0 64 912 90"));
  options.invisible = true;
  options.silentStaves = {false, true};
  const Heard heard = Listen(score, options);
  EXPECT_THAT(heard.notes, ElementsAre("1 0 60 456 90", "1 480 62 456 90"));
  EXPECT_EQ(heard.tracks, 2);
  EXPECT_THAT(Listen(OneVoice({})).notes, ElementsAre(ToString(Outcome::NoPlayingTime)));
}

}  // namespace
}  // namespace ts5
