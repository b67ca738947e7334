// Runs as the user sees them: from files to results, stopped in the middle, several at once, and the ways in
// which a window can go while something is under way.
#include <gmock/gmock.h>

#include "app/run/end_notice.h"
#include "app/texts.h"
#include "artworker/artworker_parameters.h"
#include "frame/remarks.h"
#include "frame/run_journal.h"
#include "frame/texts.h"
#include "frame/ui/results_dialog.h"
#include "modules/filter_modules.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::HasSubstr;
using testing::Not;

// All texts that a dialog shows, one per line.
std::string TextsOf(const QDialog& dialog) {
  QString texts = dialog.windowTitle();
  for (const auto* label : dialog.findChildren<QLabel*>()) texts += "\n" + label->text();
  for (const auto* field : dialog.findChildren<QLineEdit*>()) texts += "\n" + field->text();
  for (const auto* field : dialog.findChildren<QPlainTextEdit*>()) texts += "\n" + field->toPlainText();
  for (const auto* field : dialog.findChildren<QTextEdit*>()) texts += "\n" + field->toPlainText();
  return texts.toStdString();
}

class RunStory : public WorkbenchTest {
 protected:
  void ExpectResults(std::string* texts = nullptr) {
    script_.Expect([texts](QDialog& dialog) {
      ASSERT_TRUE(dialog.inherits("ts5::ResultsDialog")) << dialog.metaObject()->className();
      if (texts != nullptr) *texts = TextsOf(dialog);
      dialog.accept();
    });
  }
  // expect: adds the dialogs to the script that the run brings.
  void StartGated(const std::shared_ptr<GatedRun>& gate, const std::function<void()>& expect = {}) {
    UseGatedConverter(gate);
    StartConverting({"a.mid", "b.mid"});
    if (expect) expect();
    W().Actions().Trigger(CommandId::Run);
    ASSERT_TRUE(WaitFor([&] { return gate->running == 1 || gate->open; }));
  }
};

TEST_F(RunStory, DroppedFilesAreConvertedAndCounted) {
  StartWithList({WriteMidi("eins.mid"), directory_.Write("zwei.mid", "kein Midi"), WriteMidi("drei.mid")});
  W().Source().Files()->selectAll();
  W().Active().Settle();
  EXPECT_TRUE(W().Filters().TileOf(FilterId::MidiConverter)->isVisible());
  EXPECT_FALSE(W().Filters().TileOf(FilterId::WaveConverter)->isVisible());
  ChooseConverter();
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_FALSE(W().Target().Field()->isEnabled()) << "several files have automatic names";
  std::string results;
  ExpectResults(&results);
  Press(Qt::Key_Return, Qt::ControlModifier);
  ASSERT_TRUE(WaitForEnd());
  EXPECT_THAT(results, HasSubstr("Ergebnisse der Midi-Konvertierung"));
  EXPECT_THAT(results, HasSubstr("\n2\n"));
  EXPECT_THAT(results, HasSubstr("Die Quelle hat ein ungültiges Dateiformat."));
  EXPECT_THAT(test::Listing(directory_.Path()), HasSubstr("eins.cnv.mid"));
  EXPECT_EQ(W().Panels().Current().FilesBar()->value(), 0);
}

TEST_F(RunStory, TheFolderOfSeveralFilesIsTheJobsAndSaysWhatWouldHappen) {
  StartConverting({"a.mid", "b.mid"});
  const auto* const folder = W().Target().findChild<QLabel*>("targetFolder");
  const auto* const forecast = W().Target().findChild<QLabel*>("targetForecast");
  EXPECT_TRUE(folder->isVisible());
  EXPECT_EQ(folder->text(), "neben den Quelldateien");
  directory_.Write("Ziel/fremd.txt", "");
  W().Active().SetTargetDirectory(directory_.File("Ziel"));
  EXPECT_EQ(folder->text().toStdString(), directory_.File("Ziel"));
  EXPECT_TRUE(WaitFor([&] { return forecast->text() == "2 neu"; }));
  ExpectResults();
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitForEnd());
  EXPECT_THAT(test::Listing(directory_.File("Ziel")), HasSubstr("b.cnv.mid"));
  EXPECT_TRUE(WaitFor([&] { return forecast->text() == "0 neu, 2 ersetzt"; }));
  Select({0});
  EXPECT_FALSE(folder->isVisible());
  Start();
  EXPECT_EQ(ActiveJob().targetDirectory, directory_.File("Ziel"));
}

