// Jobs in the window: created, switched under each policy, renamed, deleted, and found again after the end.
#include <gmock/gmock.h>
#include <sqlite3.h>

#include "frame/texts.h"
#include "frame/ui/job_dialog.h"
#include "modules/filter_modules.h"
#include "platform/store/reg_file.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

class JobStory : public WorkbenchTest {
 protected:
  // A job with one MIDI file and the converter.
  void StartWithJob() {
    StartConverting();
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
  [[nodiscard]] std::vector<std::string> StoredTitles() const {
    std::vector<std::string> titles;
    const auto registry = Registry::Open(options_.registryPath, RegistryAccess::ReadOnly);
    const auto jobs = ReadJobs(*registry);
    for (std::size_t i = 1; i < jobs->size(); ++i) titles.emplace_back((*jobs)[i].Text("Title").value_or(""));
    return titles;
  }
  // Goes to job 1, edits its destination, and comes back to it by way of the default job.
  std::string EditedAndBack(JobSaving policy) {
    W().JobButtons().JobButton(1)->click();
    application_->GetSettings().jobSaving = policy;
    W().Target().Field()->setText("neu.mid");
    W().JobButtons().JobButton(0)->click();
    EXPECT_EQ(application_->GetJobs().ActiveNumber(), 0U);
    W().JobButtons().JobButton(1)->click();
    EXPECT_TRUE(W().JobButtons().JobButton(1)->isChecked());
    EXPECT_FALSE(W().JobButtons().JobButton(0)->isChecked());
    application_->GetSettings().jobSaving = JobSaving::Automatic;
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
  // Another one is made of the default job, which is shown for it; a dialog that is left changes nothing.
  for (const bool accepted : {false, true}) {
    script_.Expect([&](QDialog& dialog) {
      EXPECT_EQ(application_->GetJobs().ActiveNumber(), 0U);
      accepted ? dialog.accept() : dialog.reject();
    });
    W().JobButtons().NewJobButton()->click();
    EXPECT_EQ(application_->GetJobs().ActiveNumber(), accepted ? 0U : 1U);
  }
  EXPECT_EQ(application_->GetJobs().Count(), 2U);
  // The menu of a button is about its job, whichever is on show.
  QTimer::singleShot(0, [] {
    auto* const menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    QAction* const remove = menu->actions().at(2);
    menu->setActiveAction(remove);
    QTest::keyClick(menu, Qt::Key_Return);
  });
  script_.ExpectBox(QMessageBox::Yes);
  emit W().JobButtons().MenuWanted(1, W().mapToGlobal(QPoint(20, 20)));
  EXPECT_TRUE(script_.LastText().contains("Erster"));
  ASSERT_EQ(application_->GetJobs().Count(), 1U);
  EXPECT_EQ(W().JobButtons().JobButton(1)->toolTip(), "Job 2\nBeschreibung von Job 2");
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
  W().Actions().Trigger(CommandId::RenameJob);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Chor");
}

TEST_F(JobStory, WhatWasEditedIsKeptAsTheSettingSays) {
  StartWithJob();
  EXPECT_NE(EditedAndBack(JobSaving::Never), "neu.mid");
  script_.ExpectBox(QMessageBox::No);
  EXPECT_NE(EditedAndBack(JobSaving::Ask), "neu.mid");
  EXPECT_EQ(script_.LastText(), QtText(texts::AskSaveActiveJob));
  EXPECT_EQ(EditedAndBack(JobSaving::Automatic), "neu.mid");
}

TEST_F(JobStory, TheShownJobIsDeletedAfterTheQuestion) {
  StartWithJob();
  NewJob("Zweiter");
  W().JobButtons().JobButton(1)->click();
  script_.ExpectBox(QMessageBox::No);
  W().Actions().Trigger(CommandId::DeleteJob);
  EXPECT_EQ(W().JobButtons().JobCount(), 3);
  script_.ExpectBox(QMessageBox::Yes);
  W().Actions().Trigger(CommandId::DeleteJob);
  EXPECT_TRUE(script_.LastText().startsWith(QtText(texts::AskDeleteJob)) &&
              script_.LastText().contains("Erster"));
  ASSERT_EQ(W().JobButtons().JobCount(), 2);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Zweiter");
  EXPECT_TRUE(W().JobButtons().JobButton(0)->isChecked()) << "the default job is shown";
  EXPECT_FALSE(Enabled(CommandId::DeleteJob));
  QApplication::processEvents();
  W().Actions().Trigger(CommandId::RestoreJob);
  ASSERT_EQ(W().JobButtons().JobCount(), 3);
  EXPECT_EQ(W().JobButtons().JobButton(1)->text(), "Erster");
  EXPECT_TRUE(W().JobButtons().JobButton(1)->isChecked()) << "the user wanted it";
  EXPECT_EQ(ActiveJob().filter, FilterId::MidiConverter);
  EXPECT_FALSE(Enabled(CommandId::RestoreJob));
}

// Another filter that was only looked at does not cost what stands in the field.
TEST_F(JobStory, AFilterThatWasLeftIsAsItWas) {
  StartWithJob();
  W().Target().Field()->setText("neu.mid");
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::MidiSearch));
  EXPECT_NE(W().Target().Field()->text(), "neu.mid");
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::MidiConverter));
  EXPECT_EQ(W().Target().Field()->text(), "neu.mid");
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

