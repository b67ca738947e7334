#include "batch/arguments.h"

#include <gmock/gmock.h>

#include "batch/captured_console.h"
#include "batch/texts.h"

namespace ts5::batch {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// A command with one argument of every kind.
struct Everything {
  bool json = false;
  std::optional<std::string> destination;
  std::vector<std::string> settings;
  std::string filter;
  std::vector<std::string> files;
  CapturedConsole captured;

  std::optional<int> Read(const std::vector<std::string>& line) {
    Arguments arguments("run", texts::BatchRunSummary, texts::BatchRunExamples);
    arguments.Required("FILTER", filter, texts::BatchHelpFilter);
    arguments.Flag("--json", json, texts::BatchHelpJson);
    arguments.Option("--dest", "DATEI", destination, texts::BatchHelpDest);
    arguments.Repeated("--set", "NAME=WERT", settings, texts::BatchHelpSet);
    arguments.Rest("DATEI", files, texts::BatchHelpFiles, 1);
    return arguments.Read(line, captured.console);
  }
};

TEST(Arguments, OptionsStandAnywhereAndTakeOneValue) {
  Everything e;
  EXPECT_EQ(
      e.Read({"--set", "a=1", "MidiConverter", "x.mid", "--set=b=2", "--dest", "-y.mid", "z.mid", "--json"}),
      std::nullopt);
  EXPECT_EQ(e.filter, "MidiConverter");
  EXPECT_THAT(e.settings, ElementsAre("a=1", "b=2"));
  EXPECT_EQ(e.destination, "-y.mid");
  EXPECT_THAT(e.files, ElementsAre("x.mid", "z.mid"));
  EXPECT_TRUE(e.json);
}

TEST(Arguments, FileNamesAreTakenAsTheyStand) {
  Everything e;
  EXPECT_EQ(e.Read({"5", "[a,b]", "", "-1", "++", "run", "a b", "--", "--json", "-x"}), std::nullopt);
  EXPECT_THAT(e.files, ElementsAre("[a,b]", "", "-1", "++", "run", "a b", "--json", "-x"));
  EXPECT_FALSE(e.json);
}

TEST(Arguments, WrongLinesAreWrongUsage) {
  struct Case {
    std::vector<std::string> line;
    std::string part;  // of what is said
  };
  const std::vector<Case> cases{
      {{}, "Es fehlt: FILTER"},
      {{"5"}, "Es fehlt: DATEI"},
      {{"5", "a", "--unbekannt"}, "--unbekannt"},
      {{"5", "a", "--dest"}, "--dest"},
      {{"5", "a", "-x"}, "-x"},
      {{"5", "a", "--json=vielleicht"}, "--json"},
      {{"5", "a", "--set"}, "--set"},
  };
  for (const Case& c : cases) {
    Everything e;
    EXPECT_EQ(e.Read(c.line), kExitUsage) << c.part;
    EXPECT_THAT(e.captured.err.str(), HasSubstr(c.part));
    EXPECT_THAT(e.captured.err.str(), HasSubstr("ts5-batch run --help"));
    EXPECT_EQ(e.captured.out.str(), "");
  }
}

TEST(Arguments, HelpNeedsNothingElseAndNamesEverything) {
  Everything e;
  EXPECT_EQ(e.Read({"--help"}), kExitSuccess);
  for (const char* part :
       {"Aufruf: ts5-batch run FILTER", "--json", "--dest DATEI", "--set NAME=WERT", "Beispiele:"}) {
    EXPECT_THAT(e.captured.out.str(), HasSubstr(part));
  }
}

}  // namespace
}  // namespace ts5::batch