TEST_F(RunStory, ARunIsUndoneFromItsResultsOrLater) {
  const test::Home data;
  directory_.Write("b.cnv.mid", "von früher");
  StartConverting({"a.mid", "b.mid"});
  EXPECT_FALSE(Enabled(CommandId::UndoRun));
  for (const bool atOnce : {true, false}) {
    script_.Expect([&](QDialog& dialog) {
      auto* const undo = dialog.findChild<QPushButton*>("undoButton");
      ASSERT_TRUE(undo != nullptr && undo->isVisible());
      atOnce ? undo->click() : dialog.accept();
    });
    if (atOnce) script_.ExpectBox(QMessageBox::Ok);
    W().Actions().Trigger(CommandId::Run);
    ASSERT_TRUE(WaitForEnd());
    if (!atOnce) {
      EXPECT_THAT(test::Content(directory_.File("b.cnv.mid")), testing::StartsWith("MThd"));
      Start();  // and the next day
      ASSERT_TRUE(WaitFor([&] { return W().Actions().Action(CommandId::UndoRun)->isEnabled(); }));
      script_.ExpectBox(QMessageBox::Ok);
      W().Actions().Trigger(CommandId::UndoRun);
      ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
    }
    EXPECT_EQ(script_.LastText(), "2 Dateien liegen jetzt im Papierkorb.\n1 ersetzte Datei ist wieder da.");
    EXPECT_EQ(test::Content(directory_.File("b.cnv.mid")), "von früher");
    EXPECT_THAT(test::Listing(directory_.Path()), Not(HasSubstr("a.cnv.mid")));
    EXPECT_FALSE(Enabled(CommandId::UndoRun)) << "it has been undone";
  }
}

TEST_F(RunStory, AnInterruptedRunIsOfferedAndGoesOn) {
  const FilterModule* const module = FindModule(FilterId::MidiConverter);
  RunPlan plan;
  plan.job.title = "Konzert";
  plan.job.filter = FilterId::MidiConverter;
  plan.job.parameters = LoadParameters(module, {});
  plan.job.sourceDrive = kListModeDrive;
  for (const char* name : {"a.mid", "b.mid", "c.mid"}) {
    plan.job.files.Append({.path = WriteMidi(name)});
    const std::string target = directory_.File(std::string("neu ") + name);
    plan.targets.push_back({.name = target, .family = TargetName::Of(target)});
  }
  for (const bool later : {true, false}) {
    if (later) {
      auto journal = RunJournal::Begin(JournalDirectory(options_.registryPath), plan, FindModule);
      ASSERT_TRUE(journal);
      journal->Book({.index = 0, .item = {.source = plan.job.files[0].path, .code = 0}});
    }
    script_.Expect([&](QDialog& dialog) {
      EXPECT_THAT(TextsOf(dialog), HasSubstr("1 von 3 Dateien fertig."));
      if (later) return dialog.reject();
      for (auto* const button : dialog.findChildren<QPushButton*>()) {
        if (button->text() == "&Fortsetzen") button->click();
      }
    });
    std::string results;
    if (!later) ExpectResults(&results);
    Start();
    ASSERT_TRUE(WaitForEnd());
    EXPECT_EQ(results.find("\n3\n") != std::string::npos, !later);
    EXPECT_EQ(W().Panels().Current().FilesBar()->isVisible(), !later) << "beside the list of hits of its job";
  }
  EXPECT_THAT(test::Listing(directory_.Path()), HasSubstr("neu c.mid"));
  EXPECT_THAT(test::Listing(directory_.Path()), Not(HasSubstr("neu a.mid"))) << "it was done before";
  Start();
}

