// MusicXML into the document and back, on real files and on what each element means.
#include <gmock/gmock.h>

#include <filesystem>

#include "converters/musicxml_reader.h"
#include "converters/musicxml_writer.h"
#include "converters/mxl_container.h"
#include "converters/score_formats.h"
#include "converters/stvx.h"
#include "score/score_reader.h"
#include "score/score_writer.h"
#include "score_text.h"
#include "support/matchers.h"

namespace ts5::converters {
namespace {

using namespace test;

std::vector<std::string> Files() {
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("musicxml")))
    files.push_back("musicxml/" + entry.path().filename().string());
  std::ranges::sort(files);
  return files;
}

Bytes BytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

std::string Report(const LossReport& losses) {
  std::string text;
  for (const ScoreLoss& loss : losses.Rows()) text += losses.Line(loss) + "\n";
  return text;
}

TEST(MusicXml, OfRealFilesComesBackTheSame) {
  ASSERT_GE(Files().size(), 16U);
  for (const std::string& name : Files()) {
    auto score = ReadMusicXml(DataFile(name));
    ASSERT_TRUE(score) << name;
    const std::string music = MusicText(score->document);

    LossReport losses;
    const auto xml = WriteMusicXml(score->document, losses);
    ASSERT_THAT(xml, IsOk()) << name;
    const auto again = ReadMusicXml(*xml);
    ASSERT_TRUE(again) << name;
    EXPECT_EQ(MusicText(again->document), music) << name;
    EXPECT_EQ(ClefText(again->document), ClefText(score->document)) << name;
    EXPECT_TRUE(losses.Empty()) << name << "\n" << Report(losses);
    EXPECT_TRUE(again->losses.Empty()) << name << "\n" << Report(again->losses);
    // Written once more it is the same to the byte.
    EXPECT_EQ(WriteMusicXml(again->document, losses), xml) << name;

    const auto stvx = WriteStvXml(score->document);
    ASSERT_THAT(stvx, IsOk()) << name;
    const auto own = ReadStvXml(*stvx);
    ASSERT_TRUE(own) << name;
    EXPECT_EQ(WriteStvXml(own->document), stvx) << name;
    EXPECT_EQ(MusicText(own->document), music) << name;
    EXPECT_EQ(WriteScore(own->document), WriteScore(score->document)) << name;
  }
}

// Through a score file the notes are the same; what else is not is in the report.
TEST(MusicXml, ThroughAScoreFileKeepsItsNotes) {
  for (const std::string& name : Files()) {
    auto score = ReadMusicXml(DataFile(name));
    ASSERT_TRUE(score) << name;
    LossReport losses;
    const auto file = WriteAnyScore(score->document, ScoreFormat::Score, losses);
    ASSERT_THAT(file, IsOk()) << name;
    const auto read = ReadScore(*file);
    ASSERT_THAT(read, IsOk()) << name;
    EXPECT_EQ(WriteScore(*read), *file);
    const ScoreMusic before = ReadMusic(score->document);
    const ScoreMusic after = ReadMusic(*read);
    ASSERT_EQ(after.bars.size(), before.bars.size()) << name;
    for (std::size_t staff = 0; staff < before.voices.size(); ++staff) {
      for (std::size_t v = 0; v < before.voices[staff].size(); ++v) {
        const auto& had = before.voices[staff][v];
        const auto& has = after.voices[staff][v];
        ASSERT_EQ(has.size(), had.size()) << name;
        for (std::size_t i = 0; i < had.size(); ++i) {
          EXPECT_EQ(SoundingKeys(has[i], read->staves[staff]),
                    SoundingKeys(had[i], score->document.staves[staff]));
          EXPECT_EQ(has[i].start, had[i].start) << name << Report(losses);
        }
      }
    }
  }
}

TEST(ScoreFileLosses, TellWhatAPartAndItsSignsLose) {
  ScoreDocument score;
  score.staves.push_back({.name = "Klavier"});
  score.parts = {{.name = "Klavier", .abbreviation = "Kl.", .instrument = "Hammerflügel", .group = "Solo"}};
  score.bars = {{.number = "1"}, {.number = "2", .newPage = true}};
  ScoreItem note = ChordItem(0, {ScoreNote{}});
  note.stem = 'u';
  note.drawings.push_back(TextDrawing("p"));
  note.drawings.back().placement = 1;
  score.systems.push_back({.staves = {{.time = {4, 2}, .voices = {{note, BarItem(), note, BarItem()}}}}});
  LossReport losses;
  ReportScoreFileLosses(score, losses);
  EXPECT_EQ(Report(losses),
            "Seitengestaltung\n2 x Halsrichtung\n2 x Lage über oder unter der Zeile\n"
            "Klammer einer Stimmengruppe (Solo)\nDarstellung eines Namens (Kl.)\n"
            "Name eines Instruments (Hammerflügel)\n");
}

