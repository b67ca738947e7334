// MIDI files to scores: whole files, good and bad ones, and runs of the filter.
#include <gmock/gmock.h>

#include <filesystem>
#include <random>

#include "compare.h"
#include "converters/transcribe/midi_to_score.h"
#include "frame/run_support.h"
#include "midi/format_change.h"
#include "midi/midi_containers.h"
#include "platform/files/files.h"
#include "score/score_reader.h"
#include "score/score_writer.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::transcribe {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsSupersetOf;

struct RandomNote {
  std::uint32_t start = 0;
  std::uint32_t length = 0;
  std::uint8_t channel = 0;
  std::uint8_t key = 0;
};

Bytes MidiOf(const std::vector<RandomNote>& notes) {
  std::vector<std::pair<std::uint32_t, Bytes>> events;
  for (const RandomNote& note : notes) {
    events.push_back({note.start, {static_cast<std::uint8_t>(0x90 | note.channel), note.key, 80}});
    events.push_back(
        {note.start + note.length, {static_cast<std::uint8_t>(0x80 | note.channel), note.key, 0}});
  }
  std::ranges::stable_sort(events, {},
                           [](const auto& event) { return std::pair(event.first, event.second[0] >= 0x90); });
  ByteWriter out;
  WriteMidiHeader(out, 0, 1, 96);
  MidiTrackWriter track(out);
  track.Begin();
  for (const auto& [tick, bytes] : events) {
    (void)track.Delta(tick);
    out.Append(bytes);
  }
  (void)track.End(events.empty() ? 0 : events.back().first);
  return out.Release();
}

std::vector<RandomNote> RandomNotes(std::mt19937& random) {
  std::vector<RandomNote> notes;
  const int count = 1 + static_cast<int>(random() % 120);
  const std::uint32_t span = 96U << random() % 8;
  for (int i = 0; i < count; ++i) {
    notes.push_back({static_cast<std::uint32_t>(random() % span),
                     1 + static_cast<std::uint32_t>(random() % 400),
                     static_cast<std::uint8_t>(random() % 3 == 0 ? 9 : random() % 2),
                     static_cast<std::uint8_t>(random() % 128)});
  }
  return notes;
}

// Whatever is played: no note is lost without being counted, bars add up, and the file holds what was made.
TEST(Transcribing, AnyNotesGiveAScoreThatAddsUp) {
  std::mt19937 random(11);
  for (int round = 0; round < 60; ++round) {
    const std::vector<RandomNote> notes = RandomNotes(random);
    TranscriptionOptions options;
    options.page.barsPerSystem = static_cast<std::uint8_t>(round % 11);
    options.page.beaming = static_cast<std::uint8_t>(round % 5);
    const auto made = TranscribeMidi(MidiOf(notes), options);
    ASSERT_TRUE(made) << round;
    const ScoreMusic music = ReadMusic(made->score);
    for (const ScoreBar& bar : music.bars) {
      // An upbeat is short, and then the last bar may be.
      if (&bar == &music.bars.front() || (&bar == &music.bars.back() && music.bars[0].implicit)) continue;
      EXPECT_EQ(bar.length, BarLength(bar.time)) << round << " bar " << bar.number;
    }
    std::size_t graces = 0;
    for (const auto& staff : music.voices) {
      for (const auto& voice : staff) {
        for (const ScoreEvent& event : voice)
          graces += event.item->IsGrace() ? event.item->group.notes.size() : 0;
      }
    }
    EXPECT_EQ(NotesOf(made->score, music).size() + graces + made->doubled, notes.size()) << round;
    const auto again = ReadScore(WriteScore(made->score));
    ASSERT_TRUE(again) << round;
    EXPECT_EQ(NotesOf(*again, ReadMusic(*again)).size(), NotesOf(made->score, music).size()) << round;
  }
}