// The table of a result: what failed comes first, is copied, saved, shown in the list, and done again.
TEST_F(RunStory, WhatFailedIsSeenAndDoneAgain) {
  StartWithList({WriteMidi("drei.mid"), directory_.Write("zwei.mid", "kein Midi"), WriteMidi("eins.mid")});
  W().Source().Files()->selectAll();
  W().Active().Settle();
  ChooseConverter();
  script_.Expect([&](QDialog& dialog) {
    auto& items = *dialog.findChild<QTreeView*>("items");
    EXPECT_FALSE(items.isVisible());
    dialog.findChild<QPushButton*>("detailsButton")->click();
    ASSERT_TRUE(items.isVisible());
    ASSERT_EQ(items.model()->rowCount(), 3);
    const auto cell = [&](int row, int column) {
      return items.model()->index(row, column).data().toString();
    };
    EXPECT_EQ(cell(0, 0), "zwei.mid");
    EXPECT_EQ(cell(0, 1), "Fehlgeschlagen");
    EXPECT_THAT(cell(0, 2).toStdString(), HasSubstr("Die Quelle hat ein ungültiges Dateiformat."));
    EXPECT_EQ(cell(1, 1), "Erfolgreich");
    EXPECT_EQ(cell(1, 0), "drei.mid") << "the others in the order of the run";

    items.setFocus();
    QTest::keyClick(&items, Qt::Key_C, Qt::ControlModifier);
    EXPECT_THAT(QGuiApplication::clipboard()->text().toStdString(), HasSubstr("eins.mid\tErfolgreich"));

    emit items.activated(items.model()->index(0, 0));
    EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{1});

    WriteMidi("zwei.mid");
    dialog.findChild<QPushButton*>("repeatButton")->click();
    EXPECT_FALSE(dialog.isVisible());
  });
  std::string again;
  ExpectResults(&again);
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && !again.empty(); }));
  EXPECT_THAT(again, HasSubstr("\n1\n0\n"));
  EXPECT_THAT(test::Listing(directory_.Path()), HasSubstr("zwei.cnv.mid"));
  EXPECT_THAT(test::Listing(directory_.Path()), Not(HasSubstr("eins.cnv001.mid"))) << "only what failed";
  EXPECT_EQ(ActiveJob().files.Size(), 3U);
}

// Of a player that gives way to another one, too.
TEST_F(RunStory, AWindowOfAJobGoesWithTheFilterThatItBelongsTo) {
  Start();
  Job& job = ActiveJob();
  int made = 0;
  Job* found = nullptr;
  const auto make = [&](const JobFinder& find) -> QWidget* {
    ++made;
    found = find();
    return new QWidget(&W(), Qt::Window);
  };
  const auto choose = [&](FilterId filter) {
    job.filter = filter;
    job.parameters = FindModule(filter)->create();
  };
  choose(FilterId::Artworker);
  W().Windows().Open(job, JobWindows::Use::Always, make);
  W().Windows().Open(job, JobWindows::Use::Always, make);
  EXPECT_EQ(made, 1);
  EXPECT_EQ(found, &job);
  const QPointer<QWidget> first = W().Windows().Find(job);
  ASSERT_TRUE(first != nullptr && first->isVisible());

  choose(FilterId::AudioPlayer);
  W().Windows().Open(job, JobWindows::Use::Always, make);
  EXPECT_EQ(made, 2);
  const QPointer<QWidget> second = W().Windows().Find(job);
  EXPECT_TRUE(WaitFor([&] { return first == nullptr; }));
  ASSERT_TRUE(second != nullptr && second->isVisible());
  choose(FilterId::MidiConverter);
  EXPECT_TRUE(WaitFor([&] { return second == nullptr; })) << "nobody looks at it any more";
}

TEST_F(RunStory, TheLayoutOfAnArtworkerJobIsSeenBesideItsDestination) {
  Start();
  auto& preview = *W().findChild<QWidget*>("layoutPreview");
  EXPECT_TRUE(preview.isHidden());
  EXPECT_EQ(W().Target().width(), W().Target().parentWidget()->width()) << "what is not there takes no room";
  Job& job = *W().Active();
  job.filter = FilterId::Artworker;
  job.parameters = FindModule(FilterId::Artworker)->create();
  W().Active().Show();
  EXPECT_TRUE(preview.isHidden()) << "there is nothing on it yet";
  auto& parameters = dynamic_cast<artworker::ArtworkerParameters&>(*job.parameters);
  artworker::ArtworkElement element;
  element.content = artworker::Ellipse{};
  element.borderColour = 0xFF0000;
  element.borderWidth = 50;
  element.box = {0, 0, 1170, 1170};
  parameters.layout.elements = {element};
  parameters.printWhat = 1;
  W().Active().Refresh();
  EXPECT_TRUE(WaitFor([&] { return preview.accessibleName().endsWith("Label"); }));
  const auto blue = [&] {
    const QImage picture = preview.grab().toImage();
    for (int x = 0; x < picture.width(); ++x) {
      if (picture.pixelColor(x, picture.height() / 2) == QColor(Qt::blue)) return true;
    }
    return false;
  };
  EXPECT_TRUE(WaitFor(blue));
  parameters.printWhat = 0;
  W().Active().Refresh();
  EXPECT_TRUE(preview.isHidden());
}