// --- what each element means

std::string Partwise(std::string_view measures, std::string_view part = "") {
  return Format(
      "<?xml version='1.0'?><score-partwise><part-list><score-part "
      "id='P1'><part-name>A</part-name>%s</score-part>"
      "</part-list><part id='P1'>%s</part></score-partwise>",
      part, measures);
}
std::string Measure(std::string_view content) {
  return Format("<measure number='1'><attributes><divisions>4</divisions></attributes>%s</measure>", content);
}
std::string Note(std::string_view pitch, int duration, std::string_view more = "",
                 std::string_view before = "") {
  return Format("<note>%s<pitch><step>%s</step><octave>4</octave></pitch><duration>%d</duration>%s</note>",
                before, pitch, duration, more);
}

std::string Lines(const ScoreDocument& document) {
  // Without the head: bars, tempos and the staff's name.
  const std::string text = MusicText(document);
  return text.substr(text.find("staff A 0\n") + 10);
}

TEST(MusicXmlReader, KnowsWhatElementsMean) {
  const std::string chord = "<chord/>";
  struct Case {
    const char* what;
    std::string content;
    std::string music;
  };
  const Case cases[] = {
      {"a chord, low to high", Measure(Note("E", 4) + Note("C", 4, "", chord)), "0/1 +1/4 60 64 ties 00\n"},
      {"a tie", Measure(Note("C", 4, "<tie type='start'/>") + Note("C", 4, "<tie type='stop'/>")),
       "0/1 +1/4 60 ties 01\n1/4 +1/4 60 ties 10\n"},
      {"a tie without an end", Measure(Note("C", 4, "<tie type='start'/>") + Note("D", 4)),
       "0/1 +1/4 60 ties 00\n1/4 +1/4 62 ties 00\n"},
      {"one tied note of two",
       Measure(Note("C", 4, "<tie type='start'/>") + Note("E", 4, "", chord) +
               Note("C", 4, "<tie type='stop'/>")),
       "0/1 +1/4 60 64 ties 00\n1/4 +1/4 60 ties 00\n"},
      {"voices side by side",
       Measure(Note("C", 4, "<voice>1</voice>") + "<backup><duration>4</duration></backup>" +
               Note("D", 8, "<voice>2</voice>")),
       "0/1 +1/4 60 ties 00\n0/1 +1/2 62 ties 00\n"},
      {"a missing voice number",
       Measure(Note("C", 8) + "<backup><duration>4</duration></backup>" + Note("D", 4)),
       "0/1 +1/2 60 ties 00\n1/4 +1/4 62 ties 00\n"},
      {"a rounded triplet",
       Measure(Note("C", 1,
                    "<type>eighth</type><time-modification><actual-notes>3</actual-notes><normal-notes>2"
                    "</normal-notes></time-modification>") +
               Note("D", 1,
                    "<type>eighth</type><time-modification><actual-notes>3</actual-notes><normal-notes>2"
                    "</normal-notes></time-modification>") +
               Note("E", 2,
                    "<type>eighth</type><time-modification><actual-notes>3</actual-notes><normal-notes>2"
                    "</normal-notes></time-modification>") +
               Note("F", 4)),
       "0/1 +1/12 60 ties 00\n1/12 +1/12 62 ties 00\n1/6 +1/12 64 ties 00\n1/4 +1/4 65 ties 00\n"},
      {"a length that no note value has", Measure(Note("C", 5)),
       "0/1 +1/4 60 ties 01\n1/4 +1/16 60 ties 10\n"},
      {"a grace note",
       Measure("<note><grace slash='yes'/><pitch><step>D</step><octave>4</octave></pitch></note>" +
               Note("C", 4)),
       "0/1 +0/1 grace 62 ties 00\n0/1 +1/4 60 ties 00\n"},
      {"articulations",
       Measure(Note("C", 4,
                    "<notations><articulations><staccato/><accent/><scoop/></articulations></notations>")),
       "0/1 +1/4 60 ties 00 art 1 {3 'Z' accent=} {3 scoop=}\n"},
      {"a slur and a hairpin",
       Measure("<direction><direction-type><wedge type='crescendo'/></direction-type></direction>" +
               Note("C", 4, "<notations><slur type='start'/></notations>") + Note("D", 4) +
               Note("E", 4, "<notations><slur type='stop'/></notations>") +
               "<direction><direction-type><wedge type='stop'/></direction-type></direction>"),
       "0/1 +1/4 60 ties 00 {9 2} {11 2}\n1/4 +1/4 62 ties 00\n1/2 +1/4 64 ties 00\n"},
      {"dynamics and words",
       Measure("<direction><direction-type><dynamics><mf/></dynamics></direction-type></direction>" +
               Note("C", 4) + "<direction><direction-type><words>f</words></direction-type></direction>" +
               Note("D", 4)),
       "0/1 +1/4 60 ties 00 {3 'j'}\n1/4 +1/4 62 ties 00 {3 'f '}\n"},
      {"lyrics",
       Measure(Note(
           "C", 4, "<lyric number='2'><text>zwei</text></lyric><lyric number='1'><text>eins</text></lyric>")),
       "0/1 +1/4 60 ties 00 \"zwei\" \"eins\"\n"},
      {"a hidden voice", Measure("<forward><duration>4</duration></forward>" + Note("C", 4)),
       "1/4 +1/4 60 ties 00\n"},
      {"a microtone",
       Measure("<note><pitch><step>C</step><alter>0.5</alter><octave>4</octave></pitch><duration>4</"
               "duration></note>"),
       "0/1 +1/4 60 ties 00\n"},
      {"an altered note",
       Measure("<attributes><key><fifths>2</fifths></key></attributes>" + Note("C", 4) +
               "<note><pitch><step>F</step><alter>1</alter><octave>4</octave></pitch><duration>4</duration></"
               "note>"),
       "0/1 +1/4 60 ties 00\n1/4 +1/4 66 ties 00\n"},
      {"a change of divisions",
       Measure(Note("C", 4) + "<attributes><divisions>480</divisions></attributes>" + Note("D", 480)),
       "0/1 +1/4 60 ties 00\n1/4 +1/4 62 ties 00\n"},
      {"whole bars of rest", Measure("<note><rest measure='yes'/><duration>16</duration></note>"),
       "0/1 +1/1 rest\n"},
      {"a cue note", Measure(Note("C", 4, "", "<cue/>")), "0/1 +1/4 60 ties 00\n"},
  };
  for (const Case& row : cases) {
    const auto score = ReadMusicXml(BytesOf(Partwise(row.content)));
    ASSERT_TRUE(score) << row.what;
    EXPECT_EQ(Lines(score->document), row.music) << row.what;
    LossReport losses;
    const auto again = ReadMusicXml(WriteMusicXml(score->document, losses).value_or(Bytes()));
    ASSERT_TRUE(again) << row.what;
    EXPECT_EQ(Lines(again->document), row.music) << row.what;
  }
}

