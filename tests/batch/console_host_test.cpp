#include "batch/console_host.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <sstream>
#include <thread>

#include "batch/captured_console.h"
#include "batch/run_output.h"
#include "frame/filter_catalogue.h"
#include "frame/question.h"

namespace ts5::batch {
namespace {

using testing::HasSubstr;
using testing::Not;

RunResult Result() {
  RunResult result;
  result.filter = FilterId::MidiConverter;
  result.titles = Descriptor(FilterId::MidiConverter).titles;
  result.counts = {2, 1};
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

// A slow reader of the output slows the run down; the hits do not pile up before it.
TEST(ConsoleHost, HitsWaitForTheOutput) {
  constexpr int kHits = 100'000;
  std::atomic<int> sent = 0;
  int printed = 0;
  int most = 0;
  class SlowOutput : public std::stringbuf {
   public:
    explicit SlowOutput(std::function<void()> line) : line_(std::move(line)) {}

   protected:
    std::streamsize xsputn(const char* text, std::streamsize size) override {
      if (std::string_view(text, static_cast<std::size_t>(size)).find('\n') != std::string_view::npos)
        line_();
      return size;
    }
    int_type overflow(int_type c) override {
      if (c == '\n') line_();
      return traits_type::not_eof(c);
    }

   private:
    std::function<void()> line_;
  };
  SlowOutput slow([&] {
    while (printed == 0 && sent < 4096) std::this_thread::yield();
    if (printed == 0) std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the chance to run ahead
    most = std::max(most, sent - printed++);
  });
  std::ostream out(&slow);
  CapturedConsole captured;
  Console console{.out = out, .err = captured.err, .readLine = {}, .interrupted = {}};
  ConsoleHost host(console, {});
  Converse(captured, host, [&](ConsoleHost& h) {
    for (int i = 0; i < kHits; ++i) {
      EXPECT_EQ(h.Hit({.file = "a.mid"}), Outcome::Success);
      ++sent;
    }
  });
  EXPECT_EQ(printed, kHits);
  EXPECT_LE(most, 10'000);
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
  SearchResults hits;
  ASSERT_EQ(hits.Add({.file = "a.mid", .track = 1, .bar = 7, .time = 2500}), Outcome::Success);
  ASSERT_EQ(hits.Add({.file = "b.mid"}), Outcome::Success);
  std::ostringstream out;
  WriteResultJson(Result(), hits, {}, out);
  EXPECT_EQ(out.str(), R"({
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
      "lastObject": 0,
      "melody": ""
    },
    {
      "file": "b.mid",
      "track": 0,
      "voice": 0,
      "bar": 0,
      "time": 0,
      "firstSystem": 0,
      "lastSystem": 0,
      "firstObject": 0,
      "lastObject": 0,
      "melody": ""
    }
  ]
}
)");
  std::ostringstream none;
  WriteResultJson({}, {}, {}, none);
  EXPECT_THAT(none.str(), testing::EndsWith("  \"items\": [],\n  \"hits\": []\n}\n"));
}

TEST(RunOutput, HitsReadAsTheSearchCountsThem) {
  const SearchHit hit{.file = "a.xml", .track = 1, .voice = 2, .bar = 2147483647, .time = 65999};
  EXPECT_EQ(HitText(SearchKind::Midi, hit), "a.xml  Spur 2  Takt 2147483648  Zeit 01:05");
  EXPECT_EQ(HitText(SearchKind::Score, hit), "a.xml  Zei2/Sti3  Takt 2147483648  Schlag 66000");
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
