// The converter as a filter of the frame: whole runs over files.
#include <gmock/gmock.h>

#include "frame/run_support.h"
#include "midi/midi_converter.h"
#include "midi_bytes.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;

const Bytes kTrack = Track("00 90 3C 40 60 3C 00 00 FF 2F 00");
const Bytes kFormat1 = Join({Header(1, 2, 96), kTrack, kTrack});

Job JobOf(const std::vector<std::string>& files, void (*options)(ConverterParameters&)) {
  static const FilterModule module = MidiConverterModule();
  Job job = ListJob(files, module);
  options(static_cast<ConverterParameters&>(*job.parameters));
  return job;
}

RunResult RunConverter(const Job& job, const DestinationRules& rules = {}) {
  static const FilterModule module = MidiConverterModule();
  return RunJob(job, module, rules);
}

TEST(ConverterRunTest, TellsWhatBecameOfEachFile) {
  const TemporaryDirectory place;
  const std::string same = place.Write("same.mid", AsText(Join({Header(1, 1, 480), kTrack})));
  const std::string plain = place.Write("plain.mid", AsText(kFormat1));
  const std::string text = place.Write("text.mid", "kein Midi");
  const std::string sequencer =
      place.Write("seq.rdl", AsText(Join({Header(1, 2, 96, "RDL3"), kTrack, kTrack})));
  const std::string damaged =
      place.Write("damaged.mid", AsText(Join({Header(1, 2, 96), kTrack, Track("00")})));
  const RunResult result = RunConverter(
      JobOf({same, plain, text, sequencer, damaged, place.File("none.mid")},
            [](ConverterParameters& p) { p = {}, p.changeFormat = false, p.changeTimeBase = true; }));
  EXPECT_THAT(CodesOf(result), ElementsAre(0x400000, 0x800000, -104, 0x800000, -104, -300));
  EXPECT_EQ(result.counts[0], 3U);
  EXPECT_EQ(result.counts[1], 3U);
  EXPECT_THAT(
      result.remarks,
      ElementsAre(
          "Die gegenwärtige Zeitbasis der Datei ist mit der gewünschten identisch.",
          "Die Konvertierung der Zeitbasis war erfolgreich.", "Die Quelle hat ein ungültiges Dateiformat.",
          "Die Konvertierung der Zeitbasis war erfolgreich. Die Startzeiten der Audio-Segmente wurden "
          "nicht angepasst.",
          "Es trat ein Fehler in der Quelldatei auf."));
  // The format stays, so the suffix goes before the extension; where nothing changed, nothing is written.
  EXPECT_EQ(result.items[0].destination, "");
  EXPECT_EQ(result.items[1].destination, place.File("plain.cnv.mid"));
  EXPECT_EQ(Listing(place.Path()),
            "damaged.mid plain.cnv.mid plain.mid same.mid seq.cnv.rdl seq.rdl text.mid");
  EXPECT_EQ(Content(plain), AsText(kFormat1));
}

TEST(ConverterRunTest, ExtensionsFollowTheContainer) {
  const TemporaryDirectory place;
  const std::vector<std::string> files = {
      place.Write("a.mid", AsText(kFormat1)), place.Write("b.rmi", AsText(Riff(kFormat1))),
      place.Write("c.rdl", AsText(Join({Header(1, 2, 96, "RDL3"), kTrack, kTrack})))};
  const RunResult result =
      RunConverter(JobOf(files, [](ConverterParameters& p) { p.changeContainer = true; }));
  EXPECT_THAT(result.remarks,
              ElementsAre("Die Datei wurde erfolgreich ins RIFF-Format konvertiert.",
                          "RIFF- und Rondelis-Dateien können nicht nach Midi-0 konvertiert werden.",
                          "Die Datei wurde erfolgreich ins Standard-Midi-Format konvertiert.",
                          "Die Datei wurde erfolgreich nach Midi-0 konvertiert."));
  EXPECT_EQ(Listing(place.Path()), "a.mid a.rmi b.mid b.rmi c.rdl c.rmi");
}

// Many files on all cores: as one after the other, and what is there already is kept when names are numbered.
TEST(ConverterRunTest, ManyFilesInOrder) {
  const TemporaryDirectory place;
  std::vector<std::string> files;
  for (int i = 0; i < 200; ++i) {
    const bool good = i % 7 != 3;
    files.push_back(place.Write(std::to_string(i) + ".mid", good ? AsText(kFormat1) : "kaputt"));
  }
  place.Write("5.rmi", "vorhanden");
  const RunResult result = RunConverter(
      JobOf(files, [](ConverterParameters& p) { p.changeContainer = true, p.changeFormat = false; }),
      {.overwrite = OverwritePolicy::Number});
  ASSERT_EQ(result.items.size(), files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    EXPECT_EQ(result.items[i].source, files[i]);
    const bool good = i % 7 != 3;
    EXPECT_EQ(result.items[i].code, good ? 0x40000 : -104) << i;
    const std::string name = i == 5 ? "5001.rmi" : std::to_string(i) + ".rmi";
    EXPECT_EQ(result.items[i].destination, good ? place.File(name) : "");
  }
  EXPECT_EQ(Content(place.File("5.rmi")), "vorhanden");
  EXPECT_EQ(Content(place.File("5001.rmi")), Content(place.File("6.rmi")));
  EXPECT_EQ(result.remarks.size(), 2U);
}

}  // namespace
}  // namespace ts5