TEST(MusicXmlWriter, GivesAnArpeggioToEachNoteAndOtherSignsToOne) {
  const std::string chord = "<notations><arpeggiate/><fermata/></notations>";
  const auto score =
      ReadMusicXml(BytesOf(Partwise(Measure(Note("C", 4, chord) + Note("E", 4, "", "<chord/>")))));
  ASSERT_TRUE(score);
  LossReport losses;
  const Bytes file = WriteMusicXml(score->document, losses).value_or(Bytes());
  const std::string_view xml = AsText(file);
  const auto count = [&xml](std::string_view what) {
    std::size_t found = 0;
    for (std::size_t at = xml.find(what); at != std::string::npos; at = xml.find(what, at + 1)) ++found;
    return found;
  };
  EXPECT_EQ(count("<note>"), 2U);
  EXPECT_EQ(count("<arpeggiate"), 2U);
  EXPECT_EQ(count("<fermata"), 1U);
}

TEST(MusicXmlWriter, PartsHaveChannelsOfTheirOwnAndLeaveTheDrumsTheirs) {
  std::string list;
  std::string parts;
  for (int i = 1; i <= 16; ++i) {
    list += Format("<score-part id='P%i'/>", i);
    parts += Format("<part id='P%i'>%s</part>", i, Measure(Note("C", 4)));
  }
  const auto score = ReadMusicXml(
      BytesOf("<score-partwise><part-list>" + list + "</part-list>" + parts + "</score-partwise>"));
  ASSERT_TRUE(score);
  LossReport losses;
  const Bytes file = WriteMusicXml(score->document, losses).value_or(Bytes());
  const std::string_view xml = AsText(file);
  std::string channels;
  constexpr std::string_view kOpen = "<midi-channel>";
  for (std::size_t at = xml.find(kOpen); at != std::string::npos; at = xml.find(kOpen, at + 1)) {
    const std::size_t begin = at + kOpen.size();
    channels += std::string(xml.substr(begin, xml.find('<', begin) - begin)) + " ";
  }
  EXPECT_EQ(channels, "1 2 3 4 5 6 7 8 9 11 12 13 14 15 16 1 ");
}