TEST_F(RunStory, WhatEditsAJobWaitsForItsRun) {
  const auto gate = std::make_shared<GatedRun>();
  StartGated(gate);
  Job& job = ActiveJob();
  W().Windows().Open(job, JobWindows::Use::WhileIdle,
                     [this](const JobFinder&) { return new QWidget(&W(), Qt::Window); });
  const QPointer<QWidget> window = W().Windows().Find(job);
  EXPECT_TRUE(WaitFor([&] { return !window->isEnabled(); }));
  ExpectResults();
  W().Target().StopButton()->click();
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_TRUE(WaitFor([&] { return window->isEnabled(); }));
}

TEST_F(RunStory, AStopInTheMiddleEndsTheRunWithItsRemark) {
  const auto gate = std::make_shared<GatedRun>();
  StartGated(gate);
  EXPECT_FALSE(W().Source().Files()->isEnabled());
  EXPECT_TRUE(W().Target().StopButton()->isEnabled());
  EXPECT_FALSE(W().Target().RunButton()->isEnabled());
  EXPECT_TRUE(WaitFor([&] { return W().Panels().Current().FilesBar()->value() == 1; }));
  std::string results;
  ExpectResults(&results);
  Press(Qt::Key_Escape);
  EXPECT_EQ(W().Panels().Current().StatusLabel()->text(), QtText(texts::Stopping));
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_THAT(results, HasSubstr("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_TRUE(W().Source().Files()->isEnabled());
  EXPECT_EQ(W().statusBar()->currentMessage(), "") << "no hint of a control that the focus only passed";
}

TEST_F(RunStory, TwoJobsRunAtOnceAndEachShowsItsOwnRun) {
  const auto gate = std::make_shared<GatedRun>();
  UseGatedConverter(gate);
  StartConverting({"a.mid", "b.mid"});
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  W().Actions().Trigger(CommandId::NewJob);
  ASSERT_EQ(application_->GetJobs().Count(), 1U);
  W().Actions().Trigger(CommandId::Run);
  W().JobButtons().JobButton(1)->click();
  EXPECT_TRUE(W().Target().RunButton()->isEnabled()) << "the other job does not run";
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] { return gate->running == 2; }));
  EXPECT_TRUE(W().JobButtons().JobButton(0)->text().startsWith("▶"));
  W().JobButtons().JobButton(0)->click();
  EXPECT_FALSE(W().Target().RunButton()->isEnabled());
  EXPECT_FALSE(W().JobButtons().NewJobButton()->isEnabled()) << "the default job runs";
  std::string first;
  std::string second;
  ExpectResults(&first);
  ExpectResults(&second);
  gate->open = true;
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_FALSE(first.empty());
  EXPECT_EQ(first, second);
}

TEST_F(RunStory, AJobThatIsShownGoesAsSoonAsItsRunHasEnded) {
  const auto gate = std::make_shared<GatedRun>();
  UseGatedConverter(gate);
  StartConverting();
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  W().Actions().Trigger(CommandId::NewJob);
  W().JobButtons().JobButton(1)->click();
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] { return gate->running == 1; }));
  EXPECT_FALSE(Enabled(CommandId::DeleteJob)) << "not under a run";
  gate->open = true;
  ExpectResults();
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_TRUE(Enabled(CommandId::DeleteJob));
  script_.ExpectBox(QMessageBox::Yes);
  W().Actions().Trigger(CommandId::DeleteJob);
  EXPECT_EQ(W().JobButtons().JobCount(), 1);
  EXPECT_TRUE(W().JobButtons().JobButton(0)->isChecked());
  W().Actions().Trigger(CommandId::Run);  // the default job runs as before
  ExpectResults();
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
}

