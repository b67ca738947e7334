#include "frame/jobs.h"

#include <gmock/gmock.h>

#include "run_support.h"

namespace ts5 {
namespace {

using test::CopyModule;
using test::CopyParameters;
using testing::ElementsAre;
using testing::IsEmpty;

class ScriptedWindow : public JobWindow {
 public:
  bool Confirm(std::string_view question, MessageIcon, Answer) override {
    asked.emplace_back(question);
    return answer;
  }
  void Tell(std::string_view text, MessageIcon) override { told.emplace_back(text); }
  std::optional<DestinationPanel> Panel() override { return panel; }
  bool Show(Job& job) override {
    shown.push_back(job.title);
    return shows;
  }

  bool answer = true;
  bool shows = true;
  std::optional<DestinationPanel> panel = DestinationPanel{};
  std::vector<std::string> asked;
  std::vector<std::string> told;
  std::vector<std::string> shown;
};

class JobsTest : public testing::Test {
 protected:
  JobsTest() : jobs_(Stored(), Find) {}

  static const FilterModule* Find(FilterId id) {
    static const FilterModule converter = CopyModule(FilterId::MidiConverter);
    static const FilterModule player = CopyModule(FilterId::MidiPlayer);
    if (id == FilterId::MidiConverter) return &converter;
    return id == FilterId::MidiPlayer ? &player : nullptr;
  }
  static Job Converter(const std::string& title) {
    Job job;
    job.title = title;
    job.filter = FilterId::MidiConverter;
    job.parameters = LoadParameters(Find(job.filter), {});
    job.destinationName = "alt";
    return job;
  }
  static StoredJobs Stored() {
    StoredJobs stored{.defaultJob = Converter("Default Job"), .saved = {}};
    for (const char* const title : {"eins", "zwei", "drei"}) stored.saved.push_back(Converter(title));
    return stored;
  }
  static std::int32_t& Device(Job& job) { return static_cast<CopyParameters&>(*job.parameters).device; }

