// The XML converter as a filter, StvXML and what a score file cannot hold.
#include "converters/xml_converter.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <set>

#include "converters/score_formats.h"
#include "converters/stvx.h"
#include "converters/xml_properties.h"
#include "frame/run_support.h"
#include "platform/files/disk_calls.h"
#include "score/random_score.h"
#include "score/score_properties.h"
#include "score/score_reader.h"
#include "score_text.h"
#include "support/child.h"
#include "support/matchers.h"

namespace ts5::converters {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

TEST(StvXml, HoldsScoreFilesToTheByte) {
  std::vector<Bytes> files;
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("../../demo"))) {
    if (entry.path().extension() == ".stv")
      files.push_back(DataFile("../../demo/" + entry.path().filename().string()));
  }
  ASSERT_GE(files.size(), 12U);
  for (unsigned seed = 0; seed < 100; ++seed) files.push_back(WriteScore(RandomScore(seed)));
  // And with bytes that only the notation program knows.
  Bytes foreign = files[0];
  for (std::size_t i = 40; i < foreign.size(); i += 3) {
    const std::uint8_t before = foreign[i];
    foreign[i] ^= 0x40;
    if (!ReadScore(foreign)) foreign[i] = before;
  }
  files.push_back(foreign);
  for (const Bytes& file : files) {
    const auto document = ReadScore(file);
    ASSERT_THAT(document, IsOk());
    const auto xml = WriteStvXml(*document);
    ASSERT_THAT(xml, IsOk());
    const auto again = ReadStvXml(*xml);
    ASSERT_TRUE(again);
    EXPECT_EQ(WriteScore(again->document), file);
    EXPECT_EQ(WriteStvXml(again->document), xml);
  }
}

TEST(StvXml, RefusesWhatNoScoreCanHold) {
  const auto score = [](std::string_view item, std::string_view staff = "") {
    return Format(
        "<stvx version='1'><info><layout name='A'/></info><system><staff %s><voice><bar/>%s</voice></staff>"
        "</system></stvx>",
        staff, item);
  };
  EXPECT_TRUE(ReadStvXml(BytesOf(score("<chord><note/></chord>"))));
  for (const std::string& text :
       {score("<chord/>"), score("<rest><note/></rest>"), score("<chord><note position='64'/></chord>"),
        score("<rest duration='10'/>"), score("<key sharps='8'/>"), score("<rest dots='x'/>"),
        score("<rest style='\\q'/>"), score("<rest record='0G'/>"), score("<object kind='3'/>"),
        score("<rest/>", "layout='1'"), score("<nonsense/>"), score("<rest><text offset='1/0'/></rest>")}) {
    const auto read = ReadStvXml(BytesOf(text));
    ASSERT_FALSE(read) << text;
    EXPECT_EQ(read.error().code, Outcome::SourceFailed) << text;
  }
  EXPECT_EQ(ReadStvXml(BytesOf(score("<chord/>"))).error().bar, 1);
  EXPECT_EQ(ReadStvXml(BytesOf(score("<chord/>"))).error().staff, 0);
  EXPECT_EQ(ReadStvXml(BytesOf("<stvx version='2'/>")).error().code, Outcome::WrongFormat);
  std::string deep = "<rest>";
  for (int i = 0; i < 100; ++i) deep += "<group>";
  for (int i = 0; i < 100; ++i) deep += "</group>";
  EXPECT_FALSE(ReadStvXml(BytesOf(score(deep + "</rest>"))));
  EXPECT_EQ(ReadStvXml(BytesOf(score("<rest/>")), [] { return true; }).error().code, Outcome::Cancelled);
}

TEST(StvXml, SaysWhichElementHasNoPlaceInTheFile) {
  ScoreDocument score = RandomScore(1);
  score.parts = {{.name = "Chor", .diatonic = 0}};
  const std::size_t size = WriteStvXml(score)->size();
  std::set<std::int32_t> codes;
  for (std::size_t most = 30; most < size; most += most < 2000 ? 10 : 997)
    codes.insert(Code(WriteStvXml(score, {}, most).error()));
  EXPECT_THAT(codes, ElementsAre(-1405, -1403, -1402, -1401));
  EXPECT_THAT(WriteStvXml(score, {}, size - 1), FailsWith(Outcome::XmlNotWritten));
  EXPECT_THAT(WriteStvXml(score, {}, size), IsOk());
  // What the reader would refuse is not written.
  score.parts[0].diatonic = 101;
  EXPECT_THAT(WriteStvXml(score), FailsWith(Outcome::XmlInfoNotWritten));
  score.parts.clear();
  score.staves.clear();
  EXPECT_THAT(WriteStvXml(score), FailsWith(Outcome::XmlContradiction));
}

