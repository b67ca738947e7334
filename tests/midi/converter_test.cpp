#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "midi/format_change.h"
#include "midi/instruments.h"
#include "midi/midi_containers.h"
#include "midi/midi_converter.h"
#include "midi/midi_properties.h"
#include "midi/time_base.h"
#include "midi_bytes.h"
#include "platform/files/files.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::Pair;

const CalendarDate kDate{std::chrono::year(2024), std::chrono::month(1), std::chrono::day(31)};
const RiffFileInfo kInfo{{"Titel", "", "", ""}, kDate};

const Bytes kFormat0 = Join({Header(0, 1, 96), Track("00 90 3C 40 60 91 3C 40 00 FF 2F 00")});
const Bytes kFormat1 =
    Join({Header(1, 2, 96), Track("60 FF 51 03 07 A1 20 00 FF 2F 00"), Track("60 90 3C 40 00 FF 2F 00")});

// Options as --set takes them: "c" container, "r" to RIFF (else sequencer), "f" format, "t" time base 480.
ConverterParameters Options(std::string_view options) {
  ConverterParameters p;
  p.changeContainer = options.find('c') != options.npos;
  p.toRiff = options.find('r') != options.npos;
  p.changeFormat = options.find('f') != options.npos;
  p.changeTimeBase = options.find('t') != options.npos;
  p.title = "Titel";
  return p;
}

Result<ConvertedMidi> Convert(ByteView file, std::string_view options) {
  return ConvertMidi(file, DetectMidiKind(file).kind, Options(options), kDate);
}

TEST(MidiConverterTest, EveryOptionOnEveryContainer) {
  const Bytes riff = *SmfToRiff(kFormat1, kInfo);
  const Bytes sequencer = *SmfToSequencer(kFormat1);
  const Bytes at480 = *ChangeTimeBase(kFormat1, 480);
  const Bytes none;
  const struct {
    const char* what;
    Bytes file;
    const char* options;
    std::uint32_t flags;
    Bytes result;
  } cases[] = {
      {"nothing chosen", kFormat1, "", 0, none},
      {"plain to RIFF", kFormat1, "cr", 0x40000, riff},
      {"plain to sequencer", kFormat1, "c", 0x20000, sequencer},
      {"RIFF out of RIFF", riff, "cr", 0x10000, kFormat1},
      {"RIFF to sequencer", riff, "c", 0x20000, sequencer},
      {"sequencer to RIFF", sequencer, "cr", 0x40000, riff},
      {"sequencer out of sequencer", sequencer, "c", 0x10000, kFormat1},
      {"format 1 to 0", kFormat1, "f", 0x100000, *MergeTracksToFormat0(kFormat1)},
      {"format 0 to 1", kFormat0, "f", 0x200000, *SplitChannelsToFormat1(kFormat0)},
      {"a RIFF file keeps its format", riff, "f", 0x80000, none},
      {"a sequencer file keeps its format", sequencer, "f", 0x80000, none},
      {"time base", kFormat1, "t", 0x800000, at480},
      {"time base as it is", at480, "t", 0x400000, none},
      {"time base in RIFF", riff, "t", 0x800000, Riff(at480)},
      {"RIFF, format and time base at once", kFormat0, "crft", 0x40000 | 0x80000 | 0x800000,
       Riff(*ChangeTimeBase(kFormat0, 480))},
      {"out of RIFF, then merged, then scaled", riff, "crft", 0x10000 | 0x100000 | 0x800000,
       *ChangeTimeBase(*MergeTracksToFormat0(kFormat1), 480)},
      {"to sequencer with the time base as it is", at480, "cft", 0x20000 | 0x80000 | 0x400000,
       *SmfToSequencer(at480)},
      {"to sequencer and scaled: without settings", kFormat1, "ct", 0x20000 | 0x800000,
       *ChangeTimeBase(sequencer, 480)},
  };
  for (const auto& c : cases) {
    const auto converted = Convert(c.file, c.options);
    ASSERT_THAT(converted, IsOk()) << c.what;
    EXPECT_EQ(converted->flags, c.flags) << c.what << std::hex << ' ' << converted->flags;
    EXPECT_EQ(Dump(converted->bytes), Dump(c.result)) << c.what;
    EXPECT_EQ(converted->fromSequencer, ContainerOf(c.file) == MidiContainer::Sequencer) << c.what;
  }
}

// Files of format 1 with one track have the kind of format 0 in every container; the container still counts.
TEST(MidiConverterTest, TheContainerCountsBeforeTheKind) {
  const Bytes song = Join({Header(1, 1, 96), Track("00 90 3C 40 00 FF 2F 00")});
  const Bytes riff = *SmfToRiff(song, kInfo);
  EXPECT_EQ(Convert(riff, "cr")->bytes, song);
  EXPECT_EQ(Convert(*SmfToSequencer(song), "cr")->bytes, riff);
  EXPECT_EQ(Convert(riff, "f")->flags, kFormatRefused);
  EXPECT_EQ(Convert(song, "f")->flags, kToFormat1);
}

