// Layouts through the program: PDF files that are there already, fields that are filled, printers that are
// fitted.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "artworker/layout_file.h"
#include "batch/run_program.h"
#include "disc/burn_parameters.h"
#include "modules/disc_facts.h"
#include "modules/filter_modules.h"
#include "support/test_data.h"

namespace ts5::batch {
namespace {

using nlohmann::json;
using test::Content;
using test::Listing;
using testing::HasSubstr;
using testing::StartsWith;

class LayoutProgram : public testing::Test {
 protected:
  LayoutProgram() {
    artworker::TextField field;
    artworker::SetText(field, "{Titel}");
    artworker::ArtworkLayout layout = artworker::NewLayout();
    layout.elements = {
        {artworker::ArtworkObjectId::Inlay, field, false, 0, 0, 0, false, {100, 100, 1300, 300}}};
    EXPECT_EQ(artworker::SaveLayout(layout, folder_.File("cd.awl")), Outcome::Success);
  }
  [[nodiscard]] ProgramEnd Run(std::vector<std::string> line) const {
    return Program(line, folder_.Path(), folder_.File("r.sqlite")).Wait();
  }
  [[nodiscard]] ProgramEnd Print(const std::vector<std::string>& more) const {
    std::vector<std::string> line{"run", "Artworker", "--layout", "cd.awl", "--json"};
    line.insert(line.end(), more.begin(), more.end());
    return Run(line);
  }