TEST(Transcribing, DamagedFilesAreRefusedOrRead) {
  std::mt19937 random(5);
  const Bytes good = MidiOf(RandomNotes(random));
  for (int round = 0; round < 400; ++round) {
    Bytes bad = good;
    for (int i = 0; i <= round % 4; ++i) bad[random() % bad.size()] = static_cast<std::uint8_t>(random());
    if (round % 3 == 0) bad.resize(random() % bad.size());
    const auto made = TranscribeMidi(bad, {});
    if (!made) {
      EXPECT_TRUE(made.error() == Outcome::WrongFormat || made.error() == Outcome::SourceFailed ||
                  made.error() == Outcome::DamagedMidi);
    }
  }
  EXPECT_EQ(TranscribeMidi(ByteView(good).first(good.size() - 5), {}).error(), Outcome::DamagedMidi) << "cut";
  EXPECT_EQ(TranscribeMidi(MidiOf({}), {}).error(), Outcome::SourceFailed) << "no notes";
  EXPECT_EQ(TranscribeMidi(MidiOf({{0, 10, 0, 60}, {0x0FFFFF00, 10, 0, 60}}), {}).error(),
            Outcome::SourceFailed)
      << "bars without number";
  EXPECT_EQ(TranscribeMidi(MidiOf({{0, 10, 0, 60}, {96 * 4 * 30'000, 10, 1, 60}}), {}).error(),
            Outcome::SourceFailed)
      << "more bars than two notes can be in";
  WorkWatch stopped;
  stopped.cancelled = [] { return true; };
  EXPECT_EQ(TranscribeMidi(good, {}, stopped).error(), Outcome::Cancelled);
  // Long music is looked after all the way.
  std::vector<RandomNote> many;
  for (std::uint32_t i = 0; i < 6000; ++i)
    many.push_back({i * 37, 30 + i % 50, 0, static_cast<std::uint8_t>(40 + i * 7 % 50)});
  const Bytes large = MidiOf(many);
  std::size_t whole = 0;
  EXPECT_TRUE(TranscribeMidi(large, {}, {[&whole] { return ++whole == SIZE_MAX; }}));
  EXPECT_GT(whole, 100U);
  for (const std::size_t at : {whole / 4, whole / 2, whole - 1}) {
    std::size_t asked = 0;
    const auto made = TranscribeMidi(large, {}, {[&] { return ++asked >= at; }});
    ASSERT_FALSE(made) << at;
    EXPECT_EQ(made.error(), Outcome::Cancelled);
  }
}

ScoreDocument Song() {
  ScoreDocument score;
  StaffLayout staff;
  staff.name = "Gesang";
  staff.volume = 100;
  score.staves.push_back(staff);
  SystemItems system;
  system.tempo = 90;
  VoiceItems items = {ClefItem(kClefG), KeyItem(-1), TimeItem(3, 2)};
  const auto sung = [](const char* syllable, bool onward, int octaveStep) {
    ScoreItem item = ChordItem(2, {ScoreNote{static_cast<std::int8_t>(octaveStep), 0, 0}});
    item.lyrics = {{syllable, onward ? kLyricHyphen : std::uint8_t{0}}};
    return item;
  };
  items.push_back(sung("Auf", false, -4));  // an upbeat
  items.push_back(BarItem());
  for (int bar = 0; bar < 3; ++bar) {
    items.push_back(sung("Ler", true, -2));
    items.push_back(sung("che", false, 0));
    items.push_back(sung("süß", false, -3));
    items.push_back(BarItem());
  }
  system.staves.push_back({0, {3, 2}, {items}});
  score.systems.push_back(system);
  return score;
}

TEST(Transcribing, KeepsWordsNamesAndTheUpbeat) {
  const ScoreDocument song = Song();
  const auto made = TranscribeMidi(Play(song, 90, {}), {});
  ASSERT_TRUE(made);
  const ScoreMusic music = ReadMusic(made->score);
  EXPECT_EQ(made->score.staves[0].name, "Gesang");
  EXPECT_EQ(music.tempos.at(0).quarters, 90);
  ASSERT_EQ(music.bars.size(), 4U);
  EXPECT_EQ(music.bars[0].length, Fraction(1, 4));
  EXPECT_TRUE(music.bars[0].implicit);
  EXPECT_EQ(music.bars[1].time, (ScoreTimeSignature{3, 2}));
  std::string words;
  for (const ScoreEvent& event : music.voices[0][0]) {
    if (event.item->lyrics.empty()) continue;
    words += event.item->lyrics[0].syllable + ((event.item->lyrics[0].flags & kLyricHyphen) != 0 ? "-" : " ");
  }
  EXPECT_EQ(words, "Auf Ler-che süß Ler-che süß Ler-che süß ");
  const Quality quality = Compare(song, made->score);
  EXPECT_EQ(quality.lengths.same, 10U);
  EXPECT_EQ(quality.keys.same, 4U);
  TranscriptionOptions plain;
  plain.lyrics = false;
  const auto silent = TranscribeMidi(Play(song, 90, {}), plain);
  const ScoreMusic wordless = ReadMusic(silent->score);
  for (const ScoreEvent& event : wordless.voices[0][0]) EXPECT_TRUE(event.item->lyrics.empty());
}

class MidiToScoreRun : public testing::Test {
 protected:
  RunResult Convert(const std::vector<std::string>& files) {
    Job job = ListJob(files, module_);
    job.parameters = ParametersValue(std::make_unique<MidiToScoreParameters>());
    RunSetup setup;
    setup.job = job;
    ts5::Run run(std::move(setup), module_, job.run.Shared(), host_);
    module_.run(run);
    run.Finish();
    return host_->results.back();
  }

  TemporaryDirectory place_;
  FilterModule module_ = MidiToScoreModule();
  std::shared_ptr<RecordingHost> host_ = std::make_shared<RecordingHost>();
};

// Each of the thirteen values is in the file, and another one makes another file.
TEST_F(MidiToScoreRun, EveryValueOfTheDialogIsWritten) {
  using P = MidiToScoreParameters;
  const Bytes song = Play(Song(), 90, {});
  const auto written = [&song](const P& parameters) {
    const auto file = ConvertMIDToSTV(song, parameters);
    EXPECT_THAT(file, IsOk());
    return file.value_or(Bytes());
  };
  const Bytes usual = written({});
  for (const NumberRange& number : MidiToScoreNumbers()) {
    for (const std::int32_t value : {number.least, number.most}) {
      P changed;
      if (changed.*number.member == value) continue;
      changed.*number.member = value;
      EXPECT_NE(written(changed), usual) << number.name << value;
    }
  }
  for (bool P::*flag : {&P::lyrics, &P::landscape, &P::slashes, &P::barNumbers}) {
    P changed;
    changed.*flag = !(changed.*flag);
    EXPECT_NE(written(changed), usual);
  }
  P wide;
  wide.landscape = true;
  wide.narrowLines = 1000;
  wide.above = 9;
  wide.slashes = true;
  wide.justify = 2;
  const auto score = ReadScore(written(wide));
  ASSERT_TRUE(score);
  EXPECT_TRUE(score->landscape);
  const ScorePageLayout page = {true, 1000, 175, 9, 6, 0, 0, true, 2, true, 4, 2};
  EXPECT_EQ(score->page, page);
  EXPECT_EQ(WriteScore(*score), written(wide));
}

// Beams as they were chosen come back from the file.
TEST_F(MidiToScoreRun, BeamsAreKept) {
  std::vector<RandomNote> notes;
  for (std::uint32_t i = 0; i < 16; ++i)
    notes.push_back({i * 48, 48, 0, static_cast<std::uint8_t>(60 + i % 5)});
  std::vector<std::string> rows;
  for (int beaming = 0; beaming <= 4; ++beaming) {
    MidiToScoreParameters parameters;
    parameters.beaming = beaming;
    const auto score = ReadScore(*ConvertMIDToSTV(MidiOf(notes), parameters));
    ASSERT_TRUE(score);
    std::string& row = rows.emplace_back();
    const ScoreMusic music = ReadMusic(*score);
    for (std::size_t i = 0; i < 8; ++i) row += music.voices[0][0].at(i).item->beams;
  }
  EXPECT_THAT(rows, ElementsAre("--------", "bebebebe", "bccebcce", "bccebcce", "bcccccce"));
}

TEST_F(MidiToScoreRun, TakesAllContainersAndLeavesNothingElse) {
  const Bytes plain = Play(Song(), 90, {});
  const std::vector<std::string> files = {
      place_.Write("a.mid", AsText(plain)),
      place_.Write("b.mid", AsText(*MergeTracksToFormat0(ByteView(plain)))),
      place_.Write("c.rmi", AsText(*SmfToRiff(plain, {}))),
      place_.Write("d.rdl", AsText(*SmfToSequencer(plain))),
      place_.Write("e.mid", "kein Lied"),
      place_.Write("f.mid", AsText(ByteView(plain).first(plain.size() - 30))),
      place_.Write("g.mid", AsText(ByteView(*MergeTracksToFormat0(ByteView(plain))).first(60))),
      place_.File("fehlt.mid"),
  };
  const RunResult result = Convert(files);
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  EXPECT_THAT(codes, ElementsAre(0, 0, 0, 0, -104, -300, -601, -300));
  EXPECT_EQ(TitleText(result), "Ergebnisse der Midi-Stavora-Konvertierung");
  EXPECT_THAT(result.remarks, IsSupersetOf({"Die Quelle hat ein ungültiges Dateiformat.",
                                            "Es wurde ein Fehler in der Midi-Datei gefunden.",
                                            "Es trat ein Fehler in der Quelldatei auf."}));
  std::size_t left = 0;
  for (const auto& entry : std::filesystem::directory_iterator(place_.Path()))
    left += entry.path().extension() == ".stv" ? 0 : 1;
  EXPECT_EQ(left, 7U);
  for (const char* name : {"a.stv", "b.stv", "c.stv", "d.stv"}) {
    const auto score = ReadScore(*ReadFile(place_.File(name)));
    ASSERT_TRUE(score) << name;
    EXPECT_EQ(Compare(Song(), *score).lengths.same, 10U) << name;
  }
}

}  // namespace
}  // namespace ts5::transcribe