TEST(MidiConverterTest, AFailingStepEndsTheFile) {
  const Bytes damaged = Join({Header(1, 2, 96), Track("00 FF 2F 00"), Track("60 3C 40 00 FF 2F 00")});
  const struct {
    const char* what;
    Bytes file;
    const char* options;
    Outcome code;
  } cases[] = {
      {"no MIDI file", Hex("00 01 02"), "crft", Outcome::WrongFormat},
      {"SMPTE division", Join({Header(0, 1, 0xE728)}), "c", Outcome::WrongFormat},
      {"damage shows in the second step", damaged, "cf", Outcome::Success},  // refused before it is looked at
      {"damaged for the format", damaged, "f", Outcome::DamagedMidi},
      {"damaged for the time base", damaged, "crt", Outcome::WrongFormat},
      {"the format comes first", damaged, "ft", Outcome::DamagedMidi},
      {"cut short", Bytes(kFormat1.begin(), kFormat1.end() - 1), "f", Outcome::ReadFailed},
      {"another form", Join({Hex("52494646 00000000 57415645 64617461 00000000"), kFormat1}), "cr",
       Outcome::WrongFormat},
      {"the score variant has its own magic", Join({Header(0, 1, 96, "STVR")}), "c", Outcome::WrongFormat},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CodeOf(Convert(c.file, c.options)), c.code) << c.what;
  }
}

TEST(MidiConverterTest, NamesTheTargetByItsContainer) {
  const TemporaryDirectory directory;
  const std::string plain = directory.Write("a.kar", AsText(kFormat1));
  const std::string riff = directory.Write("a.mid", AsText(Riff(kFormat1)));  // whatever its name says
  const std::string sequencer = directory.Write("a.rdl", AsText(*SmfToSequencer(kFormat1)));
  const struct {
    const std::string& source;
    const char* options;
    const char* extension;
    bool kept;
  } cases[] = {
      {plain, "ft", "kar", true},     {plain, "cr", "rmi", false},     {plain, "c", "rdl", false},
      {riff, "cr", "mid", false},     {riff, "c", "rdl", false},       {riff, "f", "mid", true},
      {sequencer, "c", "mid", false}, {sequencer, "cr", "rmi", false}, {sequencer, "t", "rdl", true}};
  for (const auto& c : cases) {
    const TargetRule rule = ConverterTarget(Options(c.options), c.source);
    EXPECT_EQ(rule.extension, c.extension) << c.source << ' ' << c.options;
    EXPECT_EQ(rule.formatKept, c.kept) << c.source << ' ' << c.options;
  }
  EXPECT_EQ(ConverterTarget(Options("cr"), directory.File("none.mid")).extension, "rmi");
}

// --- parameters

RegistryValues ValuesOf(const ConverterParameters& parameters) {
  RegistryValues values;
  for (const auto& field : ConverterFields()) field.save(parameters, values);
  return values;
}
std::string Saved(const ConverterParameters& parameters) {
  std::string text;
  const RegistryValues values = ValuesOf(parameters);
  for (const auto& [name, value] : values.All()) text += name + '=' + value.data + ' ';
  return text;
}

TEST(ConverterParametersTest, StoreUnderTheirNames) {
  EXPECT_EQ(
      Saved({}),
      "Artist= ChangeTimebase=0 Copyright= Displayname= FormatBig=1 FormatSmall=0 NewTimebase=11 Option1=1 "
      "Subject= SubjectLen=0 ");
  ConverterParameters p = Options("ct");
  p.timeBaseIndex = 14;
  p.copyright = "C";
  p.artist = "A";
  p.description = "Größe";
  const std::string saved = Saved(p);
  EXPECT_EQ(saved,
            "Artist=A ChangeTimebase=1 Copyright=C Displayname=Titel FormatBig=0 FormatSmall=1 "
            "NewTimebase=14 Option1=0 "
            "Subject=Größe SubjectLen=5 ");
  EXPECT_EQ(p.TimeBase(), 768);

  ConverterParameters loaded;
  for (const auto& field : ConverterFields()) field.load(loaded, ValuesOf(p));
  EXPECT_EQ(Saved(loaded), saved);
}

TEST(ConverterParametersTest, ValuesThatDoNotFitChangeNothing) {
  RegistryValues values;
  values.SetText("NewTimebase", "15");
  values.SetText("FormatBig", "yes");
  values.SetText("Copyright", std::string(256, 'x'));
  values.SetText("Artist", std::string(255, 'x'));
  values.SetText("Subject", "abcdef");
  values.SetText("SubjectLen", "3");
  ConverterParameters p;
  for (const auto& field : ConverterFields()) field.load(p, values);
  EXPECT_EQ(p.timeBaseIndex, 11);
  EXPECT_TRUE(p.changeFormat);
  EXPECT_EQ(p.copyright, "");
  EXPECT_EQ(p.artist.size(), 255U);
  EXPECT_EQ(p.description, "abc");  // the length that is stored beside it counts
}

// --- properties

std::vector<std::pair<std::string, std::string>> Pairs(const std::vector<PropertyRow>& rows) {
  std::vector<std::pair<std::string, std::string>> pairs;
  for (const auto& row : rows) pairs.emplace_back(row.label, row.value);
  return pairs;
}