class XmlConverterRun : public testing::Test {
 protected:
  RunResult Convert(const std::vector<std::string>& files, const std::string& destination = {},
                    std::int32_t objects = 127) {
    Job job = ListJob(files, module_);
    static_cast<XmlConverterParameters&>(*job.parameters).objects = objects;
    job.destinationName = destination;
    return RunJob(job, module_);
  }
  std::string Music(const std::string& name) {
    const std::string content = Content(place_.File(name));
    const auto score = ReadAnyScore(BytesOf(content));
    return score ? MusicText(score->document) : name + " is no score";
  }

  TemporaryDirectory place_;
  FilterModule module_ = XmlConverterModule();
};

TEST_F(XmlConverterRun, TellsWhatBecameOfEachFile) {
  const std::string note =
      "<note><pitch><step>%s</step><octave>4</octave></pitch><duration>1</duration></note>";
  const std::string score =
      "<score-partwise><part-list><score-part id='a'/></part-list><part id='a'><measure>%s"
      "</measure><measure>%s</measure></part></score-partwise>";
  std::filesystem::create_directory(place_.File("ordner.xml"));
  const RunResult result =
      Convert({place_.Write("gut.xml", Format(score, Format(note, "C"), Format(note, "D"))),
               place_.Write("kaputt.xml", Format(score, Format(note, "C"), Format(note, "X"))),
               place_.Write("offen.xml", "<score-partwise>"), place_.Write("text.xml", "Text"),
               place_.File("fehlt.xml"), place_.File("ordner.xml")});
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  EXPECT_THAT(codes, ElementsAre(0, -300, -300, -104, -103, -103));
  EXPECT_EQ(TitleText(result), "Ergebnisse der XML-Konvertierung");
  EXPECT_THAT(result.remarks,
              ElementsAre("Es trat ein Fehler in der Quelldatei auf (Takt 2 / Zeile 1).",
                          "Es trat ein Fehler in der Quelldatei auf.",
                          "Die Quelle hat ein ungültiges Dateiformat.", "Fehler beim Öffnen einer Datei."));
  EXPECT_EQ(result.items[1].remark, result.remarks[0]);
  EXPECT_EQ(Listing(place_.Path()), "gut.stvx gut.xml kaputt.xml offen.xml ordner.xml text.xml");
}

TEST_F(XmlConverterRun, GoesFromEveryFormatToEveryFormat) {
  const std::string source = DataPath("musicxml/osmd_OSMD_function_test_expressions.musicxml");
  std::filesystem::copy(source, place_.File("a.musicxml"));
  const std::string music = Music("a.musicxml");
  std::string from = place_.File("a.musicxml");
  int number = 0;
  for (const char* to : {"stvx", "xml", "mxl", "stvx", "musicxml", "stvx"}) {
    const std::string name = Format("%d.%s", ++number, to);
    EXPECT_EQ(Convert({from}, place_.File(name)).items.at(0).code, 0) << name;
    EXPECT_EQ(Music(name), music) << name;
    from = place_.File(name);
  }
  EXPECT_EQ(Content(place_.File("4.stvx")), Content(place_.File("6.stvx")));
  // By itself a MusicXML file becomes StvXML, and that MusicXML.
  EXPECT_EQ(Convert({place_.File("a.musicxml")}).items.at(0).destination, place_.File("a.stvx"));
  EXPECT_EQ(Convert({place_.File("1.stvx")}).items.at(0).destination, place_.File("1.xml"));
  // What is not to be taken along is gone in both directions.
  for (const char* to : {"m.stvx", "m.xml"}) {
    EXPECT_EQ(Convert({place_.File("a.musicxml")}, place_.File(to), 0).items.at(0).code, 0);
    EXPECT_THAT(Music(to), Not(HasSubstr("{3 'p'}"))) << to;
    EXPECT_THAT(Music(to), HasSubstr("endings")) << to;
  }
}