TEST_F(JobStory, WhatIsNoRegistryIsToldAboutAndStaysAsItIs) {
  const std::string text = "das ist keine Datenbank, sondern ein Text von einiger Länge ....................";
  directory_.Write("registry.sqlite", text);
  script_.ExpectBox(QMessageBox::Ok);
  Start();
  EXPECT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_TRUE(script_.LastText().contains(QtText(texts::RegistryWaits)));
  EXPECT_EQ(W().JobButtons().JobCount(), 1);
  NewJob("Erster");
  // At the end there is another try, another place, or the way back.
  const std::string elsewhere = directory_.File("jobs.reg");
  const auto answer = [this](TextId button) {
    script_.Expect([button](QDialog& dialog) {
      EXPECT_NE(dynamic_cast<QMessageBox&>(dialog).text().indexOf(QtText(texts::SessionNotSaved)), -1);
      for (auto* const each : dialog.findChildren<QAbstractButton*>()) {
        if (each->text() == QtText(button)) return each->click();
      }
      ADD_FAILURE() << "no button " << QtText(button).toStdString();
    });
  };
  script_.ExpectBox(QMessageBox::Yes);
  answer(texts::ButtonSaveAgain);
  answer(texts::ButtonCancel);
  W().close();
  EXPECT_TRUE(W().isVisible());
  script_.ExpectBox(QMessageBox::Yes);
  answer(texts::ButtonSaveElsewhere);
  script_.Expect([&](QDialog& dialog) {
    dialog.findChild<QLineEdit*>("fileNameEdit")->setText(ToQt(elsewhere));
    dialog.accept();
  });
  script_.ExpectBox(QMessageBox::Ok);
  W().close();
  EXPECT_FALSE(W().isVisible());
  EXPECT_EQ(test::Content(directory_.File("registry.sqlite")), text);
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(ImportRegFile(elsewhere, *registry));
  EXPECT_EQ(ReadJobs(*registry)->at(1).Text("Title"), "Erster");
}

// A registry that another program holds is waited for, and gets the changes as soon as it is free.
TEST_F(JobStory, AHeldRegistryGetsTheChangesWhenItIsFree) {
  StartWithJob();
  window_->EndWithoutQuestion();
  window_.reset();
  application_.reset();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(options_.registryPath.c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  script_.ExpectBox(QMessageBox::Ok);
  Start();
  EXPECT_TRUE(WaitFor([&] { return script_.Done(); }));
  EXPECT_TRUE(application_->WaitsForRegistry());
  NewJob("Zweiter");
  sqlite3_close(other);
  EXPECT_TRUE(WaitFor([&] { return !application_->WaitsForRegistry(); }));
  EXPECT_TRUE(WaitFor([&] { return W().JobButtons().JobCount() == 3; }));
  EXPECT_THAT(StoredTitles(), testing::ElementsAre("Erster", "Zweiter"));
}

// What the console does while the window is open comes into it, and stays after its end.
TEST_F(JobStory, ChangesOfOtherProgramsComeIn) {
  StartWithJob();
  Start();
  auto other = Registry::Open(options_.registryPath);
  ASSERT_TRUE(other);
  auto jobs = *ReadJobs(*other);
  jobs[0].SetText("Description", "von außen");
  jobs.push_back(jobs[1]);
  jobs.back().SetText("Title", "Von außen");
  ASSERT_EQ(WriteJobs(*other, jobs), Outcome::Success);
  EXPECT_TRUE(WaitFor([&] { return W().JobButtons().JobCount() == 3; }));
  EXPECT_EQ(W().JobButtons().JobButton(2)->text(), "Von außen");
  NewJob("Von innen");
  window_->EndWithoutQuestion();
  EXPECT_THAT(StoredTitles(), testing::ElementsAre("Erster", "Von außen", "Von innen"));
  EXPECT_EQ(ReadJobs(*other)->at(0).Text("Description"), "von außen") << "also of the job that was active";
}

TEST_F(JobStory, TheEndSaysWhichJobStillRuns) {
  const auto gate = std::make_shared<GatedRun>();
  UseGatedConverter(gate);
  StartWithJob();
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] { return gate->running == 1; }));
  script_.ExpectBox(QMessageBox::No);
  W().close();
  EXPECT_TRUE(script_.LastText().contains("Default Job")) << script_.LastText().toStdString();
  EXPECT_TRUE(W().isVisible());
  gate->open = true;
  script_.Expect([](QDialog& dialog) { dialog.accept(); });
  EXPECT_TRUE(WaitFor([&] { return gate->running == 0 && script_.Done(); }));
}

}  // namespace
}  // namespace ts5