  test::TemporaryDirectory folder_;
};

TEST_F(LayoutProgram, APdfFileIsATargetLikeEveryOther) {
  const ProgramEnd first = Print({});
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_EQ(json::parse(first.out)["lines"][0]["count"], 3);
  EXPECT_EQ(json::parse(first.out)["items"][0]["destination"], folder_.File("cd.pdf"));
  EXPECT_THAT(Content(folder_.File("cd.pdf")), StartsWith("%PDF"));
  folder_.Write("cd.pdf", "alt");
  EXPECT_EQ(Print({}).status, 3) << "nobody answers";
  EXPECT_EQ(Content(folder_.File("cd.pdf")), "alt");
  EXPECT_EQ(Print({"--overwrite", "number"}).status, 0);
  EXPECT_THAT(Content(folder_.File("cd001.pdf")), StartsWith("%PDF"));
  EXPECT_EQ(Print({"--overwrite", "yes", "--dest", "cd.pdf"}).status, 0);
  EXPECT_THAT(Content(folder_.File("cd.pdf")), StartsWith("%PDF"));
  EXPECT_EQ(Print({"--dest-dir", "neu"}).status, 0);
  EXPECT_EQ(Listing(folder_.File("neu")), "cd.pdf");
  const ProgramEnd nowhere = Print({"--dest", "gibtesnicht/cd.pdf"});
  EXPECT_EQ(nowhere.status, 1);
  const ProgramEnd unknown = Print({"--printer", "Gibtesnicht"});
  EXPECT_EQ(unknown.status, 1);
  EXPECT_EQ(json::parse(unknown.out)["items"][0]["code"], -801);
  EXPECT_THAT(json::parse(unknown.out)["remarks"].dump(),
              HasSubstr("Auf den Drucker kann nicht zugegriffen"));
  folder_.Write("lied.pdf", "eine Quelle");
  EXPECT_NE(Print({"--overwrite", "yes", "--dest", "lied.pdf", "lied.pdf"}).status, 0);
  EXPECT_EQ(Content(folder_.File("lied.pdf")), "eine Quelle");
}

TEST_F(LayoutProgram, ARecordAndALayoutOfItReplaceNothingUnasked) {
  const auto unpack = [&](const std::vector<std::string>& more) {
    std::vector<std::string> line{"layout", "unpack", "cd.bin", "neu.awl"};
    line.insert(line.end(), more.begin(), more.end());
    return Run(line);
  };
  EXPECT_EQ(Run({"layout", "pack", "cd.awl", "cd.bin"}).status, 0);
  folder_.Write("neu.awl", "alt");
  EXPECT_THAT(unpack({}).err, HasSubstr("gibt es schon"));
  EXPECT_EQ(unpack({"--overwrite", "immer"}).status, 2);
  EXPECT_EQ(Content(folder_.File("neu.awl")), "alt");
  EXPECT_EQ(unpack({"--overwrite", "number"}).out, folder_.File("neu001.awl") + "\n");
  EXPECT_EQ(unpack({"--overwrite", "yes"}).status, 0);
  EXPECT_EQ(Content(folder_.File("neu.awl")), Content(folder_.File("cd.awl")));
  EXPECT_EQ(Run({"layout", "pack", "cd.awl", "cd.awl", "--overwrite", "yes"}).status, 1) << "its source";
  EXPECT_EQ(Content(folder_.File("neu001.awl")), Content(folder_.File("cd.awl")));
}

TEST_F(LayoutProgram, OnlyThePageToMeasureTheFitIsPrintedToo) {
  EXPECT_EQ(Print({"--set", "ArtPrintWhat=0"}).status, 2);
  EXPECT_EQ(Print({"--set", "ArtPrintWhat=0", "--set", "ArtCalibration=1"}).status, 0);
  EXPECT_EQ(Run({"layout", "fit", "Laser", "--measured", "21,19.5,100,100"}).status, 0);
  const json fit = json::parse(Run({"layout", "fit", "Laser", "--json"}).out);
  EXPECT_EQ(fit["offset"], json::array({-1.0, 0.5}));
  EXPECT_EQ(fit["scale"], json::array({100.0, 100.0}));
  EXPECT_EQ(Run({"layout", "fit", "Laser", "--scale", "300,100"}).status, 2);
  EXPECT_EQ(Run({"layout", "fit", "Laser", "--offset", "1"}).status, 2);
  EXPECT_EQ(json::parse(Run({"layout", "fit", "Laser", "--json"}).out), fit);
}

TEST_F(LayoutProgram, ADocumentThatCannotBeWrittenLeavesTheOldOne) {
  folder_.Write("cd.pdf", "alt");
  for (const rlim_t limit : {rlim_t{3000}, rlim_t{6000}}) {
    Program full({"run", "Artworker", "--layout", "cd.awl", "--json", "--overwrite", "yes"}, folder_.Path(),
                 folder_.File("r.sqlite"), limit);
    const ProgramEnd end = full.Wait();
    EXPECT_EQ(end.status, 1) << end.err;
    EXPECT_LT(json::parse(end.out)["items"][0]["code"], 0);
    EXPECT_EQ(Content(folder_.File("cd.pdf")), "alt");
    EXPECT_EQ(Listing(folder_.Path()), "cd.awl cd.pdf");
  }
  folder_.Write("kaputt.awl", "[sd4 Layout File]\r\nStop!!=x\r\n");
  EXPECT_EQ(Print({"--layout", "kaputt.awl"}).status, 1);
  EXPECT_EQ(Content(folder_.File("cd.pdf")), "alt");
}

TEST_F(LayoutProgram, APrinterGetsADocumentForEachPaperAndMayVanish) {
  const auto script = [&](const std::string& name, const std::string& body) {
    folder_.Write(name, "#!/bin/sh\n" + body);
    std::filesystem::permissions(folder_.File(name), std::filesystem::perms::owner_all);
  };
  script("lpstat", "echo Laser\n");
  script("lpoptions", "echo 'PageSize/Media Size: *A4 A5'\n");
  script("lp", "printf '%s\\n' \"$*\" >> '" + folder_.File("lp.txt") + "'\n");
  const auto print = [&] {
    Program program({"run", "Artworker", "--layout", "cd.awl", "--json", "--printer", "Laser"},
                    folder_.Path(), folder_.File("r.sqlite"), 0,
                    {{"PATH", folder_.Path() + ":/bin:/usr/bin"}});
    return program.Wait();
  };
  EXPECT_EQ(print().status, 0);
  EXPECT_THAT(Content(folder_.File("lp.txt")),
              testing::AllOf(HasSubstr("-d Laser"), HasSubstr("print-scaling=none"), HasSubstr("media=A4")));
  auto layout = artworker::LoadLayout(folder_.File("cd.awl"));
  ASSERT_TRUE(layout);
  layout->Object(artworker::ArtworkObjectId::Inlay).sheet = {148, 210};
  ASSERT_EQ(artworker::SaveLayout(*layout, folder_.File("cd.awl")), Outcome::Success);
  folder_.Write("lp.txt", "");
  EXPECT_EQ(print().status, 0);
  const std::string sent = Content(folder_.File("lp.txt"));
  EXPECT_EQ(std::ranges::count(sent, '\n'), 3) << sent;
  EXPECT_THAT(sent, HasSubstr("media=A5"));
  script("lp", "case \"$*\" in *media=A5*) exit 1;; esac\n");
  const json half = json::parse(print().out);
  EXPECT_EQ(half["items"][0]["code"], -801);
  EXPECT_EQ(half["lines"][0]["count"], 1) << "what was taken before has been printed";
  script("lp", "exit 1\n");
  EXPECT_EQ(json::parse(print().out)["items"][0]["code"], -801);
  script("lpoptions", "echo 'PageSize/Media Size: *Letter'\n");
  EXPECT_EQ(json::parse(print().out)["items"][0]["code"], -5) << "nobody says that other paper will do";
}

TEST_F(LayoutProgram, FieldsAreFilledFromTheFilesThatAreGiven) {
  const auto picture = [&](const std::vector<std::string>& files) {
    std::vector<std::string> line{"--png", ".", "--set", "ArtPrintWhat=2", "--overwrite", "yes"};
    line.insert(line.end(), files.begin(), files.end());
    const ProgramEnd end = Print(line);
    EXPECT_EQ(end.status, 0) << end.err;
    return Content(folder_.File("inlay.png"));
  };
  const std::string unfilled = picture({});
  std::filesystem::copy_file(test::DataPath("audio/ogg_vorbis_mono_11025.ogg"), folder_.File("lied.ogg"));
  EXPECT_EQ(Run({"attributes", "--set", "WM/AlbumTitle=Abendlieder", "lied.ogg"}).status, 0);
  const std::string filled = picture({"lied.ogg"});
  EXPECT_NE(filled, unfilled);
  // What is there stays, unless something else was asked for.
  const ProgramEnd refused = Print({"--png", ".", "--set", "ArtPrintWhat=2"});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("inlay.png\" gibt es schon."));
  EXPECT_EQ(Print({"--png", ".", "--set", "ArtPrintWhat=2", "--overwrite", "number"}).status, 0);
  EXPECT_TRUE(Content(folder_.File("inlay001.png")) == unfilled);
  EXPECT_TRUE(Content(folder_.File("inlay.png")) == filled);
  EXPECT_EQ(Print({"--disc-job", "Nirgends"}).status, 2);
}

TEST(DiscFacts, ComeFromTheBurnerOfTheSameTitleElseFromTheSourcesThemselves) {
  const auto burner = [](const std::string& title, const std::string& song) {
    Job job;
    job.title = title;
    job.filter = FilterId::CdBurner;
    job.parameters = FindModule(FilterId::CdBurner)->create();
    dynamic_cast<disc::BurnParameters&>(*job.parameters).title = "CD " + title;
    job.sourceDrive = kListModeDrive;
    job.files.Append({.path = song, .duration = 65});
    return job;
  };
  Job own;
  own.title = "Zwei";
  own.sourceDrive = kListModeDrive;
  for (const char* song : {"/fehlt/01 - Chor - Abendlied.wav", "/fehlt/02 - Chor - Morgenlied.wav"})
    own.files.Append({.path = song});
  const Job one = burner("Eins", "/fehlt/eins.wav");
  const Job two = burner("Zwei", "/fehlt/zwei.wav");
  const std::vector<const Job*> all{&own, &one, &two};
  const auto facts = FactsOfDisc(own, all, DiscReading::AtHand);
  EXPECT_EQ(facts.title, "CD Zwei");
  ASSERT_EQ(facts.tracks.size(), 1U);
  EXPECT_EQ(facts.tracks[0].title, "zwei");
  EXPECT_EQ(facts.tracks[0].time.count(), 65);
  own.title = "Drei";
  EXPECT_EQ(FactsOfDisc(own, all, DiscReading::AtHand).title, "CD Eins");
  const auto alone = FactsOfDisc(own, {}, DiscReading::AtHand);
  ASSERT_EQ(alone.tracks.size(), 2U);
  EXPECT_EQ(alone.tracks[1].title, "Morgenlied");
  EXPECT_EQ(alone.performer, "Chor") << "what all tracks say goes for the disc";
  own.files.Append({.path = test::DataPath("audio/ogg_vorbis_mono_11025.ogg")});
  EXPECT_EQ(FactsOfDisc(own, {}, DiscReading::AtHand).tracks.back().time.count(), 1) << "measured";
  own.files.Clear();
  EXPECT_FALSE(FactsOfDisc(own, {}, DiscReading::AtHand).Known());
}

}  // namespace
}  // namespace ts5::batch