TEST(MusicXmlReader, KnowsBarsRepeatsAndJumps) {
  const auto bar = [](std::string_view number, std::string_view content) {
    return Format("<measure number='%s'>%s</measure>", number, content);
  };
  const std::string q = Note("C", 1);
  const std::string four = q + q + q + q;
  struct Case {
    const char* what;
    std::string measures;
    const char* bars;
  };
  const Case cases[] = {
      {"an upbeat", bar("0", q) + bar("1", four), "bar 0 1/4 4/4\nbar 1 1/1 4/4\n"},
      {"endings",
       bar("1", "<barline location='left'><repeat direction='forward'/></barline>" + four) +
           bar("2", "<barline location='left'><ending number='1' type='start'/></barline>" + four +
                        "<barline><ending number='1' type='stop'/><repeat direction='backward'/></barline>") +
           bar("3", "<barline location='left'><ending number='2' type='start'/></barline>" + four +
                        "<barline><ending number='2' type='discontinue'/></barline>"),
       "bar 1 1/1 4/4 |:\nbar 2 1/1 4/4 :| line 3 endings 2\nbar 3 1/1 4/4 endings 4\n"},
      {"jumps",
       bar("1", "<direction><direction-type><segno/></direction-type><sound segno='s'/></direction>" + four) +
           bar("2", four + "<direction><direction-type><words>D.S. al Fine</words></direction-type><sound "
                           "dalsegno='s'/>"
                           "</direction>"),
       "bar 1 1/1 4/4 jumps 1\nbar 2 1/1 4/4 jumps 20\n"},
      {"words at the end of a bar stay in it",
       bar("1", four + "<direction><direction-type><words>Fine</words></direction-type><sound "
                       "fine='yes'/></direction>") +
           bar("2", four + "<direction><direction-type><words>D.C.</words></direction-type><sound "
                           "dacapo='yes'/></direction>") +
           bar("3", four),
       "bar 1 1/1 4/4 jumps 8\nbar 2 1/1 4/4 jumps 10\nbar 3 1/1 4/4\n"},
      {"unequal measures are as long as the longest", bar("1", four + q) + bar("2", q),
       "bar 1 5/4 4/4\nbar 2 1/4 4/4\n"},
      {"empty measures", bar("1", "") + bar("2", four), "bar 1 1/1 4/4\nbar 2 1/1 4/4\n"},
      {"tempos",
       bar("1",
           "<direction><direction-type><metronome><beat-unit>eighth</beat-unit><per-minute>ca. 90"
           "</per-minute></metronome></direction-type></direction>" +
               four),
       "bar 1 1/1 4/4\ntempo 0/1 45.00\n"},
  };
  for (const Case& row : cases) {
    const auto score = ReadMusicXml(BytesOf(Partwise(row.measures)));
    ASSERT_TRUE(score) << row.what;
    const std::string text = MusicText(score->document);
    EXPECT_EQ(text.substr(0, text.find("staff")), row.bars) << row.what;
    LossReport losses;
    const auto again = ReadMusicXml(*WriteMusicXml(score->document, losses));
    EXPECT_EQ(MusicText(again->document), text) << row.what;
  }
}

