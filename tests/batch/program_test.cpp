// The program from end to end, on real files.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <thread>

#include "batch/captured_console.h"
#include "batch/run_program.h"
#include "frame/filter_catalogue.h"
#include "modules/filter_modules.h"
#include "search/hit_texts.h"
#include "support/home.h"
#include "support/test_data.h"

namespace ts5::batch {
namespace {

namespace fs = std::filesystem;
using test::Content;
using test::DataPath;
using test::Listing;
using test::TemporaryDirectory;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// A folder of MIDI files and a registry of its own.
class ProgramTest : public testing::Test {
 protected:
  void SetUp() override {
    fs::create_directory(folder_.File("lieder"));
    fs::create_directory(folder_.File("neu"));
  }

  std::string Song(const std::string& name) {
    const std::string path = folder_.File("lieder/" + name);
    fs::copy_file(DataPath("midi/jazzsoft_test-multichannel-chords-1.mid"), path);
    return path;
  }
  std::string NewFiles() { return Listing(folder_.File("neu")); }
  // In this process.
  int Run(const std::vector<std::string>& line) {
    captured_.emplace();
    return captured_->Run(line);
  }
  std::string Out() { return captured_->out.str(); }
  std::string Err() { return captured_->err.str(); }
  // As a child process, in the folder.
  ProgramEnd RunChild(const std::vector<std::string>& line) {
    return Program(line, folder_.Path(), registry_).Wait();
  }