TEST_F(RunStory, AQuestionThatNobodyAnsweredGoesWithTheStop) {
  const auto gate = std::make_shared<GatedRun>();
  std::atomic<int> answer = -1;
  gate->before = [&](ts5::Run& run) {
    answer = static_cast<int>(run.Ask({.text = Text(texts::AskOverwriteTarget).data()}));
  };
  bool asked = false;
  StartGated(gate, [&] { script_.Expect([&](QDialog&) { asked = true; }); });  // seen, not answered
  ASSERT_TRUE(WaitFor([&] { return asked; }));
  ExpectResults();
  (void)application_->Runner().Stop(ActiveJob());
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_EQ(answer, static_cast<int>(Answer::Cancelled));
  EXPECT_EQ(W().GetDesk().Queue().Current(), nullptr);
}

TEST_F(RunStory, AnAnswerReachesTheRun) {
  const auto gate = std::make_shared<GatedRun>();
  std::atomic<int> answer = -1;
  gate->before = [&](ts5::Run& run) {
    answer = static_cast<int>(run.Ask({.text = Text(texts::AskOverwriteTarget).data()}));
    gate->open = true;
  };
  StartGated(gate, [&] {
    script_.ExpectBox(QMessageBox::No);
    ExpectResults();
  });
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_EQ(answer, static_cast<int>(Answer::No));
  EXPECT_EQ(script_.Texts().front(), QtText(texts::AskOverwriteTarget));
}

TEST_F(RunStory, TheWindowClosesDuringARunAndWhileAQuestionIsOpen) {
  for (const bool withQuestion : {false, true}) {
    const auto gate = std::make_shared<GatedRun>();
    bool asked = !withQuestion;
    if (withQuestion) {
      gate->before = [](ts5::Run& run) { (void)run.Ask({.text = Text(texts::AskOverwriteTarget).data()}); };
    }
    StartGated(gate, [&] {
      if (withQuestion) script_.Expect([&](QDialog&) { asked = true; });
    });
    ASSERT_TRUE(WaitFor([&] { return asked; }));
    W().EndWithoutQuestion();
    EXPECT_EQ(gate->running, 0) << "the worker was stopped";
    EXPECT_FALSE(W().isVisible());
    window_.reset();
    application_.reset();
  }
}

TEST_F(RunStory, RunIsRefusedWithoutADestinationAndOntoItsSource) {
  StartConverting();
  ASSERT_TRUE(W().Target().Field()->isEnabled());
  EXPECT_THAT(W().Target().Field()->text().toStdString(), HasSubstr("a"));
  const std::string before = test::Content(directory_.File("a.mid"));
  for (const auto& [name, refusal] :
       {std::pair{std::string(), texts::NoTargetName}, {directory_.File("./A.mid"), texts::TargetIsSource}}) {
    W().Target().Field()->setText(ToQt(name));
    script_.ExpectBox(QMessageBox::Ok);
    W().Actions().Trigger(CommandId::Run);
    EXPECT_EQ(script_.LastText(), QtText(refusal));
    EXPECT_EQ(ActiveJob().State(), RunState::Idle);
    EXPECT_EQ(W().focusWidget(), W().Target().Field());
  }
  EXPECT_EQ(test::Content(directory_.File("a.mid")), before);
}

TEST_F(RunStory, TheEndAsksAndNoKeepsTheProgramRunning) {
  Start();
  script_.ExpectBox(QMessageBox::No);
  EXPECT_FALSE(W().close());
  EXPECT_EQ(script_.LastText(), QtText(texts::AskQuit));
  EXPECT_TRUE(W().isVisible());
  script_.ExpectBox(QMessageBox::Yes);
  EXPECT_TRUE(W().close());
  EXPECT_FALSE(W().isVisible());
  Start();
  application_->GetSettings().askBeforeEnd = false;
  EXPECT_TRUE(W().close()) << "as nothing runs";
}

TEST(EndNoticeTest, TellsOfALongRunThatNobodyWatched) {
  using namespace std::chrono_literals;
  RunResult result;
  result.filter = FilterId::MidiConverter;
  result.titles = Descriptor(result.filter).titles;
  result.counts = {118, 2};
  EXPECT_FALSE(EndNoticeOf(result, "Chor", 1h, true));
  EXPECT_FALSE(EndNoticeOf(result, "Chor", 3s, false));
  const auto notice = EndNoticeOf(result, "Chor", 1min, false);
  ASSERT_TRUE(notice);
  EXPECT_EQ(notice->title, "Chor: Midi-Konverter ist fertig");
  EXPECT_TRUE(notice->text.startsWith("Erfolgreich konvertierte Dateien: 118\n"));
}

}  // namespace
}  // namespace ts5