TEST(MusicXmlReader, TakesTimewisePercussionAndTransposition) {
  const auto timewise = ReadMusicXml(BytesOf(
      "<score-timewise><part-list><score-part id='a'><part-name>A</part-name></score-part><score-part id='b'>"
      "<part-name>B</part-name></score-part></part-list><measure number='1'><part id='a'>" +
      Note("C", 4) + "</part></measure><measure number='2'><part id='b'>" + Note("D", 4) +
      "</part></measure></score-timewise>"));
  ASSERT_TRUE(timewise);
  EXPECT_EQ(MusicText(timewise->document),
            "bar 1 1/1 4/4\nbar 2 1/1 4/4\nstaff A 0\n0/1 +1/1 60 ties 00\nstaff B 0\n1/1 +1/1 62 ties 00\n");

  const std::string drum =
      "<note><unpitched><display-step>G</display-step><display-octave>5</display-octave></unpitched>"
      "<duration>4</duration><instrument id='%s'/></note>";
  const auto drums = ReadMusicXml(BytesOf(Partwise(
      Measure(Format(drum, "h") + Format(drum, "o")),
      "<score-instrument id='h'/><score-instrument id='o'/><midi-instrument "
      "id='h'><midi-unpitched>43</midi-unpitched>"
      "</midi-instrument><midi-instrument id='o'><midi-unpitched>47</midi-unpitched></midi-instrument>")));
  ASSERT_TRUE(drums);
  EXPECT_EQ(Lines(drums->document), "0/1 +1/4 42 ties 00\n1/4 +1/4 46 ties 00\n");
  EXPECT_TRUE(drums->document.staves[0].usesNoteMap);

  const auto horn = ReadMusicXml(BytesOf(Partwise(Measure(
      "<attributes><transpose><diatonic>-4</diatonic><chromatic>-7</chromatic></transpose></attributes>" +
      Note("C", 4)))));
  ASSERT_TRUE(horn);
  EXPECT_EQ(Lines(horn->document), "0/1 +1/4 53 ties 00\n");
}

TEST(MusicXmlReader, ReadsEveryEncoding) {
  const std::string body =
      Partwise(Measure(Note("C", 4, "<lyric><text>T\xC3\xB6ne</text></lyric>"))).substr(21);
  const auto read = [](const Bytes& file) {
    const auto score = ReadMusicXml(file);
    return score ? score->document.systems[0].staves[0].voices[0][1].lyrics[0].syllable : std::string("?");
  };
  const auto declared = [&](std::string_view encoding, std::string text) {
    return BytesOf(Format("<?xml version='1.0' encoding='%s'?>", encoding) + text);
  };
  std::string latin = body;
  latin.replace(latin.find("\xC3\xB6"), 2, "\xF6");
  Bytes utf16{0xFF, 0xFE};
  Bytes utf32{0, 0, 0xFE, 0xFF};
  for (const char16_t c : Utf16FromUtf8(body)) {
    utf16.insert(utf16.end(), {static_cast<std::uint8_t>(c & 255), static_cast<std::uint8_t>(c >> 8)});
    utf32.insert(utf32.end(), {0, 0, static_cast<std::uint8_t>(c >> 8), static_cast<std::uint8_t>(c & 255)});
  }
  EXPECT_EQ(read(declared("UTF-8", body)), "T\xC3\xB6ne");
  EXPECT_EQ(read(declared("ISO-8859-1", latin)), "T\xC3\xB6ne");
  EXPECT_EQ(read(declared("UTF-16", body)), "T\xC3\xB6ne");  // which it is not
  EXPECT_EQ(read(declared("windows-1252", latin)), "T\xC3\xB6ne");
  EXPECT_EQ(read(BytesOf("\xEF\xBB\xBF" + body)), "T\xC3\xB6ne");
  EXPECT_EQ(read(utf16), "T\xC3\xB6ne");
  EXPECT_EQ(read(utf32), "T\xC3\xB6ne");
  EXPECT_FALSE(ReadMusicXml(declared("no-such-thing", body)));
}

// --- damage and malice