  TemporaryDirectory folder_;
  test::Home home_;
  std::string registry_ = home_.File("registry.sqlite");
  std::optional<CapturedConsole> captured_;
};

// What the light half does by itself is what the full one does, and the rest goes on to that.
TEST_F(ProgramTest, BothHalvesSayTheSame) {
  for (const FilterDescriptor& filter : FilterCatalogue())
    EXPECT_TRUE(CanRun(filter.id)) << filter.identifier;
  const std::vector<std::vector<std::string>> lines = {{"filters"},
                                                       {"filters", "--json"},
                                                       {"type", "a.mid", "b.stv", "--json"},
                                                       {"jobs"},
                                                       {"jobs", "--json"},
                                                       {"jobs", "x"},
                                                       {"registry", "list"},
                                                       {"registry", "--help"},
                                                       {"codecs"},
                                                       {"--version"},
                                                       {},
                                                       {"nichts"}};
  for (const auto& line : lines) {
    const ProgramEnd end = RunChild(line);
    EXPECT_EQ(end.status, Run(line)) << testing::PrintToString(line);
    EXPECT_EQ(end.out, Out()) << testing::PrintToString(line);
    EXPECT_EQ(end.err, Err()) << testing::PrintToString(line);
  }
}

TEST_F(ProgramTest, ConvertsWhatItCanAndSaysWhatItCannot) {
  Song("eins.mid");
  folder_.Write("lieder/kaputt.mid", "MThd ist das keine");
  const std::string tooLong = "lieder/" + std::string(260, 'x') + ".mid";
  const ProgramEnd end = RunChild({"run", "midiconverter", "--json", "--dest-dir", "neu", "lieder/eins.mid",
                                   "lieder/kaputt.mid", "lieder/fehlt.mid", tooLong, "lieder/\xFF.mid"});
  EXPECT_EQ(end.status, kExitFailed) << end.err;
  const auto json = nlohmann::json::parse(end.out);
  EXPECT_EQ(json["filter"], "MidiConverter");
  EXPECT_EQ(json["lines"][0]["count"], 1);
  EXPECT_EQ(json["lines"][1]["count"], 4);
  ASSERT_EQ(json["items"].size(), 5U);
  EXPECT_GE(json["items"][0]["code"], 0);
  EXPECT_EQ(json["items"][0]["source"], folder_.File("lieder/eins.mid"));
  EXPECT_EQ(json["items"][0]["destination"], folder_.File("neu/eins.cnv.mid"));
  EXPECT_EQ(json["items"][1]["code"], -104);
  for (const std::size_t missing : {2U, 3U, 4U}) EXPECT_EQ(json["items"][missing]["code"], -300) << missing;
  EXPECT_EQ(NewFiles(), "eins.cnv.mid");
  // Format 0, one track.
  EXPECT_THAT(Content(folder_.File("neu/eins.cnv.mid")), StartsWith(std::string("MThd\0\0\0\6\0\0\0\1", 12)));
}

TEST_F(ProgramTest, AFileBeyondTheAllowedSizeIsAFailedWrite) {
  Song("klein.mid");
  // One track with a long text.
  std::string track =
      std::string("\0\xFF\x01\x86\x8D\x20", 6) + std::string(100'000, 't') + std::string("\0\xFF\x2F\0", 4);
  const std::string size{'\0', static_cast<char>(track.size() >> 16 & 0xFF),
                         static_cast<char>(track.size() >> 8 & 0xFF), static_cast<char>(track.size() & 0xFF)};
  folder_.Write("lieder/lang.mid", std::string("MThd\0\0\0\6\0\1\0\1\0\x60MTrk", 18) + size + track);
  const std::vector<std::string> line{
      "run",         "MidiConverter", "--json",          "--dest-dir",      "neu",
      "--overwrite", "yes",           "lieder/lang.mid", "lieder/klein.mid"};
  const ProgramEnd end = Program(line, folder_.Path(), registry_, 64 * 1024).Wait();
  EXPECT_EQ(end.status, kExitFailed) << end.err;
  const auto json = nlohmann::json::parse(end.out);
  EXPECT_EQ(json["items"][0]["code"], -101);
  EXPECT_EQ(NewFiles(), "klein.cnv.mid") << "the run goes on, nothing half-written is left";
  EXPECT_EQ(RunChild(line).status, kExitSuccess);
}

TEST_F(ProgramTest, NormalOutputIsTheResultsDialog) {
  Song("eins.mid");
  EXPECT_EQ(RunChild({"run", "5", "lieder/eins.mid"}).out,
            "Ergebnisse der Midi-Konvertierung\n"
            "  Erfolgreich konvertierte Dateien:                 1\n"
            "  Nicht (ordnungsgemäß) konvertierte Dateien:       0\n"
            "Bemerkungen:\n"
            "  Die Datei wurde erfolgreich nach Midi-0 konvertiert.\n");
  EXPECT_EQ(Listing(folder_.File("lieder")), "eins.cnv.mid eins.mid");
}

TEST_F(ProgramTest, AnExistingTargetIsReplacedNumberedOrAskedFor) {
  const std::string song = Song("eins.mid");
  const std::string target = folder_.Write("neu/ziel.mid", "alt");
  const auto run = [&](std::vector<std::string> more, std::optional<std::deque<std::string>> replies) {
    captured_.emplace();
    if (replies) captured_->Answering(*replies);
    std::vector<std::string> line{"run", "MidiConverter", "--dest", target, song};
    line.insert(line.begin() + 2, more.begin(), more.end());
    return captured_->Run(line);
  };
  EXPECT_EQ(run({}, std::nullopt), kExitCancelled);
  EXPECT_THAT(Err(), HasSubstr(target + "\nDie Zieldatei ist bereits vorhanden."));
  EXPECT_THAT(Out(), HasSubstr("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_EQ(run({"--overwrite", "ask"}, {{"n"}}), kExitCancelled);
  EXPECT_EQ(Content(target), "alt");

  EXPECT_EQ(run({"--overwrite", "number"}, std::nullopt), kExitSuccess);
  EXPECT_EQ(run({"--overwrite", "number"}, std::nullopt), kExitSuccess);
  EXPECT_EQ(NewFiles(), "ziel.mid ziel001.mid ziel002.mid");
  EXPECT_EQ(Content(target), "alt");

  EXPECT_EQ(run({"--overwrite", "ask"}, {{"ja"}}), kExitSuccess);
  const std::string converted = Content(target);
  EXPECT_THAT(converted, StartsWith("MThd"));
  folder_.Write("neu/ziel.mid", "alt");
  EXPECT_EQ(run({"--overwrite", "yes"}, std::nullopt), kExitSuccess);
  EXPECT_EQ(Content(target), converted);
}

TEST_F(ProgramTest, NoRunDestroysASource) {
  const std::string song = Song("x.mid");
  const std::string tune = Content(song);
  const std::vector<std::string> toSmall{"run",   "MidiConverter", "--set",       "FormatSmall=1",
                                         "--set", "FormatBig=0",   "--overwrite", "yes"};
  const auto run = [&](std::vector<std::string> more) {
    more.insert(more.begin(), toSmall.begin(), toSmall.end());
    return Run(more);
  };
  // A piece whose target is the next source, and one whose name does not say what it is.
  ASSERT_EQ(run({song}), kExitSuccess);
  const std::string riff = Content(folder_.File("lieder/x.rmi"));
  EXPECT_EQ(run({song, folder_.File("lieder/x.rmi")}), kExitSuccess);
  EXPECT_EQ(Content(song), tune);
  EXPECT_EQ(Content(folder_.File("lieder/x.rmi")), riff);
  EXPECT_EQ(Listing(folder_.File("lieder")), "x.mid x.rmi x001.mid x001.rmi");
  EXPECT_THAT(Err(), HasSubstr("einem anderen Ziel gehört: 2 Zieldatei(en)."));
  const std::string misnamed = folder_.Write("lieder/riff.mid", riff);
  EXPECT_EQ(run({misnamed}), kExitSuccess);
  EXPECT_EQ(Content(misnamed), riff);

  // A chosen name that is the source.
  fs::create_directory_symlink(folder_.File("lieder"), folder_.File("alias"));
  for (const std::string& name :
       {song, folder_.File("lieder/../lieder/x.mid"), folder_.File("alias/X.MID")}) {
    EXPECT_EQ(run({"--dest", name, song}), kExitFailed) << name;
    EXPECT_THAT(Err(), HasSubstr("Die Zieldatei ist selbst eine Quelldatei"));
  }
  EXPECT_EQ(Content(song), tune);

  // Two of one name into one folder.
  const std::string other = folder_.Write("andere/x.mid", tune);
  EXPECT_EQ(
      Run({"run", "MidiConverter", "--overwrite", "yes", "--dest-dir", folder_.File("neu"), song, other}),
      kExitSuccess);
  EXPECT_EQ(NewFiles(), "x.cnv.mid x.cnv001.mid");
}

TEST_F(ProgramTest, ASearchResultReplacesResultFilesOnly) {
  const std::string song = Song("lied.mid");
  const std::string lyrics = folder_.Write("lieder/lied.txt", "Text des Lieds");
  const std::vector<std::string> line{
      "run", "MidiSearch", "--keys", "cde", "--overwrite", "yes", "--dest-dir", folder_.File("lieder"), song};
  EXPECT_EQ(Run(line), kExitCancelled);
  EXPECT_THAT(Err(), HasSubstr("Die Zieldatei ist bereits vorhanden. Soll sie überschrieben werden?"));
  EXPECT_EQ(Content(lyrics), "Text des Lieds");
  captured_.emplace();
  captured_->Answering({"ja"});
  EXPECT_EQ(captured_->Run(line), kExitSuccess);
  EXPECT_THAT(Content(lyrics), HasSubstr("sts5="));
  EXPECT_EQ(Run(line), kExitSuccess) << "now it is a result file";
  EXPECT_EQ(Listing(folder_.File("lieder")), "lied.mid lied.txt");
}

TEST_F(ProgramTest, RelativeNamesAreToldInFull) {
  const std::string song = folder_.File("lieder/lied.mid");
  fs::copy_file(DataPath("midi/jazzsoft_test-c-major-scale.mid"), song);
  const auto run = [&](std::vector<std::string> line) {
    const ProgramEnd end = RunChild(line);
    EXPECT_EQ(end.status, kExitSuccess) << end.err;
    return end.out;
  };
  // Names without a dot, as those of CD tracks are.
  run({"run", "MidiSearch", "--keys", "cde", "--dir", "lieder", "--dest", "fund"});
  EXPECT_THAT(Content(folder_.File("fund")), HasSubstr("\r\n" + ShortenedPath(song) + " "));
  fs::copy_file(song, folder_.File("lied"));
  EXPECT_THAT(run({"run", "MidiSearch", "--keys", "cde", "--json", "lied"}),
              HasSubstr("\"file\": \"" + folder_.File("lied") + "\""));
}

TEST_F(ProgramTest, FourProgramsAtOnceNumberWithoutLoss) {
  constexpr int kPrograms = 4;
  constexpr int kSongs = 30;
  const std::string song = Song("0.mid");
  for (int i = 1; i < kSongs; ++i) fs::copy_file(song, folder_.File("lieder/" + std::to_string(i) + ".mid"));
  std::deque<Program> programs;
  for (int i = 0; i < kPrograms; ++i) {
    programs.emplace_back(std::vector<std::string>{"run", "MidiConverter", "--quiet", "--overwrite", "number",
                                                   "--dest-dir", "neu", "--dir", "lieder"},
                          folder_.Path(), registry_);
  }
  for (Program& program : programs) {
    const ProgramEnd end = program.Wait();
    EXPECT_EQ(end.status, kExitSuccess) << end.err;
  }
  int converted = 0;
  for (const auto& entry : fs::directory_iterator(folder_.File("neu"))) {
    EXPECT_THAT(Content(entry.path().string()), StartsWith("MThd"));
    ++converted;
  }
  EXPECT_EQ(converted, kPrograms * kSongs);
}

TEST_F(ProgramTest, FailuresNameTheirReason) {
  const std::string song = Song("lied.mid");
  fs::create_symlink(folder_.File("fort"), folder_.File("lieder/verweis.mid"));
  folder_.Write("lieder/leer.mid", "");
  folder_.Write("lieder/ton.mid", "RIFF....WAVEfmt ");
  const auto lied = [&](const std::string& name) { return "\"" + folder_.File("lieder/" + name) + "\""; };
  EXPECT_EQ(Run({"run", "MidiConverter", "--dir", folder_.File("lieder"), "--dest-dir", folder_.File("neu")}),
            kExitFailed);
  for (const std::string& reason : {"Der Verweis " + lied("verweis.mid") + " führt ins Leere.",
                                    "Die Datei " + lied("leer.mid") + " ist leer.",
                                    "Dem Inhalt nach ist " + lied("ton.mid") + " eine Wave-Datei."})
    EXPECT_THAT(Err(), HasSubstr(reason));
}

TEST_F(ProgramTest, ADirectoryAndAFileListAreSources) {
  Song("b.mid");
  Song("A.MID");
  folder_.Write("lieder/ton.wav", "RIFF");
  folder_.Write("lieder/text.txt", "kein Lied");
  EXPECT_EQ(Run({"run", "MidiConverter", "--dir", folder_.File("lieder"), "--dest-dir", folder_.File("neu")}),
            kExitSuccess)
      << Err();
  EXPECT_EQ(NewFiles(), "A.cnv.MID b.cnv.mid");
  fs::create_directories(folder_.File("lieder/Chor/Alt"));
  fs::rename(folder_.File("lieder/b.mid"), folder_.File("lieder/Chor/Alt/b.mid"));
  EXPECT_EQ(Run({"run", "MidiConverter", "--dir", folder_.File("lieder"), "--subfolders", "--dest-dir",
                 folder_.File("baum")}),
            kExitSuccess)
      << Err();
  EXPECT_EQ(Listing(folder_.File("baum")), "A.cnv.MID Chor");
  EXPECT_EQ(Listing(folder_.File("baum/Chor/Alt")), "b.cnv.mid") << "the same subdirectories";
  fs::rename(folder_.File("lieder/Chor/Alt/b.mid"), folder_.File("lieder/b.mid"));

  const std::string list =
      folder_.Write("Liste.sts", "[sts5 Filelist]\r\nFiles=2\r\n1=" + folder_.File("lieder/b.mid") +
                                     "\r\n2=/gibt/es/nicht.mid\r\n");
  EXPECT_EQ(Run({"run", "MidiConverter", "--list", list, "--overwrite", "number", "--dest-dir",
                 folder_.File("neu")}),
            kExitFailed)
      << Err();
  EXPECT_THAT(Err(), HasSubstr("1 Datei(en) konnten nicht geladen werden."));
  EXPECT_EQ(NewFiles(), "A.cnv.MID b.cnv.mid b.cnv001.mid");
  EXPECT_EQ(Run({"run", "MidiConverter", "--list", folder_.File("lieder/text.txt")}), kExitFailed);
  EXPECT_THAT(Err(), HasSubstr("konnte nicht geladen werden."));
}

TEST_F(ProgramTest, WrongUsageSaysWhatIsPossibleAndTouchesNothing) {
  const std::string song = Song("eins.mid");
  struct Case {
    std::vector<std::string> line;
    std::string part;  // of what is said
  };
  const std::vector<Case> cases{
      {{},
       "filters, jobs, type, info, attributes, interfaces, score, run, job, resume, codecs, cd, layout, "
       "results, "
       "registry"},
      {{"spiele"},
       "filters, jobs, type, info, attributes, interfaces, score, run, job, resume, codecs, cd, layout, "
       "results, "
       "registry"},
      {{"run", "MidiKonverter", song}, "MidiConverter"},
      {{"run", "17", song}, "MidiConverter"},
      {{"run", "MidiSearch", song}, "Definieren Sie zuerst eine Suchmelodie"},
      {{"run", "MidiSearch", "--melody", "60:0", song}, "60:0"},
      {{"run", "MidiSearch", "--melody-name", "Lied", song}, "\"Lied\""},
      {{"run", "MidiConverter", "--keys", "c", song}, "Melodiesucher"},
      {{"run", "MidiConverter"}, "--list oder --dir"},
      {{"run", "MidiConverter", "--set", "Format=1", song}, "FormatSmall, Option1, FormatBig"},
      {{"run", "MidiConverter", "--set", "NewTimebase=15", song}, "0..14"},
      {{"run", "MidiConverter", "--overwrite", "no", song}, "yes, number, ask"},
      {{"run", "MidiConverter", "--part", "9/8", song}, "9/8"},
      {{"run", "MidiConverter", "--dest", "x.mid", song, song}, "--dest-dir"},
      {{"run", "MidiConverter", "--dir", folder_.Path(), song}, "--dir"},
      {{"job", "Nirgends"}, "Default Job"},
      {{"registry", "lies"}, "list, get, set, delete, import, export"},
      {{"registry", "set", "--binary", ".", "x", "0g"}, "0g"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Run(c.line), kExitUsage) << c.part;
    EXPECT_THAT(Err(), HasSubstr(c.part));
    EXPECT_EQ(Out(), "");
  }
  EXPECT_EQ(Listing(folder_.File("lieder")), "eins.mid");
}

// From a song to a wave file, normalised, in another format, and played; the words for what fails are those
// of each filter.
TEST_F(ProgramTest, MakesConvertsAndPlaysWaveFiles) {
  const std::string song = Song("eins.mid");
  const std::string wave = folder_.File("neu/eins.wav");
  EXPECT_EQ(Run({"run", "MidiToWave", "--set", "DestFormat=22050 1 16", "--set", "ConvNormalize=1", "--dest",
                 wave, song}),
            kExitSuccess);
  EXPECT_EQ(Run({"info", wave}), kExitSuccess);
  EXPECT_THAT(Out(), HasSubstr("22050 Hz (Samples per Sek), 16 Bits per Sample, Mono"));
  EXPECT_THAT(Out(), testing::ContainsRegex("True Peak\\):.* [01],[0-9] dBTP")) << "normalised";

  const std::string text = folder_.File("kein.wav");
  std::ofstream(text) << "kein Audio";
  EXPECT_EQ(Run({"run", "WaveConverter", "--set", "SamplesPerSec=8000", "--dest-dir", folder_.File("neu"),
                 "--quiet", wave, text}),
            kExitFailed);
  EXPECT_EQ(Err(), "ts5-batch: " + text +
                       ": Die Konvertierung konnte nicht initialisiert werden. Dem Inhalt nach ist \"" +
                       text + "\" ein Text.\n");
  EXPECT_EQ(NewFiles(), "eins.cnv.wav eins.wav");

  const std::string played = folder_.File("neu/gespielt.wav");
  EXPECT_EQ(Run({"run", "AudioPlayer", "--set", "KurzAnspielen?=1", "--set", "Anspielzeit=1", "--device",
                 "wave:" + played, wave}),
            kExitSuccess);
  const std::string captured = folder_.File("neu/mitschnitt.mid");
  EXPECT_EQ(Run({"run", "MidiPlayer", "--set", "KurzAnspielen?=1", "--set", "Anspielzeit=1", "--device",
                 "capture:" + captured, song}),
            kExitSuccess);
  EXPECT_EQ(Run({"info", played, captured}), kExitSuccess);
  EXPECT_THAT(Out(), HasSubstr("22050 Hz (Samples per Sek), 16 Bits per Sample, Stereo"));
  EXPECT_THAT(Out(), HasSubstr("MIDI-0"));
}

// No part takes the name or the source of another.
TEST_F(ProgramTest, PartsOfARunLoseNothing) {
  folder_.Write("a/x.mid", Content(DataPath("midi/mutopia_satie-gymnopedie-no1.mid")));
  folder_.Write("a/x.rmi", Content(DataPath("midi/made_gymnopedie.rmi")));
  folder_.Write("b/x.mid", Content(DataPath("midi/jazzsoft_test-c-major-scale.mid")));
  const std::string before = Content(folder_.File("a/x.rmi"));
  for (const char* const part : {"1/3", "2/3", "3/3"}) {
    ASSERT_EQ(Run({"run", "MidiConverter", "--set", "FormatSmall=1", "--overwrite", "yes", "--part", part,
                   "--dest-dir", folder_.File("a"), folder_.File("a/x.mid"), folder_.File("a/x.rmi"),
                   folder_.File("b/x.mid")}),
              kExitSuccess)
        << Err();
  }
  EXPECT_EQ(Content(folder_.File("a/x.rmi")), before);
  EXPECT_EQ(test::Listing(folder_.File("a")), "x.mid x.rmi x001.mid x001.rmi x003.rmi");
}

// What machines find that share a collection is, put together, what one finds alone.
TEST_F(ProgramTest, PartsOfARunGiveTheWhole) {
  const std::vector<std::string> songs{"jazzsoft_test-c-major-scale.mid", "mutopia_satie-gymnopedie-no1.mid",
                                       "made_gymnopedie.rmi"};
  for (int i = 0; i < 11; ++i) {
    const std::string name = (i % 2 == 0 ? "lieder/" : "lieder/tief/") + std::to_string(i) + ".mid";
    folder_.Write(
        name, i == 7 ? "MThd kaputt" : Content(DataPath("midi/" + songs[static_cast<std::size_t>(i) % 3])));
  }
  const std::vector<std::vector<std::string>> runs{
      {"run", "MidiSearch", "--json", "--keys", "4cde", "--melody", "64:240,65:240", "--set", "Notes=2",
       "--set", "Rhythm=2", "--dir", folder_.File("lieder")},
      {"run", "MidiConverter", "--json", "--overwrite", "yes", "--dest-dir", folder_.File("neu/ganz/neu"),
       folder_.File("lieder/0.mid"), folder_.File("lieder/2.mid"), folder_.File("lieder/4.mid")},
  };
  for (const auto& run : runs) {
    (void)Run(run);
    const auto whole = nlohmann::json::parse(Out());
    for (const int parts : {1, 3, 8}) {
      std::vector<std::string> merge{"results", "merge", "--json"};
      for (int part = parts; part >= 1; --part) {
        std::vector<std::string> line = run;
        line.insert(line.begin() + 2, {"--part", std::to_string(part) + "/" + std::to_string(parts)});
        (void)Run(line);
        const std::string name = "teil" + std::to_string(part) + ".json";
        folder_.Write(name, Out());
        merge.push_back(folder_.File(name));
      }
      (void)Run(merge);
      EXPECT_EQ(nlohmann::json::parse(Out()), whole)
          << parts << " parts: " << nlohmann::json::diff(whole, nlohmann::json::parse(Out()));
      if (parts == 1) continue;
      merge.pop_back();
      EXPECT_EQ(Run(merge), kExitFailed);
      EXPECT_THAT(Err(), HasSubstr("Es fehlt Teil 1"));
    }
  }
  EXPECT_GT(nlohmann::json::parse(Content(folder_.File("teil1.json")))["items"].size(), 0U);
  folder_.Write("falsch.json", R"({"filter":"MidiSearch","hits":[{"file":7}]})");
  EXPECT_EQ(Run({"results", "merge", folder_.File("falsch.json")}), kExitFailed);
  EXPECT_THAT(Err(), HasSubstr("kein Ergebnis"));
}

TEST_F(ProgramTest, HitsOfSeveralMelodiesNameTheirs) {
  const std::string song = folder_.File("lieder/a.mid");
  folder_.Write("lieder/a.mid", Content(DataPath("midi/jazzsoft_test-c-major-scale.mid")));
  const std::vector<std::string> melodies{"60:240,62:240", "64:240,65:240", "62:240,64:240,65:240"};
  std::multiset<std::string> alone;
  std::vector<std::string> line{"run", "MidiSearch", "--json", "--set", "Rhythm=2", song};
  for (const std::string& melody : melodies) {
    ASSERT_EQ(Run({"run", "MidiSearch", "--json", "--set", "Rhythm=2", "--melody", melody, song}),
              kExitSuccess)
        << Err();
    const auto hits = nlohmann::json::parse(Out())["hits"];
    for (const auto& hit : hits) alone.insert(hit.dump());
    line.insert(line.end(), {"--melody", melody});
  }
  ASSERT_EQ(Run(line), kExitSuccess) << Err();
  std::multiset<std::string> together;
  const auto hits = nlohmann::json::parse(Out())["hits"];
  for (const auto& hit : hits) {
    together.insert(hit.dump());
    EXPECT_THAT(melodies, testing::Contains(hit["melody"].get<std::string>()));
  }
  EXPECT_GE(together.size(), 3U);
  EXPECT_EQ(together, alone);
}

TEST_F(ProgramTest, SearchesFilesAndTreesForAMelody) {
  for (const char* name : {"a.mid", "b/tief.mid"}) {
    folder_.Write(std::string("lieder/") + name, Content(DataPath("midi/jazzsoft_test-c-major-scale.mid")));
  }
  // The melody by its keys, as numbers and by the name under which the registry keeps it.
  ASSERT_EQ(Run({"registry", "set", "--binary", "Suchmelodien", "Leiter", "3c00f0003e00f0004000f000"}),
            kExitSuccess)
      << Err();
  for (const std::vector<std::string>& melody : std::vector<std::vector<std::string>>{
           {"--keys", "4cde"}, {"--melody", "60:240,62:240,64:240"}, {"--melody-name", "Leiter"}}) {
    ASSERT_EQ(Run({"run", "MidiSearch", "--json", melody[0], melody[1], "--dir", folder_.File("lieder")}),
              kExitSuccess)
        << Err();
    const auto json = nlohmann::json::parse(Out());
    EXPECT_EQ(json["lines"][0]["count"], 2);
    ASSERT_EQ(json["hits"].size(), 2U);
    EXPECT_EQ(json["hits"][1]["file"], folder_.File("lieder/b/tief.mid"));
    EXPECT_EQ(json["hits"][1]["bar"], 0);
  }
  // Several files into the result file that was named.
  const std::string result = folder_.File("treffer.txt");
  const std::string song = folder_.File("lieder/a.mid");
  ASSERT_EQ(Run({"run", "MidiSearch", "--keys", "cde", "--dest", result, song, song}), kExitSuccess) << Err();
  EXPECT_THAT(Content(result), HasSubstr("2 Melodie(n) gefunden"));
  EXPECT_THAT(Out(), HasSubstr("Fundergebnis:"));
  // Into a directory: one file gives its name, several the next free number.
  const std::vector<std::string> search{"run", "MidiSearch", "--keys",
                                        "cde", "--dest-dir", folder_.File("neu")};
  const auto into = [&](std::vector<std::string> sources) {
    std::vector<std::string> line = search;
    line.insert(line.end(), sources.begin(), sources.end());
    EXPECT_EQ(Run(line), kExitSuccess) << Err();
  };
  into({song});
  into({song, song});
  into({"--dir", folder_.File("lieder")});
  EXPECT_EQ(NewFiles(), "Suchergebnisse001.txt Suchergebnisse002.txt a.txt");
  EXPECT_THAT(Content(folder_.File("neu/Suchergebnisse002.txt")), HasSubstr("2 Melodie(n) gefunden"));
}

// The disk that fills while the hits are written: the run says so by the name of the file and leaves the old
// one.
TEST_F(ProgramTest, ResultsThatDoNotFitOnTheDiskLeaveTheOldOnes) {
  std::string notes;
  for (int i = 0; i < 5000; ++i) notes += std::string("\x60\x90\x3C\x40\x60\x90\x3E\x40", 8);
  notes += std::string("\0\xFF\x2F\0", 4);
  const std::string size{'\0', '\0', static_cast<char>(notes.size() >> 8 & 0xFF),
                         static_cast<char>(notes.size() & 0xFF)};
  const std::string song =
      folder_.Write("lieder/viel.mid", std::string("MThd\0\0\0\6\0\1\0\1\0\x60MTrk", 18) + size + notes);
  const std::vector<std::string> line{
      "run", "MidiSearch", "--keys", "4cd", "--dest", "neu/treffer.txt", "--overwrite", "yes", song};
  ASSERT_EQ(RunChild(line).status, kExitSuccess);
  const std::string whole = Content(folder_.File("neu/treffer.txt"));
  EXPECT_THAT(whole, HasSubstr("5000 Melodie(n) gefunden"));
  const ProgramEnd end = Program(line, folder_.Path(), registry_, 64 * 1024).Wait();
  EXPECT_EQ(end.status, kExitFailed);
  EXPECT_THAT(end.err, HasSubstr("neu/treffer.txt: In eine Datei konnte nicht geschrieben werden."));
  EXPECT_THAT(end.out, HasSubstr("In eine Datei konnte nicht geschrieben werden."));
  EXPECT_EQ(Content(folder_.File("neu/treffer.txt")), whole);
  EXPECT_EQ(NewFiles(), "treffer.txt");
}

TEST_F(ProgramTest, AnUnknownMelodyNamesTheStoredOnes) {
  const std::vector<std::string> line{"run", "MidiSearch", "--melody-name", "Fehlt", "x.mid"};
  EXPECT_EQ(Run(line), kExitUsage);
  EXPECT_THAT(Err(), HasSubstr("Die Suchmelodie \"Fehlt\" gibt es nicht. Möglich sind: keine"));
  for (const char* name : {"Leiter", "Kuckuck"})
    ASSERT_EQ(Run({"registry", "set", "--binary", "Suchmelodien", name, "3c00f000"}), kExitSuccess);
  EXPECT_EQ(Run(line), kExitUsage);
  EXPECT_THAT(Err(), HasSubstr("Möglich sind: \"Kuckuck\", \"Leiter\""));
}

TEST_F(ProgramTest, SearchesScoresByStaffVoiceAndBeat) {
  const std::string canon = DataPath("../../demo/Kanon in D.stv");
  std::vector<std::string> line = {"run", "ScoreSearch", "--json", "--melody", "78:240,76:240,74:240,73:240",
                                   canon};
  ASSERT_EQ(Run(line), kExitSuccess) << Err();
  const auto json = nlohmann::json::parse(Out());
  EXPECT_EQ(json["lines"][1]["count"], 4);
  ASSERT_EQ(json["hits"].size(), 4U);
  // The second violin enters in the fifth bar, the middle one of the second system.
  const auto& hit = json["hits"][2];
  EXPECT_THAT(std::string(hit["file"]), testing::EndsWith("Kanon in D.stv"));
  std::vector<int> numbers;
  for (const char* name :
       {"track", "voice", "bar", "time", "firstSystem", "lastSystem", "firstObject", "lastObject"})
    numbers.push_back(hit[name]);
  EXPECT_THAT(numbers, testing::ElementsAre(1, 0, 4, 0, 1, 1, 4, 7));

  const std::string result = folder_.File("treffer.txt");
  line[2] = "--quiet";
  line.insert(line.end(), {"--dest", result});
  ASSERT_EQ(Run(line), kExitSuccess) << Err();
  EXPECT_THAT(Content(result), HasSubstr("Zei2/Sti1   Takt 5     Schlag 1 \r\n"));
}

TEST_F(ProgramTest, EveryCommandHasHelp) {
  const std::vector<std::vector<std::string>> commands{{},
                                                       {"filters"},
                                                       {"jobs"},
                                                       {"type"},
                                                       {"info"},
                                                       {"run"},
                                                       {"job"},
                                                       {"registry"},
                                                       {"registry", "list"},
                                                       {"registry", "get"},
                                                       {"registry", "set"},
                                                       {"registry", "delete"},
                                                       {"registry", "import"},
                                                       {"registry", "export"}};
  for (std::vector<std::string> line : commands) {
    line.emplace_back("--help");
    EXPECT_EQ(Run(line), kExitSuccess);
    EXPECT_THAT(Out(), StartsWith("Aufruf: ts5-batch"));
    EXPECT_THAT(Out(), HasSubstr("Beispiele:\n  "));
  }
  EXPECT_EQ(Run({"run", "MidiConverter", "--help"}), kExitSuccess);
  EXPECT_THAT(Out(), HasSubstr("NewTimebase"));
}

// The words of a line as a shell makes them, "*.mid" for the names that there are.
std::vector<std::string> ShellWords(std::string_view line, const std::string& directory) {
  std::vector<std::string> words;
  std::string word;
  bool quoted = false;
  for (const char c : std::string(line) + ' ') {
    if (c == '"') {
      quoted = !quoted;
    } else if (c != ' ' || quoted) {
      word += c;
    } else if (word.starts_with('*')) {
      for (const auto& file : fs::directory_iterator(directory)) {
        const std::string name = file.path().filename();
        if (name.ends_with(word.substr(1))) words.push_back(name);
      }
      word.clear();
    } else if (!word.empty()) {
      words.push_back(std::exchange(word, {}));
    }
  }
  return words;
}

// The lines of a help text behind "Beispiele:".
std::vector<std::string> Examples(const std::string& help) {
  std::vector<std::string> lines;
  std::istringstream rest(help.substr(help.find("Beispiele:\n")));
  std::string line;
  std::getline(rest, line);
  while (std::getline(rest, line)) lines.push_back(line.substr(2));
  return lines;
}

TEST_F(ProgramTest, TheHelpOfEachFilterShowsExamplesOfItsOwnThatRun) {
  // Five sixteenths c to g, short enough to be played.
  std::string notes;
  for (const char key : {'\x3C', '\x3E', '\x40', '\x41', '\x43'})
    notes += std::string("\0\x90", 2) + key + std::string("\x40\x18\x80", 3) + key + '\0';
  const std::string song =
      std::string("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\x2C", 22) + notes + std::string("\0\xFF\x2F\0", 4);
  std::vector<FilterId> filters{FilterId::None};
  for (const FilterModule& module : Modules()) filters.push_back(module.id);
  for (const FilterId filter : filters) {
    const std::string name = filter == FilterId::None ? "" : std::string(Descriptor(filter).identifier);
    ASSERT_EQ(Run(name.empty() ? std::vector<std::string>{"run", "--help"}
                               : std::vector<std::string>{"run", name, "--help"}),
              kExitSuccess);
    const auto examples = Examples(Out());
    EXPECT_FALSE(examples.empty()) << name;
    // What needs a disc in a drive, or a layout, has tests of its own.
    const bool runsAnywhere =
        !Has(filter, kWritesDisc) && !Has(filter, kTracksOnly) && !Has(filter, kNeedsNoSources);
    for (const std::string& example : examples) {
      EXPECT_THAT(example, StartsWith("ts5-batch run " + name));
      if (!runsAnywhere) continue;
      // Each in a place of its own, where the files are that it names.
      const TemporaryDirectory place;
      for (const char* path : {"Lied.mid", "Tanz.mid", "Lieder/Lied.mid"}) place.Write(path, song);
      for (const char* path : {"Konzert.wav", "Aufnahmen/Konzert.wav"})
        place.Write(path, Content(DataPath("audio/wav_quiet_minus30db.wav")));
      for (const char* path : {"Konzert.mp3", "Musik/Konzert.mp3"})
        place.Write(path, Content(DataPath("audio/mpeg1_layer3_cbr128.mp3")));
      place.Write("Konzert.ogg", Content(DataPath("audio/ogg_vorbis_mono_11025.ogg")));
      for (const char* path : {"Chor.stv", "Partituren/Chor.stv"})
        place.Write(path, Content(DataPath("../../demo/Bruder Jakob.stv")));
      place.Write("Chor.sts", "[sts5 Filelist]\r\nFiles=1\r\n1=Lied.mid\r\n");
      fs::create_directory(place.File("Neu"));
      std::vector<std::string> line = ShellWords(example, place.Path());
      line.erase(line.begin());
      // What sounds, sounds into a file, which takes no time, or where nobody hears it.
      const bool score = filter == FilterId::ScorePlayer;
      if (score && std::ranges::find(line, "--device") == line.end()) {
        line.insert(line.end(), {"--device", "synth:" + place.File("gespielt.wav")});
      } else if (name.ends_with("Player") && std::ranges::find(line, "--device") == line.end()) {
        line.insert(line.end(), {"--device", "null"});
      }
      const ProgramEnd end = Program(line, place.Path(), registry_).Wait();
      EXPECT_EQ(end.status, kExitSuccess) << example << '\n' << end.out << end.err;
    }
  }
}

TEST_F(ProgramTest, TypesAndProperties) {
  EXPECT_EQ(Run({"type", "a.MID", "Track 3", "a.b.mp3", "c:\\lied"}), kExitSuccess);
  EXPECT_EQ(Out(),
            "17  MIDICON       a.MID\n"
            "59  CDTRACKICON   Track 3\n"
            "13  MP3ICON       a.b.mp3\n"
            "19  STOPICON      c:\\lied\n");
  const std::string song = Song("eins.mid");
  const std::string text = folder_.Write("text.txt", "kein Lied");
  EXPECT_EQ(Run({"info", "--json", song, text, folder_.File("fehlt.mid")}), kExitFailed);
  const auto json = nlohmann::json::parse(Out());
  EXPECT_EQ(json["files"][0]["code"], 0);
  EXPECT_EQ(json["files"][0]["properties"][0]["label"], "Dateiformat");
  EXPECT_EQ(json["files"][0]["properties"][0]["value"], "MIDI-1");
  EXPECT_EQ(json["files"][1]["code"], -104);
  EXPECT_EQ(json["files"][2]["code"], -300);
  EXPECT_EQ(Run({"filters"}), kExitSuccess);
  EXPECT_THAT(Out(), HasSubstr(" 5 * MidiConverter"));
}

TEST_F(ProgramTest, RegistryValuesComeBackAsTheyWent) {
  EXPECT_EQ(Run({"registry", "set", "Jobs\\Job 0001", "Title", "Chor"}), kExitSuccess) << Err();
  EXPECT_EQ(Run({"registry", "set", ".", "Job Number", "1"}), kExitSuccess);
  EXPECT_EQ(Run({"registry", "set", "Suchmelodien", "Kuckuck", "3c00f000", "--binary"}), kExitSuccess);
  EXPECT_EQ(Run({"registry", "get", "HKLM\\Software\\QLW\\stavora-dialog\\5.0\\jobs\\job 0001", "title"}),
            kExitSuccess);
  EXPECT_EQ(Out(), "Chor\n");
  EXPECT_EQ(Run({"registry", "get", "Suchmelodien", "Kuckuck"}), kExitSuccess);
  EXPECT_EQ(Out(), "3c 00 f0 00\n");

  const std::string file = folder_.File("sicherung.reg");
  EXPECT_EQ(Run({"registry", "export", file}), kExitSuccess) << Err();
  EXPECT_EQ(Run({"registry", "export", file}), kExitFailed) << "there is one, and nobody to ask";
  EXPECT_EQ(Run({"registry", "export", file, "Suchmelodien", "--overwrite", "number"}), kExitSuccess);
  EXPECT_EQ(Out(), folder_.File("sicherung001.reg") + "\n");
  EXPECT_EQ(Run({"registry", "export", file, "--overwrite", "yes"}), kExitSuccess);
  EXPECT_EQ(Run({"registry", "list", "--recursive"}), kExitSuccess);
  const std::string before = Out();
  EXPECT_THAT(before, HasSubstr("Title = \"Chor\""));
  EXPECT_EQ(Run({"registry", "delete", "."}), kExitSuccess);
  EXPECT_EQ(Run({"registry", "get", "Suchmelodien", "Kuckuck"}), kExitFailed);
  EXPECT_EQ(Run({"registry", "import", file}), kExitSuccess) << Err();
  EXPECT_EQ(Run({"registry", "list", "--recursive"}), kExitSuccess);
  EXPECT_EQ(Out(), before);

  const std::string faulty = folder_.Write("fehler.reg",
                                           "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\software\\qlw\\Stavora-"
                                           "dialog\\5.0]\r\n\"Gut\"=\"ja\"\r\nmurks\r\n");
  EXPECT_EQ(Run({"registry", "import", faulty}), kExitFailed);
  EXPECT_THAT(Err(), HasSubstr("Zeile 5"));
  EXPECT_EQ(Run({"registry", "get", ".", "Gut"}), kExitSuccess);
  EXPECT_EQ(Run({"registry", "import", Song("eins.mid")}), kExitFailed);
}

TEST_F(ProgramTest, AJobRunsWithItsFilesParametersAndTheSettings) {
  const std::string song = Song("eins.mid");
  const std::vector<std::pair<std::string, std::string>> values{
      {"Title", "Chor"},
      {"Filter", "5"},
      {"SourcePath", folder_.Path()},
      {"SourceDrive", "-1"},
      {"SourceFilelistNum", "1"},
      {"SourceListFile 0001", song},
      {"FormatBig", "0"},
      {"FormatSmall", "1"},
      {"Option1", "1"},
  };
  ASSERT_EQ(Run({"registry", "set", ".", "Job Number", "1"}), kExitSuccess);
  for (const auto& [name, value] : values) {
    ASSERT_EQ(Run({"registry", "set", "Jobs\\Job 0001", name, value}), kExitSuccess) << Err();
  }
  EXPECT_EQ(Run({"jobs"}), kExitSuccess);
  EXPECT_THAT(Out(), HasSubstr("  1  Chor          Midi-Konverter"));
  EXPECT_EQ(Run({"job", "chor", "--json"}), kExitSuccess) << Err();
  const auto json = nlohmann::json::parse(Out());
  EXPECT_EQ(json["items"][0]["destination"], folder_.File("lieder/eins.rmi"));
  EXPECT_THAT(Content(folder_.File("lieder/eins.rmi")), StartsWith("RIFF"));
  // The settings say what happens to a target that is there.
  ASSERT_EQ(Run({"registry", "set", ".", "OverwriteTarget", "0"}), kExitSuccess);
  EXPECT_EQ(Run({"job", "1"}), kExitSuccess) << Err();
  EXPECT_EQ(Listing(folder_.File("lieder")), "eins.mid eins.rmi eins001.rmi");
  // Without a preset there is no name to write to.
  ASSERT_EQ(Run({"registry", "set", ".", "VorgabeConvert", "1"}), kExitSuccess);
  EXPECT_EQ(Run({"job", "1"}), kExitFailed);
  EXPECT_THAT(Err(), HasSubstr("Legen Sie bitte einen Zieldateinamen fest."));
}

TEST_F(ProgramTest, WhatIsNoRegistryIsRefusedAndStaysAsItIs) {
  const std::string text = "Das ist keine Datenbank, aber lang genug, um eine sein zu wollen.";
  home_.Write("registry.sqlite", text);
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"jobs"}, {"registry", "set", ".", "SuffixConvert", "x"}}) {
    const ProgramEnd end = RunChild(command);
    EXPECT_EQ(end.status, kExitFailed);
    EXPECT_THAT(end.err, HasSubstr("keine Registrierungsdatei"));
    EXPECT_EQ(Content(home_.File("registry.sqlite")), text);
  }
}

TEST_F(ProgramTest, TitlesDoNotSteerTheTerminal) {
  ASSERT_EQ(Run({"registry", "set", ".", "Job Number", "1"}), kExitSuccess);
  ASSERT_EQ(Run({"registry", "set", "Jobs\\Job 0001", "Title", "\x1b[2J\u009bOrgel"}), kExitSuccess);
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"jobs"}, {"registry", "list", "Jobs\\Job 0001"}, {"job", "fehlt"}}) {
    (void)Run(command);
    EXPECT_THAT(Out() + Err(), HasSubstr("?[2J?Orgel")) << command[0];
  }
}

