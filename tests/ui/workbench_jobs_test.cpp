// Jobs in the window: created, switched under each policy, renamed, deleted, and found again after the end.
#include <gmock/gmock.h>

#include <QLineEdit>

#include "app/filter_modules.h"
#include "frame/texts.h"
#include "frame/ui/job_dialog.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

class JobStory : public WorkbenchTest {
 protected:
  // A job with one MIDI file and the converter.
  void StartWithJob() {
    Start();
    ToListMode();
    Drop({WriteMidi("a.mid")});
    Select({0});
    ChooseConverter();
    NewJob("Erster");
  }
  void NewJob(const QString& title) {
    script_.Expect([title](QDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), QtText(texts::CreateJobCaption));
      dialog.findChild<QLineEdit*>()->setText(title);
      dialog.accept();
    });
    W().JobButtons().NewJobButton()->click();
  }
  // Goes to job 1, edits its destination, and comes back to it by way of the default job.
  std::string EditedAndBack(JobSaving policy) {
    application_->GetSettings().jobSaving = policy;
    W().JobButtons().JobButton(1)->click();
    W().Target().Field()->setText("neu.mid");
    W().JobButtons().JobButton(0)->click();
    EXPECT_EQ(application_->GetJobs().ActiveNumber(), 0U);
    W().JobButtons().JobButton(1)->click();
    EXPECT_TRUE(W().JobButtons().JobButton(1)->isChecked());
    EXPECT_FALSE(W().JobButtons().JobButton(0)->isChecked());
    return W().Target().Field()->text().toStdString();
  }
};

TEST_F(JobStory, ANewJobTakesTheConfigurationAndHasItsButton) {
  StartWithJob();
  ASSERT_EQ(W().JobButtons().JobCount(), 2);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Erster");
  EXPECT_EQ(application_->GetJobs().ActiveNumber(), 0U);
  W().JobButtons().JobButton(1)->click();
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_EQ(ActiveJob().files.Size(), 1U);
  EXPECT_FALSE(W().JobButtons().NewJobButton()->isEnabled()) << "only from the default job";
}

TEST_F(JobStory, AutomaticSavingKeepsWhatWasEdited) {
  StartWithJob();
  EXPECT_EQ(EditedAndBack(JobSaving::Automatic), "neu.mid");
}

TEST_F(JobStory, NeverSavingTakesItBack) {
  StartWithJob();
  EXPECT_NE(EditedAndBack(JobSaving::Never), "neu.mid");
}

TEST_F(JobStory, AskingDoesWhatIsAnswered) {
  StartWithJob();
  script_.ExpectBox(QMessageBox::No);
  EXPECT_NE(EditedAndBack(JobSaving::Ask), "neu.mid");
  EXPECT_EQ(script_.LastText(), QtText(texts::AskSaveActiveJob));
  application_->GetSettings().jobSaving = JobSaving::Automatic;
  W().JobButtons().JobButton(0)->click();
  script_.ExpectBox(QMessageBox::Yes);
  EXPECT_EQ(EditedAndBack(JobSaving::Ask), "neu.mid");
}

TEST_F(JobStory, RenamingChangesTheButton) {
  StartWithJob();
  W().JobButtons().JobButton(1)->click();
  script_.Expect([](QDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), QtText(texts::RenameJobCaption));
    auto* title = dialog.findChild<QLineEdit*>();
    EXPECT_EQ(title->text(), "Erster");
    title->setText("Chor");
    dialog.accept();
  });
  W().Trigger(CommandId::RenameJob);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Chor");
}

TEST_F(JobStory, TheShownJobIsDeletedAfterTheQuestion) {
  StartWithJob();
  NewJob("Zweiter");
  W().JobButtons().JobButton(1)->click();
  script_.ExpectBox(QMessageBox::No);
  W().Trigger(CommandId::DeleteJob);
  EXPECT_EQ(W().JobButtons().JobCount(), 3);
  script_.ExpectBox(QMessageBox::Yes);
  W().Trigger(CommandId::DeleteJob);
  EXPECT_EQ(script_.LastText(), QtText(texts::AskDeleteJob));
  ASSERT_EQ(W().JobButtons().JobCount(), 2);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Zweiter");
  EXPECT_TRUE(W().JobButtons().JobButton(0)->isChecked()) << "the default job is shown";
  EXPECT_FALSE(W().Actions().Action(CommandId::DeleteJob)->isEnabled());
  QApplication::processEvents();
}

TEST_F(JobStory, JobsSettingsAndPlacesAreThereAfterTheNextStart) {
  StartWithJob();
  application_->GetSettings().suffix = "neu";
  W().Source().Files()->setFocus();
  Start();
  EXPECT_EQ(W().JobButtons().JobCount(), 2);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Erster");
  EXPECT_EQ(application_->GetSettings().suffix, "neu");
  EXPECT_TRUE(ActiveJob().Mode() == SourceMode::List);
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_EQ(W().Source().Files()->SelectedRows(), std::vector<std::size_t>{0});
}

TEST_F(JobStory, ADamagedStoreIsToldAboutAndTheProgramStarts) {
  directory_.Write("registry.sqlite",
                   "das ist keine Datenbank, sondern ein Text von einiger Länge ....................");
  script_.ExpectBox(QMessageBox::Ok);
  Start();
  EXPECT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_EQ(W().JobButtons().JobCount(), 1);
}

}  // namespace
}  // namespace ts5
