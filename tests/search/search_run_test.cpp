#include "search/search_run.h"

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <random>
#include <thread>

#include "frame/run_support.h"
#include "search/directory_walk.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"
#include "search/midi_search.h"
#include "search/texts.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "track_builder.h"

namespace ts5 {
namespace {

using test::CodesOf;
using test::TrackBuilder;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

// Keeps the hits; answers questions with one answer.
class Host : public test::RecordingHost {
 public:
  Outcome Hit(const SearchHit& hit) override {
    hits.push_back(hit);
    if (onHit) onHit();
    return hits.size() == full ? Outcome::OutOfMemory : Outcome::Success;
  }
  void Ask(std::shared_ptr<Question> question) override {
    questions.push_back(question->Text().text);
    question->Reply(answer);
  }

  Answer answer = Answer::Yes;
  std::size_t full = 0;  // the hit that finds no memory any more
  std::function<void()> onHit;
  std::vector<SearchHit> hits;
};

constexpr std::string_view kTune = "60:240,62:240,64:240";

std::string AsString(const Bytes& bytes) {
  return std::string(AsText(bytes));
}

// A file in which the tune comes so many times in its second track.
std::string TuneFile(int times) {
  TrackBuilder track;
  for (int i = 0; i < times; ++i) track.Note(i == 0 ? 0 : 192, 60).Note(192, 62).Note(192, 64);
  return AsString(test::MidiImage({TrackBuilder().End(), track.End(192)}));
}

class SearchRunTest : public testing::Test {
 protected:
  SearchRunTest() {
    job_.filter = FilterId::MidiSearch;
    job_.sourceDrive = kListModeDrive;
    job_.destinationIsScreen = true;
    auto parameters = std::make_unique<SearchParameters>();
    parameters->melody = *MelodyFromNumbers(kTune);
    parameters->melody.name = "Tonleiter";
    job_.parameters = ParametersValue(std::move(parameters));
  }

  RunResult Search(unsigned threads = 1) {
    host_->hits.clear();
    ts5::Run run({.job = job_, .settings = settings_, .destination = rules_}, module_, state_, host_);
    const auto& parameters = As<SearchParameters>(*job_.parameters);
    const FileSearch search = [&parameters](const std::string& path, const HitSink& sink,
                                            const CancelCheck& cancelled) {
      return SearchMidiFile(path, {parameters.melody.elements, parameters.options}, sink, cancelled);
    };
    RunMelodySearch(run, parameters, search, threads);
    return run.Result();
  }
  void AddFile(std::string_view name, std::string_view content) {
    job_.files.Append(EntryFromPath(directory_.Write(name, content)));
  }