TEST_F(ProgramTest, CtrlCLeavesWholeFilesOnly) {
  const std::string song = Song("0000.mid");
  constexpr int kSongs = 4000;
  for (int i = 1; i < kSongs; ++i)
    fs::create_hard_link(song, folder_.File("lieder/" + std::to_string(10000 + i) + ".mid"));
  Program program({"run", "MidiConverter", "--dir", "lieder", "--dest-dir", "neu", "--json"}, folder_.Path(),
                  registry_);
  while (fs::is_empty(folder_.File("neu"))) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  for (int i = 0; i < 3; ++i) {
    program.Signal(SIGINT);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  const ProgramEnd end = program.Wait();
  EXPECT_EQ(end.status, kExitCancelled) << end.err;

  const auto json = nlohmann::json::parse(end.out);
  std::size_t written = 0;
  std::string whole;
  for (const auto& entry : fs::directory_iterator(folder_.File("neu"))) {
    EXPECT_EQ(entry.path().extension(), ".mid");
    const std::string content = Content(entry.path().string());
    if (whole.empty()) whole = content;
    EXPECT_EQ(content, whole);
    ++written;
  }
  EXPECT_EQ(json["lines"][0]["count"], written);
  EXPECT_LT(written, static_cast<std::size_t>(kSongs));
}

TEST_F(ProgramTest, OutputThatCannotBeWrittenIsAFailure) {
  captured_.emplace();
  captured_->out.setstate(std::ios::badbit);
  EXPECT_EQ(captured_->Run({"filters"}), kExitFailed);
  EXPECT_THAT(Err(), HasSubstr("Ausgabe"));
}

TEST_F(ProgramTest, DiscsArePutInListedAndPlayed) {
  EXPECT_EQ(Run({"cd", "list"}), 0);
  EXPECT_THAT(Out(), HasSubstr("keine lesbare CD"));
  EXPECT_FALSE(fs::exists(home_.File("stavora-ts5"))) << "to look makes nothing";
  EXPECT_EQ(Run({"cd", "insert", DataPath("cd/three_tracks.bin")}), 1);
  EXPECT_THAT(Err(), HasSubstr("ist kein CUE-Sheet"));
  EXPECT_EQ(Run({"cd", "insert", DataPath("cd/three_tracks.cue")}), 0);
  EXPECT_EQ(Run({"cd", "list", "--json"}), 0);
  const auto drives = nlohmann::json::parse(Out())["drives"];
  const auto& tracks = drives[0]["disc"]["tracks"];
  ASSERT_EQ(tracks.size(), 3U);
  EXPECT_EQ(tracks[1]["frames"], 60);
  const std::string second = "STAVORA VIRTUELLE CD\\Track 2";

  // A track by the name that the list shows, and a whole disc by the name of its drive.
  EXPECT_EQ(Run({"run", "AudioPlayer", "--device", "null", "--json", second}), 0);
  EXPECT_EQ(nlohmann::json::parse(Out())["lines"][1]["count"], 1);
  EXPECT_EQ(Run({"run", "AudioPlayer", "--device", "null", "--json", "--set", "KurzAnspielen?=1", "--set",
                 "Anspielzeit=1", "--dir", drives[0]["name"].get<std::string>()}),
            0);
  EXPECT_EQ(nlohmann::json::parse(Out())["lines"][1]["count"], 3);
  EXPECT_EQ(Run({"run", "MidiConverter", "--dir", "stavora virtuelle cd"}), 1) << "no tracks for this one";
  EXPECT_EQ(Run({"run", "MidiConverter", "--dest-dir", "stavora virtuelle cd", Song("a.mid")}), 2)
      << "nor targets";

  EXPECT_EQ(Run({"cd", "eject"}), 0);
  EXPECT_EQ(Run({"run", "AudioPlayer", "--device", "null", "--json", second}), 1);
  EXPECT_EQ(nlohmann::json::parse(Out())["items"][0]["code"], -500);
  EXPECT_EQ(Run({"cd"}), 2);
}

}  // namespace
}  // namespace ts5::batch