  ScriptedWindow window_;
  Jobs jobs_;
};

TEST_F(JobsTest, PolicyDecidesWhatBecomesOfEdits) {
  struct Case {
    JobSaving policy;
    bool answer;
    bool asks;
    std::string destination;
    std::int32_t device;
  };
  for (const Case& c :
       {Case{JobSaving::Automatic, false, false, "neu", 5}, Case{JobSaving::Never, true, false, "alt", -1},
        Case{JobSaving::Ask, true, true, "neu", 5}, Case{JobSaving::Ask, false, true, "alt", -1}}) {
    Jobs jobs(Stored(), Find);
    ScriptedWindow window;
    ASSERT_TRUE(jobs.Activate(1, c.policy, window));
    window.panel->name = "neu";
    window.answer = c.answer;
    Device(jobs[1]) = 5;
    ASSERT_TRUE(jobs.Activate(0, c.policy, window));
    EXPECT_EQ(jobs[1].destinationName, c.destination);
    EXPECT_EQ(Device(jobs[1]), c.device);
    EXPECT_EQ(window.asked.size(), c.asks ? 1U : 0U);
    EXPECT_THAT(window.shown, ElementsAre("eins", "Default Job"));
  }
}

TEST_F(JobsTest, RunningJobIsLeftAlone) {
  ASSERT_TRUE(jobs_.Activate(2, JobSaving::Never, window_));
  Device(jobs_[2]) = 5;
  jobs_[2].run->state = RunState::Running;
  ASSERT_TRUE(jobs_.Activate(0, JobSaving::Never, window_));
  EXPECT_EQ(Device(jobs_[2]), 5);
  EXPECT_TRUE(jobs_.AnyRunning());
  EXPECT_FALSE(jobs_.MayRemove(2));
  EXPECT_FALSE(jobs_.SwitchFilter(jobs_[2], FilterId::MidiPlayer, window_));
}

TEST_F(JobsTest, FailuresAreTold) {
  window_.panel = std::nullopt;
  window_.shows = false;
  EXPECT_FALSE(jobs_.Activate(1, JobSaving::Automatic, window_));
  EXPECT_THAT(window_.told, ElementsAre("Der Job konnte nicht gespeichert werden.",
                                        "Der Job konnte nicht aktiviert werden."));
  EXPECT_EQ(jobs_.ActiveNumber(), 0U);
  EXPECT_FALSE(jobs_.Activate(4, JobSaving::Automatic, window_));
}

TEST_F(JobsTest, NewJobIsADeepCopyOfTheDefaultJob) {
  Job& standard = jobs_[0];
  standard.files.Append({.path = "/a.mid"});
  standard.filterStatus.fill(7);
  Device(standard) = 3;
  EXPECT_EQ(jobs_.NewTitle().title, "Job 4");
  const auto number = jobs_.Create({.title = "Ein viel zu langer Name", .description = ""});
  ASSERT_EQ(number, 4U);
  Job& job = jobs_[4];
  EXPECT_EQ(job.title, "Ein viel zu ");
  EXPECT_EQ(job.description, "Beschreibung von Job 4");
  EXPECT_EQ(job.filterStatus, NewFilterStatus());
  EXPECT_EQ(job.files.Size(), 1U);
  Device(standard) = 4;
  standard.files.Clear();
  EXPECT_EQ(Device(job), 3);
  EXPECT_EQ(job.files.Size(), 1U);
  EXPECT_NE(job.run.Shared(), standard.run.Shared());

  standard.run->state = RunState::Running;
  EXPECT_FALSE(jobs_.Create({})) << "not while it runs";
  standard.run->state = RunState::Idle;
  ASSERT_TRUE(jobs_.Activate(1, JobSaving::Automatic, window_));
  EXPECT_FALSE(jobs_.Create({})) << "not while another is active";
}

TEST_F(JobsTest, NameAndRunOutliveAnUndo) {
  ASSERT_TRUE(jobs_.Activate(1, JobSaving::Never, window_));
  const auto run = jobs_[1].run.Shared();
  jobs_.Rename(1, {.title = "neu", .description = ""});
  Device(jobs_[1]) = 5;
  ASSERT_TRUE(jobs_.Activate(0, JobSaving::Never, window_));
  EXPECT_EQ(jobs_[1].title, "neu");
  EXPECT_EQ(Device(jobs_[1]), -1);
  EXPECT_EQ(jobs_[1].run.Shared(), run);
}

TEST_F(JobsTest, RemovingMovesTheOthersDown) {
  ASSERT_TRUE(jobs_.Activate(3, JobSaving::Automatic, window_));
  window_.answer = false;
  EXPECT_FALSE(jobs_.Remove(2, window_));
  window_.answer = true;
  EXPECT_FALSE(jobs_.Remove(0, window_));
  EXPECT_TRUE(jobs_.Remove(2, window_));
  EXPECT_EQ(window_.asked, std::vector<std::string>(2, "Wollen Sie den Job wirklich löschen?\n\nzwei: "));
  EXPECT_EQ(jobs_.Count(), 2U);
  EXPECT_EQ(jobs_.Active().title, "drei");
  EXPECT_EQ(jobs_.ActiveNumber(), 2U);
  EXPECT_TRUE(jobs_.Remove(2, window_));
  EXPECT_EQ(jobs_.ActiveNumber(), 0U);
  EXPECT_EQ(window_.shown.back(), "Default Job");
}

TEST_F(JobsTest, TheJobThatWasRemovedLastComesBackToItsPlace) {
  EXPECT_FALSE(jobs_.Restore());
  const JobId id = jobs_[1].Id();
  ASSERT_TRUE(jobs_.Remove(1, window_));
  ASSERT_TRUE(jobs_.Activate(2, JobSaving::Automatic, window_));
  EXPECT_EQ(jobs_.Restore(), 1U);
  EXPECT_EQ(jobs_[1].title, "eins");
  EXPECT_EQ(jobs_[1].Id(), id);
  EXPECT_EQ(jobs_.Active().title, "drei") << "the active job has moved up with its number";
  EXPECT_FALSE(jobs_.Restore()) << "once";
  ASSERT_TRUE(jobs_.Remove(3, window_));
  ASSERT_TRUE(jobs_.Remove(2, window_));
  EXPECT_EQ(jobs_.Restore(), 2U);
  EXPECT_EQ(jobs_.Count(), 2U);
}

TEST_F(JobsTest, SwitchingTheFilterKeepsItsValues) {
  Job& job = jobs_[1];
  Device(job) = 9;
  job.stored.SetText("Other", "x");
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::XmlConverter, window_));
  EXPECT_FALSE(job.parameters) << "no module";
  EXPECT_EQ(job.previousFilter, FilterId::MidiConverter);
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::MidiPlayer, window_));
  EXPECT_EQ(Device(job), 9) << "stored under the same name";
  EXPECT_EQ(job.destinationDevice, kMidiDeviceBase);
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::MidiConverter, window_));
  EXPECT_EQ(Device(job), 9);
  EXPECT_EQ(job.destinationDevice, kNoDevice);
  EXPECT_EQ(job.destinationName, "alt") << "for the same sources";
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::MidiPlayer, window_));
  EXPECT_EQ(job.destinationName, "");
  job.directory.names = {"anders.mid"};
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::MidiConverter, window_));
  EXPECT_EQ(job.destinationName, "") << "it was for another file";
  EXPECT_THAT(window_.asked, IsEmpty());
}