TEST(MusicXmlReader, TellsWhereAFileIsDamaged) {
  const std::string good = "<measure number='1'>" + Note("C", 4) + "</measure>";
  struct Case {
    const char* what;
    std::string measures;
    int bar;
    int staff;
  };
  const Case cases[] = {
      {"no step", good + "<measure>" + Note("H", 4) + "</measure>", 1, 0},
      {"no duration", "<measure><note><rest/></note></measure>", 0, 0},
      {"a duration below zero", good + good + "<measure>" + Note("C", -4) + "</measure>", 2, 0},
      {"no divisions", "<measure><attributes><divisions>0</divisions></attributes></measure>", 0, 0},
      {"words for divisions", "<measure><attributes><divisions>vier</divisions></attributes></measure>", 0,
       0},
      {"a note that never ends", "<measure>" + Note("C", 1'000'000'000) + "</measure>", 0, 0},
      {"the second staff", "<measure>" + Note("H", 4, "<staff>2</staff>") + "</measure>", 0, 1},
      {"broken off", good + "<measure><note>", 1, 0},
      {"crossed elements", good + "<measure><note></measure></note>", 1, 0},
  };
  for (const Case& row : cases) {
    const auto score = ReadMusicXml(BytesOf(Partwise(row.measures)));
    ASSERT_FALSE(score) << row.what;
    EXPECT_EQ(score.error().code, Outcome::SourceFailed) << row.what;
    EXPECT_EQ(score.error().bar, row.bar) << row.what;
    EXPECT_EQ(score.error().staff, row.staff) << row.what;
  }
  for (const char* other : {"", "Kein XML", "<html/>", "<score-partwise", "\x89PNG", "stv3-v"})
    EXPECT_FALSE(ReadMusicXml(BytesOf(other)));
  EXPECT_EQ(ReadMusicXml(BytesOf("<html></html>")).error().code, Outcome::WrongFormat);
}

TEST(MusicXmlReader, SurvivesMalice) {
  // Entities are no texts here, whatever they are said to be.
  std::string bomb = "<?xml version='1.0'?><!DOCTYPE score-partwise [<!ENTITY a 'x'>";
  for (char c = 'b'; c < 'z'; ++c)
    bomb += Format("<!ENTITY %c '&%c;&%c;&%c;&%c;'>", c, c - 1, c - 1, c - 1, c - 1);
  bomb += "<!ENTITY f SYSTEM 'file:///etc/passwd'>]>";
  const auto score = ReadMusicXml(
      BytesOf(bomb + Partwise(Measure(Note("C", 4, "<lyric><text>&y;&f;</text></lyric>"))).substr(21)));
  ASSERT_TRUE(score);
  EXPECT_EQ(score->document.systems[0].staves[0].voices[0][1].lyrics[0].syllable, "&y;&f;");

  std::string deep;
  for (int i = 0; i < 1'000'000; ++i) deep += "<a>";
  EXPECT_FALSE(ReadMusicXml(BytesOf(deep)));
  for (int i = 0; i < 1'000'000; ++i) deep += "</a>";
  EXPECT_TRUE(ReadMusicXml(BytesOf(Partwise(Measure(Note("C", 4)) + "<measure>" + deep + "</measure>"))));

  // Many bars for many staves out of nothing.
  std::string parts;
  for (int i = 0; i < 200; ++i) parts += Format("<part id='%d'><measure/></part>", i);
  std::string bars;
  for (int i = 0; i < 20'000; ++i) bars += "<measure/>";
  EXPECT_FALSE(ReadMusicXml(
      BytesOf("<score-partwise>" + parts + "<part id='x'>" + bars + "</part></score-partwise>")));

  // What is no music and would take long: endless rows in one measure.
  std::string graces;
  for (int i = 0; i < 20'000; ++i) graces += "<note><grace/></note><direction/>";
  EXPECT_FALSE(ReadMusicXml(BytesOf(Partwise(Measure(graces)))));

  const Bytes real = DataFile("musicxml/osmd_OSMD_function_test_expressions.musicxml");
  const CancelCheck stop = [] { return true; };
  EXPECT_EQ(ReadMusicXml(DataFile("musicxml/openscore_Philp_Bye-and-Bye.mxl"), stop).error().code,
            Outcome::Cancelled);
  // Every file cut short and with bytes changed: a clear fault or a score, never more.
  for (std::size_t size = 0; size < real.size(); size += 997) (void)ReadMusicXml(ByteView(real).first(size));
  for (std::size_t i = 0; i < real.size(); i += 211) {
    Bytes damaged = real;
    damaged[i] ^= 0x15;
    if (const auto read = ReadMusicXml(damaged)) {
      LossReport losses;
      EXPECT_THAT(WriteMusicXml(read->document, losses), IsOk());
    }
  }
}

// A large file asks all the time whether to go on, in the XML parser too, and does not go on when told.
TEST(MusicXmlReader, IsStoppedWhereverItIs) {
  std::string measures;
  for (int i = 0; i < 4000; ++i) measures += Measure(Note("C", 4) + Note("D", 4));
  const Bytes large = BytesOf(Partwise(measures));
  std::size_t whole = 0;
  ASSERT_TRUE(ReadMusicXml(large, [&whole] { return ++whole == SIZE_MAX; }));
  EXPECT_GT(whole, 200U);
  for (const std::size_t at : {std::size_t{2}, whole / 8, whole / 2, whole}) {
    std::size_t asked = 0;
    const auto score = ReadMusicXml(large, [&] { return ++asked >= at; });
    ASSERT_FALSE(score) << at;
    EXPECT_EQ(score.error().code, Outcome::Cancelled) << at;
    EXPECT_LE(asked, at + 8) << at;
  }
}

TEST(MxlContainer, GivesItsFirstRootFile) {
  const std::string xml = Partwise(Measure(Note("C", 4)));
  const auto archive = WriteMxl(xml);
  ASSERT_THAT(archive, IsOk());
  EXPECT_TRUE(LooksLikeZip(*archive));
  const auto content = ReadMxl(*archive);
  ASSERT_THAT(content, IsOk());
  EXPECT_EQ(AsText(*content), xml);
  EXPECT_EQ(*WriteMxl(xml), *archive);  // the same score is the same file
  // Cut short and with every byte changed in turn.
  for (std::size_t size = 0; size < archive->size(); ++size) {
    const auto read = ReadMxl(ByteView(*archive).first(size));
    EXPECT_TRUE(!read || *read == *content) << size;
  }
  for (std::size_t i = 0; i < archive->size(); ++i) {
    Bytes damaged = *archive;
    damaged[i] ^= 0xFF;
    const auto read = ReadMxl(damaged);
    EXPECT_TRUE(!read || *read == *content) << i;
  }
  // What unpacks to very much more than it is.
  EXPECT_THAT(ReadMxl(*WriteMxl(std::string(std::size_t{40} << 20, ' '))), FailsWith(Outcome::SourceFailed));
}

TEST(ObjectMask, LeavesOutWhatItDoesNotName) {
  struct Case {
    std::uint32_t bit;
    const char* gone;
  };
  const std::string content = Measure(
      "<direction><direction-type><dynamics><p/></dynamics></direction-type></direction>"
      "<direction><direction-type><words>zart</words></direction-type></direction>"
      "<direction><direction-type><words>Da Capo</words></direction-type></direction>"
      "<direction><direction-type><wedge type='crescendo'/></direction-type></direction>" +
      Note("C", 4,
           "<notations><slur "
           "type='start'/><ornaments><mordent/></ornaments><articulations><staccato/></articulations>"
           "</notations><lyric><text>la</text></lyric>") +
      Note("D", 4, "<notations><slur type='stop'/></notations>") +
      "<direction><direction-type><wedge type='stop'/></direction-type></direction>");
  const Case cases[] = {{0x01, " art 1"},        {0x02, " {3 'p'}"}, {0x04, " {11 1}"},    {0x08, " {9 1}"},
                        {0x10, " {3 mordent=}"}, {0x20, " \"la\""},  {0x40, " {3 'zart'}"}};
  const auto whole = ReadMusicXml(BytesOf(Partwise(content)));
  ASSERT_TRUE(whole);
  const std::string all = Lines(whole->document);
  for (const Case& row : cases) {
    std::string expected = all;
    ASSERT_NE(expected.find(row.gone), std::string::npos) << row.gone << " in " << all;
    expected.erase(expected.find(row.gone), std::string_view(row.gone).size());
    ScoreDocument document = whole->document;
    ApplyObjectMask(document, (0x7F & ~row.bit) | 0x100);
    EXPECT_EQ(Lines(document), expected) << row.bit;
  }
  // Chord symbols are texts.
  auto chords = ReadMusicXml(BytesOf(Partwise(
      Measure("<harmony><root><root-step>C</root-step></root><kind>major</kind></harmony>" + Note("C", 4)))));
  ASSERT_TRUE(chords);
  ApplyObjectMask(chords->document, 0x7F & ~0x40U);
  EXPECT_EQ(Lines(chords->document), Lines(ReadMusicXml(BytesOf(Partwise(Measure(Note("C", 4)))))->document));
}

}  // namespace
}  // namespace ts5::converters