TEST(MidiPropertiesTest, RowsOfThePage) {
  const auto rows = [](MidiFileKind kind, std::uint16_t division) {
    MidiFileInfo info;
    info.kind = kind;
    info.header.trackCount = 3;
    info.header.division = division;
    return Pairs(MidiPropertyRows(info, kDate));
  };
  EXPECT_THAT(rows(MidiFileKind::Format1, 384),
              ElementsAre(Pair("Dateiformat", "MIDI-1"), Pair("Letzte Bearbeitung am", "31-01-2024"),
                          Pair("Spuranzahl", "3"), Pair("Zeitformat", "Ticks per Quarternote"),
                          Pair("Ticks pro Viertelnote", "384")));
  EXPECT_EQ(rows(MidiFileKind::Format0, 0xE728)[0].second, "MIDI-0");
  EXPECT_EQ(rows(MidiFileKind::Format0, 0xE728)[3].second, "MIDI Time Code");
  EXPECT_EQ(rows(MidiFileKind::Riff, 1)[0].second, "RIFF");
  EXPECT_EQ(rows(MidiFileKind::Sequencer, 1)[0].second, "Rondelis");
}

TEST(MidiPropertiesTest, WhatAFileHolds) {
  MidiSummary summary;
  summary.division = 96;
  summary.title = "Lied";
  summary.length = std::chrono::milliseconds(187'400);
  summary.keys = {{0, -6, false}, {384, 3, true}};
  summary.signatures = {{0, 0, 4, 4}, {768, 2, 3, 4}};
  summary.tempos = {{0, 648'648}, {384, 1'000'000}};
  summary.tracks.push_back({"Solo", {{0, 40, 7}, {9, 0, 1}}, 8, 30, false});
  summary.tracks.push_back({"", {}, 0, 3, true});
  summary.notes = 8;
  summary.missingTracks = 1;
  summary.lyrics = "Der Mond\nist auf";
  EXPECT_THAT(Pairs(MidiSummaryRows(summary)),
              ElementsAre(Pair("Zustand",
                               "beschädigt: der Dateikopf zählt 3 Spuren, lesbar sind 2\n"
                               "beschädigt: Spur 2 bricht nach 3 Ereignissen ab"),
                          Pair("Titel", "Lied"), Pair("Dauer", "3:07 min"),
                          Pair("Tonart", "Ges-Dur, fis-Moll ab Takt 2"), Pair("Takt", "4/4, 3/4 ab Takt 3"),
                          Pair("Tempo", "60 bis 92,5 BPM, 1 Wechsel"),
                          Pair("Tempoverlauf", "Takt 1: 92,5\nTakt 2: 60"), Pair("Noten", "8"),
                          Pair("Spur 1", "Solo: Violine (Kanal 1), Schlagzeug (Kanal 10), 8 Noten"),
                          Pair("Spur 2", "keine Noten"), Pair("Liedtext", "Der Mond\nist auf")));

  EXPECT_EQ(InstrumentName(-5), InstrumentName(0));
}

TEST(MidiPropertiesTest, OfFiles) {
  const auto riff = ReadMidiProperties(DataPath("midi/made_gymnopedie.rmi"));
  ASSERT_THAT(riff, IsOk());
  EXPECT_EQ(riff->title, "Eigenschaften von \"made_gymnopedie.rmi\"");
  EXPECT_TRUE(riff->isRiff);
  EXPECT_THAT(Pairs(riff->attributes),
              ElementsAre(Pair("Komponist/Künstler", "E. Satie"), Pair("Copyright", "none"),
                          Pair("Ansicht", "Klavier"), Pair("Erstellt am", "31/1/2024")));
  const MidiSummary rag = *SummariseMidiFile(DataPath("midi/mutopia_maple-leaf-rag.mid"));
  EXPECT_FALSE(rag.Damaged());
  EXPECT_EQ(MidiKeysText(rag).substr(0, 6), "As-Dur");
  const MidiSummary song = *SummariseMidiFile(DataPath("midi/jazzsoft_test-karaoke-kar.mid"));
  EXPECT_NE(song.lyrics, "");
  // Cut off anywhere, a file says that it is damaged.
  const Bytes bytes = *ReadFile(DataPath("midi/mutopia_maple-leaf-rag.mid"));
  for (std::size_t size = kMidiHeaderSize; size < bytes.size(); size += 97) {
    const auto cut = SummariseMidi(ByteView(bytes).first(size));
    ASSERT_THAT(cut, IsOk()) << size;
    EXPECT_TRUE(cut->Damaged()) << size;
  }
  const auto plain = ReadMidiProperties(DataPath("midi/music21_test10.mid"));
  ASSERT_THAT(plain, IsOk());
  EXPECT_FALSE(plain->isRiff);
  EXPECT_EQ(RiffInfoLabel("IXYZ"), "IXYZ");
  EXPECT_THAT(ReadMidiProperties(DataPath("LICENCES.md")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(ReadMidiProperties(DataPath("none")), FailsWith(Outcome::SourceFailed));
}

}  // namespace
}  // namespace ts5