TEST_F(XmlConverterRun, ReportsWhatAScoreFileCannotHold) {
  const std::string source = place_.Write(
      "a.xml",
      "<score-partwise><part-list><score-part "
      "id='a'><part-name>Violine</part-name></score-part></part-list><part id='a'>"
      "<measure "
      "number='12'><note><pitch><step>C</step><octave>4</octave></pitch><duration>1</duration><notations>"
      "<arpeggiate/></notations></note><note><pitch><step>C</step><octave>4</octave></pitch><duration>1</"
      "duration><notations>"
      "<arpeggiate/></notations></note></measure></part></score-partwise>");
  const RunResult kept = Convert({source}, place_.File("a.stvx"));
  EXPECT_THAT(kept.items.at(0).losses.value(), IsEmpty());
  EXPECT_THAT(kept.remarks, IsEmpty());
  const RunResult lost = Convert({source}, place_.File("a.stv"));
  EXPECT_THAT(lost.items.at(0).losses.value(),
              ElementsAre(ItemLoss{"eigene Taktnummern", "", "", 1, "eigene Taktnummern"},
                          ItemLoss{"Zeichen (arpeggiate)", "12", "Violine", 2,
                                   "Takt 12, Violine: 2 x Zeichen (arpeggiate)"}));
  EXPECT_THAT(lost.remarks,
              testing::Contains("a.xml: nicht übertragen: Takt 12, Violine: 2 x Zeichen (arpeggiate)"));
  // Where nothing comes to be, nothing is said of losses.
  struct : DiskCalls {
    bool atTheEnd = false;
    ssize_t Write(int file, ByteView bytes, std::uint64_t offset) override {
      errno = ENOSPC;
      return atTheEnd ? DiskCalls::Write(file, bytes, offset) : -1;
    }
    int Flush(int /*file*/) override {
      errno = ENOSPC;
      return -1;
    }
    int FlushFileSystem(const std::string& /*directory*/) override { return Flush(0); }
  } full;
  for (const bool atTheEnd : {false, true}) {
    full.atTheEnd = atTheEnd;
    const OtherDiskCalls other(full);
    const RunResult failed = Convert({source}, place_.File("b.stv"));
    EXPECT_EQ(failed.items.at(0).code, -101);
    EXPECT_FALSE(failed.items.at(0).losses);
    EXPECT_THAT(failed.remarks, ElementsAre("In eine Datei konnte nicht geschrieben werden."));
  }
}

TEST(XmlProperties, ShowWhatIsInAScore) {
  const auto properties = ReadXmlProperties(DataPath("musicxml/openscore_Philp_Bye-and-Bye.mxl"));
  ASSERT_THAT(properties, IsOk());
  EXPECT_EQ(properties->title, "MusicXML-Dateieigenschaften");
  std::string rows;
  for (const PropertyRow& row : properties->rows) rows += row.label + "=" + row.value + "\n";
  for (const char* row :
       {"Dateiformat=MusicXML, gepackt", "Bye-and-Bye\nKomponist=Elizabeth Philp", "2\tPiano (Notenzeilen: 2",
        "Takte=20", "Taktarten=4/4", "Tempo (Viertel je Minute)=114", "Spieldauer ohne Wiederholungen=0:42"})
    EXPECT_THAT(rows, HasSubstr(row));
  // The same piece as a score file has the same music.
  test::TemporaryDirectory place;
  const std::string content = Content(DataPath("musicxml/openscore_Philp_Bye-and-Bye.mxl"));
  const auto score = ReadAnyScore(AsBytes(content));
  ASSERT_TRUE(score);
  const auto other = ReadScoreProperties(place.Write("a.stv", AsText(WriteScore(score->document))));
  ASSERT_THAT(other, IsOk());
  const auto row = [](const std::vector<PropertyRow>& all, std::string_view label) {
    const auto found = std::ranges::find(all, label, &PropertyRow::label);
    return found == all.end() ? std::string() : found->value;
  };
  for (const char* label : {"Takte", "Tonarten", "Taktarten", "Spieldauer ohne Wiederholungen"})
    EXPECT_EQ(row(other->rows, label), row(properties->rows, label)) << label;
  EXPECT_EQ(row(other->rows, "Tonarten"), "C-Dur/a-Moll");
  EXPECT_THAT(ReadXmlProperties("/nowhere.xml"), FailsWith(Outcome::SourceNotOpened));
  EXPECT_THAT(ReadXmlProperties(DataPath("LICENCES.md")), FailsWith(Outcome::WrongFormat));
}

}  // namespace
}  // namespace ts5::converters