TEST_F(JobsTest, BurnerSwitchCostsTheListAndAsks) {
  Job& job = jobs_[1];
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::CdBurner, window_));
  EXPECT_THAT(window_.asked, IsEmpty()) << "an empty list is nothing to lose";
  job.files.Append({.path = "/a.wav"});
  window_.answer = false;
  EXPECT_FALSE(jobs_.SwitchFilter(job, FilterId::MidiConverter, window_));
  EXPECT_EQ(job.filter, FilterId::CdBurner);
  EXPECT_EQ(job.files.Size(), 1U);
  window_.answer = true;
  EXPECT_TRUE(jobs_.SwitchFilter(job, FilterId::MidiConverter, window_));
  EXPECT_TRUE(job.files.Empty());
  ASSERT_EQ(window_.asked.size(), 2U);
  EXPECT_TRUE(window_.asked[0].starts_with("Wenn Sie zu diesem Zeitpunkt den Filter wechseln"));
}

TEST_F(JobsTest, PanelGoesIntoTheJob) {
  const DestinationPanel panel{
      .name = "n", .screen = true, .midiDevice = 2, .audioDevice = -1, .drive = 3, .printer = 4};
  struct Case {
    FilterId filter;
    std::string name;
    bool screen;
    std::int32_t device;
  };
  for (const Case& c :
       {Case{FilterId::MidiConverter, "n", false, -1}, Case{FilterId::MidiSearch, "n", true, -1},
        Case{FilterId::MidiPlayer, "", false, 1002}, Case{FilterId::AudioPlayer, "", false, 0},
        Case{FilterId::CdBurner, "", false, 3}, Case{FilterId::Artworker, "", false, 4}}) {
    Job job;
    job.filter = c.filter;
    CommitDestination(job, panel);
    EXPECT_EQ(job.destinationName, c.name);
    EXPECT_EQ(job.destinationIsScreen, c.screen);
    EXPECT_EQ(job.destinationDevice, c.device);
  }
}

TEST_F(JobsTest, EndUndoesNothing) {
  ASSERT_TRUE(jobs_.Activate(1, JobSaving::Ask, window_));
  window_.panel->name = "neu";
  window_.answer = false;
  Device(jobs_[1]) = 5;
  jobs_.CommitAtEnd(JobSaving::Ask, window_);
  EXPECT_EQ(jobs_[1].destinationName, "alt");
  EXPECT_EQ(Device(jobs_[1]), 5);
  jobs_.CommitAtEnd(JobSaving::Automatic, window_);
  EXPECT_EQ(jobs_[1].destinationName, "neu");
}

}  // namespace
}  // namespace ts5
