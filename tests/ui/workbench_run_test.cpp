// Runs as the user sees them: from files to results, stopped in the middle, several at once, and the ways in
// which a window can go while something is under way.
#include <gmock/gmock.h>

#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QTextEdit>

#include "app/filter_modules.h"
#include "app/source_commands.h"
#include "app/texts.h"
#include "frame/remarks.h"
#include "frame/texts.h"
#include "frame/ui/results_dialog.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::HasSubstr;

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
  void ExpectResults(std::string* texts) {
    script_.Expect([texts](QDialog& dialog) {
      ASSERT_TRUE(dialog.inherits("ts5::ResultsDialog")) << dialog.metaObject()->className();
      *texts = TextsOf(dialog);
      dialog.accept();
    });
  }
  // expect: adds the dialogs to the script that the run brings.
  void StartGated(const std::shared_ptr<GatedRun>& gate, const std::function<void()>& expect = {}) {
    UseGatedConverter(gate);
    Start();
    ToListMode();
    Drop({WriteMidi("a.mid"), WriteMidi("b.mid")});
    W().Source().Files()->selectAll();
    W().Sources().TakeSelection();
    ChooseConverter();
    if (expect) expect();
    W().Trigger(CommandId::Run);
    ASSERT_TRUE(WaitFor([&] { return gate->running == 1 || gate->open; }));
  }
};

TEST_F(RunStory, DroppedFilesAreConvertedAndCounted) {
  Start();
  ToListMode();
  Drop({WriteMidi("eins.mid"), directory_.Write("zwei.mid", "kein Midi"), WriteMidi("drei.mid")});
  ASSERT_EQ(ActiveJob().files.Size(), 3U);
  W().Source().Files()->selectAll();
  W().Sources().TakeSelection();
  EXPECT_TRUE(W().Filters().TileOf(FilterId::MidiConverter)->isVisible());
  EXPECT_FALSE(W().Filters().TileOf(FilterId::WaveConverter)->isVisible());
  ChooseConverter();
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_FALSE(W().Target().Field()->isEnabled()) << "several files have automatic names";
  std::string results;
  ExpectResults(&results);
  Press(Qt::Key_Return, Qt::ControlModifier);
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && ActiveJob().State() == RunState::Idle; }));
  EXPECT_THAT(results, HasSubstr("Ergebnisse der Midi-Konvertierung"));
  EXPECT_THAT(results, HasSubstr("\n2\n"));
  EXPECT_THAT(results, HasSubstr("Die Quelle hat ein ungültiges Dateiformat."));
  EXPECT_THAT(test::Listing(directory_.Path()), HasSubstr("eins.cnv.mid"));
  EXPECT_EQ(W().PanelOf(ActiveJob()).FilesBar()->value(), 0);
}

TEST_F(RunStory, AStopInTheMiddleEndsTheRunWithItsRemark) {
  const auto gate = std::make_shared<GatedRun>();
  StartGated(gate);
  EXPECT_FALSE(W().Source().Files()->isEnabled());
  EXPECT_TRUE(W().Target().StopButton()->isEnabled());
  EXPECT_FALSE(W().Target().RunButton()->isEnabled());
  EXPECT_TRUE(WaitFor([&] { return W().PanelOf(ActiveJob()).FilesBar()->value() == 1; }));
  std::string results;
  ExpectResults(&results);
  Press(Qt::Key_Escape);
  EXPECT_EQ(W().PanelOf(ActiveJob()).StatusLabel()->text(), QtText(texts::Stopping));
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_THAT(results, HasSubstr("Der Vorgang wurde durch den Anwender abgebrochen."));
  EXPECT_TRUE(W().Source().Files()->isEnabled());
  EXPECT_EQ(W().statusBar()->currentMessage(), "") << "no hint of a control that the focus only passed";
}

TEST_F(RunStory, TwoJobsRunAtOnceAndEachShowsItsOwnRun) {
  const auto gate = std::make_shared<GatedRun>();
  UseGatedConverter(gate);
  Start();
  ToListMode();
  Drop({WriteMidi("a.mid"), WriteMidi("b.mid")});
  W().Source().Files()->selectAll();
  W().Sources().TakeSelection();
  ChooseConverter();
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  W().Trigger(CommandId::NewJob);
  ASSERT_EQ(application_->GetJobs().Count(), 1U);
  W().Trigger(CommandId::Run);
  W().JobButtons().JobButton(1)->click();
  EXPECT_TRUE(W().Target().RunButton()->isEnabled()) << "the other job does not run";
  W().Trigger(CommandId::Run);
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
  Start();
  ToListMode();
  Drop({WriteMidi("a.mid")});
  Select({0});
  ChooseConverter();
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  W().Trigger(CommandId::NewJob);
  W().JobButtons().JobButton(1)->click();
  W().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] { return gate->running == 1; }));
  EXPECT_FALSE(W().Actions().Action(CommandId::DeleteJob)->isEnabled()) << "not under a run";
  gate->open = true;
  std::string results;
  ExpectResults(&results);
  ASSERT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_TRUE(W().Actions().Action(CommandId::DeleteJob)->isEnabled());
  script_.ExpectBox(QMessageBox::Yes);
  W().Trigger(CommandId::DeleteJob);
  EXPECT_EQ(W().JobButtons().JobCount(), 1);
  EXPECT_TRUE(W().JobButtons().JobButton(0)->isChecked());
  W().Trigger(CommandId::Run);  // the default job runs as before
  ExpectResults(&results);
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
  std::string results;
  ExpectResults(&results);
  (void)application_->Runner().Stop(ActiveJob());
  ASSERT_TRUE(WaitFor([&] { return script_.Done() && gate->running == 0; }));
  EXPECT_EQ(answer, static_cast<int>(Answer::Cancelled));
  EXPECT_EQ(W().Dialogs().Current(), nullptr);
}

TEST_F(RunStory, AnAnswerReachesTheRun) {
  const auto gate = std::make_shared<GatedRun>();
  std::atomic<int> answer = -1;
  gate->before = [&](ts5::Run& run) {
    answer = static_cast<int>(run.Ask({.text = Text(texts::AskOverwriteTarget).data()}));
    gate->open = true;
  };
  std::string results;
  StartGated(gate, [&] {
    script_.ExpectBox(QMessageBox::No);
    ExpectResults(&results);
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
    QElapsedTimer time;
    time.start();
    W().EndWithoutQuestion();
    EXPECT_LT(time.elapsed(), 2000);
    EXPECT_EQ(gate->running, 0) << "the worker was stopped";
    EXPECT_FALSE(W().isVisible());
    window_.reset();
    application_.reset();
  }
}

TEST_F(RunStory, RunIsRefusedWithoutADestinationName) {
  Start();
  ToListMode();
  Drop({WriteMidi("a.mid")});
  Select({0});
  ChooseConverter();
  ASSERT_TRUE(W().Target().Field()->isEnabled());
  EXPECT_THAT(W().Target().Field()->text().toStdString(), HasSubstr("a"));
  W().Target().Field()->clear();
  script_.ExpectBox(QMessageBox::Ok);
  W().Trigger(CommandId::Run);
  EXPECT_EQ(script_.LastText(), QtText(texts::NoTargetName));
  EXPECT_EQ(ActiveJob().State(), RunState::Idle);
  EXPECT_EQ(W().focusWidget(), W().Target().Field());
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
}

}  // namespace
}  // namespace ts5