  const test::TemporaryDirectory directory_;
  FilterModule module_ = MidiSearchModule();
  Job job_;
  Settings settings_;
  DestinationRules rules_;
  std::shared_ptr<JobRun> state_ = std::make_shared<JobRun>();
  std::shared_ptr<Host> host_ = std::make_shared<Host>();
};

TEST_F(SearchRunTest, CountsFilesAndHits) {
  AddFile("a.mid", TuneFile(2));
  AddFile("b.mid", "kein MIDI");
  AddFile("c.mid", TuneFile(0));
  Bytes damaged = test::MidiImage(
      {TrackBuilder().End(), TrackBuilder().Note(0, 60).Note(192, 62).Note(192, 64).End(192)});
  damaged[11] = 5;  // five tracks promised
  AddFile("d.mid", AsString(damaged));
  job_.files.Append(EntryFromPath(directory_.File("fehlt.mid")));
  for (const unsigned threads : {1U, 4U}) {
    const RunResult result = Search(threads);
    EXPECT_EQ(TitleText(result), "Ergebnisse der Melodiesuche");
    EXPECT_EQ(Lines(result)[0], (RunLine{"Durchsuchte Dateien:", 5}));
    EXPECT_EQ(Lines(result)[1], (RunLine{"Fundergebnis:", 2}));
    EXPECT_EQ(Lines(result)[2], (RunLine{"Ungeeignete Dateien:", 3}));
    EXPECT_THAT(result.remarks, ElementsAre("Die Quelle hat ein ungültiges Dateiformat.",
                                            "Es wurde ein Fehler in der Midi-Datei gefunden."));
    EXPECT_THAT(CodesOf(result), ElementsAre(0, -104, 0, -601, -104));
    ASSERT_EQ(host_->hits.size(), 3u);  // that of the damaged file came before the damage
    EXPECT_EQ(host_->hits[1].bar, 0);
    EXPECT_EQ(host_->hits[1].time, 1500);
    EXPECT_EQ(host_->hits[0].track, 0);
  }
  EXPECT_EQ(host_->status.front(), "a.mid");
  settings_.searchWholePath = true;
  host_->status.clear();
  (void)Search();
  EXPECT_EQ(host_->status.front(), directory_.File("a.mid"));
}

// Whatever the number of threads and however long each file takes.
TEST_F(SearchRunTest, ManyFilesComeInOrder) {
  std::mt19937 random(7);
  for (int i = 0; i < 300; ++i) {
    const int times = i % 50 == 0 ? 3000 : static_cast<int>(random() % 4);
    AddFile(Format("%03i.mid", i), i % 7 == 0 ? "nichts" : TuneFile(times));
  }
  const RunResult alone = Search(1);
  const std::vector<SearchHit> hits = host_->hits;
  EXPECT_GT(hits.size(), 3000u);
  for (const unsigned threads : {2U, 8U}) {
    EXPECT_EQ(Search(threads), alone);
    EXPECT_EQ(host_->hits, hits);
  }
}

TEST_F(SearchRunTest, AFullScreenEndsTheRun) {
  for (int i = 0; i < 20; ++i) AddFile(Format("%02i.mid", i), TuneFile(3));
  host_->full = 5;
  for (const unsigned threads : {1U, 4U}) {
    const RunResult result = Search(threads);
    EXPECT_THAT(CodesOf(result), ElementsAre(0, -2));
    EXPECT_EQ(host_->hits.size(), 5u);
    EXPECT_EQ(result.counts[1], 3u);
    EXPECT_THAT(result.remarks.front(), HasSubstr("wählen Sie als Zielmedium eine Datei"));
    EXPECT_FALSE(result.cancelled);
  }
}

TEST_F(SearchRunTest, StopEndsTheRunBetweenAndInsideFiles) {
  for (int i = 0; i < 50; ++i) AddFile(Format("%02i.mid", i), TuneFile(10000));
  for (const unsigned threads : {1U, 4U}) {
    state_->cancelRequest = kNoCancel;
    host_->onHit = [this] { state_->cancelRequest = kUserStop; };
    job_.destinationIsScreen = true;
    const RunResult result = Search(threads);
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(result.items.size(), 1u);
    EXPECT_LT(host_->hits.size(), 10000u);
    EXPECT_THAT(result.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
  }
}

TEST_F(SearchRunTest, WritesTheResultFile) {
  AddFile("a.mid", TuneFile(1));
  job_.destinationIsScreen = false;
  job_.destinationName = directory_.File("treffer.txt");
  EXPECT_THAT(Search().remarks, IsEmpty());
  EXPECT_THAT(host_->hits, IsEmpty());
  const std::string content = test::Content(job_.destinationName);
  EXPECT_THAT(content, HasSubstr("Melodie \"Tonleiter\""));
  EXPECT_THAT(content, HasSubstr("Spur 1     Takt 1     Zeit 00:00\r\n"));
  EXPECT_THAT(content, HasSubstr("Statistik: 1 Dateien durchsucht\r\n           0 Dateien nicht geeignet\r\n "
                                 "          1 Melodie(n) gefunden"));

  // Again: without a question, with Yes, with No and with Cancel.
  (void)Search();
  EXPECT_THAT(host_->questions, IsEmpty());
  const std::size_t size = test::Content(job_.destinationName).size();
  EXPECT_EQ(size, content.size());
  rules_.overwrite = OverwritePolicy::Number;
  (void)Search();
  EXPECT_EQ(test::Content(job_.destinationName).size(), size);
  host_->answer = Answer::No;
  (void)Search();
  EXPECT_EQ(test::Content(job_.destinationName).size(), 2 * size);
  host_->answer = Answer::Cancelled;
  EXPECT_TRUE(Search().cancelled);
  EXPECT_EQ(test::Content(job_.destinationName).size(), 2 * size);
  EXPECT_EQ(host_->questions.size(), 3u);
  EXPECT_THAT(host_->questions.front(),
              HasSubstr("(Bei \"Nein\" werden die neuen Suchergebnisse an die alte Datei angehängt.)"));
}

TEST_F(SearchRunTest, RefusesTargetsThatCannotBe) {
  AddFile("a.mid", TuneFile(1));
  job_.destinationIsScreen = false;
  EXPECT_THAT(Search().remarks, ElementsAre("Legen Sie bitte einen Zieldateinamen fest."));
  job_.destinationName = directory_.File("fehlt/x.txt");
  RunResult result = Search();
  EXPECT_THAT(result.remarks.front(), HasSubstr("Die Zieldatei konnte nicht geöffnet werden."));
  EXPECT_EQ(FailureCount(result), 1u);
  for (const std::string& name : {directory_.File("./a.mid"), directory_.Path()}) {  // a source, a directory
    job_.destinationName = name;
    result = Search();
    EXPECT_THAT(CodesOf(result), ElementsAre(-200)) << name;
  }
  EXPECT_EQ(test::Content(directory_.File("a.mid")), TuneFile(1));
}

TEST_F(SearchRunTest, WalksTheTreeOfADirectoryJob) {
  for (const char* name : {"b/z.mid", "b/a.mid", "c.mid", "B.mid", "b/tief/x.mid", "leer/y.txt", "a/1.mid"}) {
    (void)directory_.Write(name, TuneFile(1));
  }
  std::filesystem::create_directory_symlink(directory_.Path(), directory_.File("b/kreis"));
  job_.sourceDrive = 0;
  job_.directory.path = directory_.Path();
  for (const unsigned threads : {1U, 3U}) {
    const RunResult result = Search(threads);
    std::vector<std::string> names;
    for (const RunItem& item : result.items)
      names.push_back(item.source.substr(directory_.Path().size() + 1));
    EXPECT_THAT(names,
                ElementsAre("B.mid", "c.mid", "a/1.mid", "b/a.mid", "b/z.mid", "b/tief/x.mid", "leer/y.txt"));
    EXPECT_EQ(result.counts[1], 7u);
  }
  job_.directory.names = {"c.mid"};
  EXPECT_EQ(Search().items.size(), 1u);
}

// Neither as it is written nor the old one, and never over a file of music.
TEST_F(SearchRunTest, TheResultFileInTheTreeIsNoSource) {
  (void)directory_.Write("a.mid", TuneFile(1));
  job_.sourceDrive = 0;
  job_.directory.path = directory_.Path();
  job_.destinationIsScreen = false;
  job_.destinationName = directory_.File("treffer.txt");
  for (const char* round : {"new", "old"}) {
    const RunResult result = Search();
    EXPECT_THAT(CodesOf(result), ElementsAre(0)) << round;
    EXPECT_EQ(result.counts[0], 1u) << round;
    EXPECT_EQ(test::Listing(directory_.Path()), "a.mid treffer.txt") << round;
  }
  job_.destinationName = directory_.File("a.mid");
  EXPECT_THAT(CodesOf(Search()), ElementsAre(-200));
  EXPECT_EQ(test::Content(directory_.File("a.mid")), TuneFile(1));
}

TEST(SearchInOrderTest, FirstHitsComeWhileTheFileIsSearched) {
  std::atomic<bool> seen = false;
  const FileSearch search = [&](const std::string& path, const HitSink& sink, const CancelCheck&) {
    SearchHit hit;
    hit.file = path;
    (void)sink(hit);
    for (int i = 0; path == "0" && !seen && i < 60'000; ++i)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return SearchOutcome{Outcome::Success, 1};
  };
  int next = 0;
  bool early = false;
  OrderedSearchEvents events;
  events.next = [&] { return next < 200 ? std::optional(std::to_string(next++)) : std::nullopt; };
  events.begin = [](const std::string&) {};
  events.hit = [&](const SearchHit& hit) {
    if (hit.file == "0") seen = true;
    return Outcome::Success;
  };
  int ended = 0;
  events.end = [&](const std::string& path, const SearchOutcome&) {
    if (path == "0") early = seen;
    return path == std::to_string(ended++);
  };
  SearchInOrder(search, events, {}, 4);
  EXPECT_TRUE(early);
  EXPECT_EQ(ended, 200);
}

TEST(SearchInOrderTest, MemoryFailuresOfFilesAreOutcomes) {
  const FileSearch search = [](const std::string&, const HitSink&, const CancelCheck&) -> SearchOutcome {
    throw std::bad_alloc();
  };
  for (const unsigned threads : {1U, 4U}) {
    std::vector<Outcome> codes;
    bool given = false;
    OrderedSearchEvents events;
    events.next = [&] { return std::exchange(given, true) ? std::nullopt : std::optional<std::string>("a"); };
    events.begin = [](const std::string&) {};
    events.hit = [](const SearchHit&) { return Outcome::Success; };
    events.end = [&](const std::string&, const SearchOutcome& outcome) {
      codes.push_back(outcome.code);
      return true;
    };
    SearchInOrder(search, events, {}, threads);
    EXPECT_THAT(codes, ElementsAre(Outcome::OutOfMemory));
  }
}

TEST(SearchParametersTest, StoredValuesRoundTripAndDefaults) {
  for (const FilterId filter : {FilterId::MidiSearch, FilterId::ScoreSearch}) {
    const FilterModule module = filter == FilterId::MidiSearch ? MidiSearchModule() : ScoreSearchModule();
    SearchParameters parameters;
    parameters.melody = *MelodyFromKeys("<F8>-c8.de");
    parameters.melody.name = "Name";
    parameters.options = {RhythmMode::Relative, Tolerance::Low, PitchMode::Ignore, true, true};
    parameters.device = 3;
    parameters.tempo = 240;
    parameters.instrument = 127;
    RegistryValues values;
    SaveParameters(module, parameters, values);
    EXPECT_EQ(values.Text("Key"), "2");
    EXPECT_EQ(values.Text("MelodyLen"), "3");
    EXPECT_EQ(values.Text("NoteLen"), "120");
    EXPECT_EQ(values.Binary("Melody")->size(), 12u);
    EXPECT_EQ(values.Text("Tick Tolerance").has_value(), filter == FilterId::MidiSearch);
    const ParametersValue loaded = LoadParameters(&module, values);
    const auto& copy = static_cast<const SearchParameters&>(*loaded);
    SearchMelody expected = parameters.melody;
    expected.cursor = 0;
    EXPECT_EQ(copy.melody, expected);
    EXPECT_EQ(copy.options.tolerance, filter == FilterId::MidiSearch ? Tolerance::Low : Tolerance::None);
    EXPECT_EQ(copy.options.pitch, PitchMode::Ignore);
    EXPECT_TRUE(copy.options.drumTrack && copy.options.firstTrackOnly);
    EXPECT_EQ(copy.device, 3);
  }
  const FilterModule module = MidiSearchModule();
  RegistryValues odd;
  for (const char* name : {"Octave", "Alteration", "Key", "NoteLen", "Rhythm", "Tick Tolerance", "Notes",
                           "Tempo", "Instrument"}) {
    odd.SetText(name, "7");
  }
  odd.SetText("Instrument", "128");
  odd.SetInteger("MelodyLen", 3);
  odd.SetBinary("Melody", Bytes(8));
  const ParametersValue loaded = LoadParameters(&module, odd);
  const auto& parameters = static_cast<const SearchParameters&>(*loaded);
  EXPECT_EQ(parameters.melody, SearchMelody{});
  EXPECT_EQ(parameters.options, SearchOptions{});
  EXPECT_EQ(parameters.options.tolerance, Tolerance::High);
  EXPECT_EQ(parameters.tempo, 120);
  EXPECT_EQ(parameters.instrument, 0);
}

TEST(SearchParametersTest, RhythmAndPitchAreNeverBothFree) {
  using enum RhythmMode;
  for (const RhythmMode rhythm : {Exact, RhythmMode::Relative, Any}) {
    for (const PitchMode pitch :
         {PitchMode::Absolute, PitchMode::AnyOctave, PitchMode::Relative, PitchMode::Ignore}) {
      const SearchOptions one = WithPitch(WithRhythm({}, rhythm), pitch);
      const SearchOptions other = WithRhythm(WithPitch({}, pitch), rhythm);
      EXPECT_EQ(one.pitch, pitch);
      EXPECT_EQ(other.rhythm, rhythm);
      for (const SearchOptions& options : {one, other})
        EXPECT_FALSE(options.rhythm == Any && options.pitch == PitchMode::Ignore);
    }
  }
}

TEST(SearchParametersTest, MelodyIsNeededAndInstrumentsHaveNames) {
  const FilterModule module = MidiSearchModule();
  Job job;
  job.parameters = ParametersValue(module.create());
  EXPECT_EQ(module.missing(job), texts::MelodyMissing);
  for (const ParameterField& field : module.fields) {
    if (field.name == "Melody") {
      EXPECT_TRUE(field.set(*job.parameters, kTune));
      EXPECT_FALSE(field.set(*job.parameters, "c"));
    }
  }
  EXPECT_EQ(module.missing(job), std::nullopt);
}

}  // namespace
}  // namespace ts5
