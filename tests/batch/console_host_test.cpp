#include "batch/console_host.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "batch/captured_console.h"
#include "batch/run_output.h"
#include "frame/question.h"

namespace ts5::batch {
namespace {

using testing::HasSubstr;
using testing::Not;

RunResult Result() {
  RunResult result;
  result.filter = FilterId::MidiConverter;
  result.title = "Ergebnisse der Midi-Konvertierung";
  result.lines[0] = {"Erfolgreich konvertierte Dateien:", 2};
  result.lines[1] = {"Nicht (ordnungsgemäß) konvertierte Dateien:", 1};
  result.remarks = {"Die Quelle hat ein ungültiges Dateiformat."};
  result.items = {{"a.mid", "acnv.mid", 0}, {"b\xFF.mid", "", -104}, {"c.mid", "c.rmi", 0x40000}};
  return result;
}

// Runs work as a run's worker would and prints what it says.
void Converse(
    CapturedConsole& captured, ConsoleHost& host, const std::function<void(ConsoleHost&)>& work,
    const std::function<std::optional<TextId>()>& stop = [] { return std::optional<TextId>(); }) {
  std::jthread worker([&] {
    work(host);
    host.Finished(Result());
  });
  host.PrintUntilFinished(stop);
  (void)captured;
}

TEST(ConsoleHost, ProgressIsForATerminalOnly) {
  struct Case {
    bool terminal;
    OutputOptions options;
    bool shown;
  };
  for (const Case& c : {Case{true, {}, true}, Case{false, {}, false}, Case{true, {.json = true}, false},
                        Case{true, {.quiet = true}, false}}) {
    CapturedConsole captured;
    captured.console.terminal = c.terminal;
    ConsoleHost host(captured.console, c.options);
    Converse(captured, host, [](ConsoleHost& h) {
      h.Progress({.item = 3, .items = 4, .fraction = 0.5});
      h.StatusText("Lied.mid");
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
    });
    EXPECT_EQ(captured.err.str().find("Datei 3 von 4 (62 %)") != std::string::npos, c.shown);
    // What rewrites itself leaves nothing behind.
    if (c.shown) {
      EXPECT_THAT(captured.err.str(), testing::EndsWith("\r\x1b[K"));
    }
    EXPECT_THAT(captured.err.str(), Not(HasSubstr("\n")));
    EXPECT_EQ(captured.out.str(), "");
  }
}

TEST(ConsoleHost, TheProgressLineFitsTheTerminal) {
  CapturedConsole captured;
  captured.OnTerminal().console.width = 20;
  ProgressLine line(captured.console, true);
  line.Show("Übermäßig lange Überschrift");
  EXPECT_EQ(captured.err.str(), "\rÜbermäßig lange Übe\x1b[K");
}

TEST(ConsoleHost, QuestionsAreAnsweredOrNo) {
  const QuestionText overwrite{.text = "Soll sie\n\nüberschrieben werden?", .preset = Answer::No};
  struct Case {
    std::optional<std::deque<std::string>> replies;
    Answer answer;
  };
  for (const Case& c :
       {Case{std::nullopt, Answer::No}, Case{{{"j"}}, Answer::Yes}, Case{{{"nein"}}, Answer::No},
        Case{{{""}}, Answer::No}, Case{{{}}, Answer::Cancelled}}) {
    CapturedConsole captured;
    if (c.replies) captured.Answering(*c.replies);
    EXPECT_EQ(AskOnConsole(captured.console, overwrite), c.answer);
    EXPECT_THAT(captured.err.str(), HasSubstr("Soll sie überschrieben werden?"));
  }
  CapturedConsole captured;
  captured.Answering({""});
  EXPECT_EQ(AskOnConsole(captured.console, {.text = "?", .preset = Answer::Yes}), Answer::Yes);
}

TEST(ConsoleHost, CtrlCStopsOnceHoweverOftenItComes) {
  CapturedConsole captured;
  captured.interrupted = true;
  ConsoleHost host(captured.console, {});
  std::atomic<int> stops = 0;
  Converse(
      captured, host,
      [&](ConsoleHost&) {
        while (stops == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        std::this_thread::sleep_for(std::chrono::milliseconds(150));
      },
      [&] {
        ++stops;
        return std::optional<TextId>();
      });
  EXPECT_EQ(stops, 1);
}

TEST(RunOutput, TextIsWhatTheResultsDialogShows) {
  EXPECT_EQ(ResultText(Result()),
            "Ergebnisse der Midi-Konvertierung\n"
            "  Erfolgreich konvertierte Dateien:                 2\n"
            "  Nicht (ordnungsgemäß) konvertierte Dateien:       1\n"
            "Bemerkungen:\n"
            "  Die Quelle hat ein ungültiges Dateiformat.\n");
}

TEST(RunOutput, JsonHasEveryKeyEvenWhenEmpty) {
  const SearchHit hit{.file = "a.mid", .track = 1, .bar = 7, .time = 2500};
  EXPECT_EQ(ResultJson(Result(), std::span(&hit, 1)), R"({
  "filter": "MidiConverter",
  "title": "Ergebnisse der Midi-Konvertierung",
  "lines": [
    {
      "label": "Erfolgreich konvertierte Dateien:",
      "count": 2
    },
    {
      "label": "Nicht (ordnungsgemäß) konvertierte Dateien:",
      "count": 1
    }
  ],
  "remarks": [
    "Die Quelle hat ein ungültiges Dateiformat."
  ],
  "items": [
    {
      "source": "a.mid",
      "destination": "acnv.mid",
      "code": 0
    },
    {
      "source": "b)"
                                                      "\xEF\xBF\xBD"
                                                      R"(.mid",
      "destination": "",
      "code": -104
    },
    {
      "source": "c.mid",
      "destination": "c.rmi",
      "code": 262144
    }
  ],
  "hits": [
    {
      "file": "a.mid",
      "track": 1,
      "voice": 0,
      "bar": 7,
      "time": 2500,
      "firstSystem": 0,
      "lastSystem": 0,
      "firstObject": 0,
      "lastObject": 0
    }
  ]
}
)");
}

TEST(RunOutput, CancelledComesBeforeFailed) {
  RunResult result = Result();
  EXPECT_EQ(ExitStatusOf(result), kExitFailed);
  result.cancelled = true;
  EXPECT_EQ(ExitStatusOf(result), kExitCancelled);
  EXPECT_EQ(ExitStatusOf({}), kExitSuccess);
}

}  // namespace
}  // namespace ts5::batch
