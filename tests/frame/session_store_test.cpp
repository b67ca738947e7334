// Two programs on one store: whatever each of them changed is there when both have saved.
#include "frame/session_store.h"

#include <gmock/gmock.h>

#include <random>
#include <set>

#include "run_support.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using test::IsOk;
using testing::Contains;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// "a=1|b=2" as values.
RegistryValues Values(std::string_view text) {
  RegistryValues values;
  for (const std::string_view pair : Split(text, '|')) {
    if (!pair.empty()) values.SetText(pair.substr(0, pair.find('=')), pair.substr(pair.find('=') + 1));
  }
  return values;
}

TEST(SessionMerge, EachValueByItselfAndGroupsAsAWhole) {
  struct Case {
    const char* what;
    std::string_view stored, ours, theirs, merged;
    std::vector<std::string> conflicts;
  };
  const Case cases[] = {
      {"nothing", "a=1", "a=1", "a=1", "a=1", {}},
      {"ours", "a=1", "a=2", "a=1", "a=2", {}},
      {"theirs", "a=1", "a=1", "a=3", "a=3", {}},
      {"both", "a=1", "a=2", "a=3", "a=2", {"a"}},
      {"the same", "a=1", "a=2", "a=2", "a=2", {}},
      {"new ones", "", "a=1", "b=1", "a=1|b=1", {}},
      {"deleted by us", "a=1", "", "a=1", "", {}},
      {"deleted by them", "a=1", "a=1", "", "", {}},
      {"a list is one thing",
       "SourceListFile 0001=x|SourceFilelistNum=1",
       "SourceListFile 0001=x|SourceListFile 0002=y|SourceFilelistNum=2",
       "SourceListFile 0001=z|SourceFilelistNum=1",
       "SourceListFile 0001=x|SourceListFile 0002=y|SourceFilelistNum=2",
       {"list"}},
  };
  for (const Case& test : cases) {
    const RegistryValues stored = Values(test.stored);
    const MergedValues merged =
        MergeValues({stored, stored, Values(test.ours), Values(test.theirs)}, JobValueGroup);
    EXPECT_EQ(merged.values, Values(test.merged)) << test.what;
    EXPECT_EQ(merged.conflicts, test.conflicts) << test.what;
  }
  // What loading made of a value is no change of ours; what the store never held is filled in.
  const RegistryValues stored = Values("SourcePath=/media/weg");
  const RegistryValues loaded = Values("SourcePath=/media|Title=Job");
  EXPECT_EQ(MergeValues({stored, loaded, loaded, stored}, JobValueGroup).values,
            Values("SourcePath=/media/weg|Title=Job"));
}

class SessionStoreTest : public testing::Test {
 protected:
  static const FilterModule* Find(FilterId id) {
    static const FilterModule converter = test::CopyModule(FilterId::MidiConverter);
    static const FilterModule other = test::CopyModule(FilterId::XmlConverter);
    if (id == FilterId::MidiConverter) return &converter;
    return id == FilterId::XmlConverter ? &other : nullptr;
  }

  // A program from its start on.
  struct Program {
    explicit Program(Registry& registry) : registry(registry) {
      JobSurroundings around;
      around.modules = Find;
      around.homeDirectory = "/heim";
      around.isDirectory = [](const std::string& path) { return path.starts_with("/heim"); };
      around.nativePath = [](const std::string& path) { return path; };
      around.driveOf = [](const std::string&) { return 0; };
      around.onDataDisc = [](const std::string&) { return false; };
      settings = store.ReadSettings(registry);
      jobs.emplace(*store.ReadJobs(registry, around), Find);
      store.Adopt(*jobs);
    }
    [[nodiscard]] Outcome Save() { return store.Save(registry, settings, *jobs); }
    [[nodiscard]] bool TakeOver() { return store.TakeOver(registry, settings, *jobs).value(); }
    std::size_t Add(const std::string& title) {
      Job job;
      job.title = title;
      job.filter = FilterId::MidiConverter;
      job.parameters = LoadParameters(Find(job.filter), {});
      return jobs->Append(std::move(job));
    }

    Registry& registry;
    SessionStore store{SettingsGround{"/programm", "/heim", {}}};
    Settings settings;
    std::optional<Jobs> jobs;
  };

  static std::vector<std::string> Titles(const Jobs& jobs) {
    std::vector<std::string> titles;
    for (const Job* const job : jobs.Saved()) titles.push_back(job->title);
    return titles;
  }
  std::vector<std::string> StoredTitles() {
    std::vector<std::string> titles;
    const auto jobs = ReadJobs(registry_);
    for (std::size_t i = 1; i < jobs->size(); ++i)
      titles.emplace_back((*jobs)[i].Text("Title").value_or("?"));
    return titles;
  }
  void StoreJobs(const std::vector<std::string>& titles) {
    Program program(registry_);
    for (const std::string& title : titles) program.Add(title);
    ASSERT_THAT(program.Save(), IsOk());
  }

  Registry registry_ = std::move(*Registry::Open(kRegistryInMemory));
};

TEST_F(SessionStoreTest, TwoProgramsKeepTheJobsOfBoth) {
  StoreJobs({"alt"});
  Program a(registry_);
  Program b(registry_);
  a.Add("von A");
  b.Add("von B");
  a.jobs->Rename(1, {"neu", ""});
  b.settings.suffix = "b";
  a.settings.searchWholePath = true;
  ASSERT_THAT(a.Save(), IsOk());
  ASSERT_THAT(b.Save(), IsOk());
  ASSERT_THAT(a.Save(), IsOk()) << "again, with nothing new";
  EXPECT_THAT(StoredTitles(), ElementsAre("neu", "von A", "von B"));
  const Program after(registry_);
  EXPECT_EQ(after.settings.suffix, "b");
  EXPECT_TRUE(after.settings.searchWholePath);
}

TEST_F(SessionStoreTest, DeletedJobsStayDeletedAndTheOthersAreFoundAgain) {
  StoreJobs({"eins", "zwei", "drei", "vier"});
  Program a(registry_);
  Program b(registry_);
  a.jobs->Drop(1);
  b.jobs->Drop(3);
  (*b.jobs)[3].destinationName = "/ziel";  // vier
  ASSERT_THAT(a.Save(), IsOk());
  ASSERT_THAT(b.Save(), IsOk());
  EXPECT_THAT(StoredTitles(), ElementsAre("zwei", "vier"));
  EXPECT_EQ(ReadJobs(registry_)->at(2).Text("DestFilename"), "/ziel");
  // One that was changed by the other program is not lost by being deleted here.
  Program c(registry_);
  Program d(registry_);
  (*c.jobs)[1].destinationName = "/neu";
  d.jobs->Drop(1);
  ASSERT_THAT(c.Save(), IsOk());
  ASSERT_THAT(d.Save(), IsOk());
  EXPECT_THAT(StoredTitles(), UnorderedElementsAre("zwei", "vier"));
}

TEST_F(SessionStoreTest, WhereBothChangedTheSameBothAreKept) {
  StoreJobs({"eins"});
  Program a(registry_);
  Program b(registry_);
  (*a.jobs)[1].destinationName = "/a";
  (*b.jobs)[1].destinationName = "/b";
  ASSERT_THAT(a.Save(), IsOk());
  ASSERT_THAT(b.Save(), IsOk());
  ASSERT_THAT(b.Save(), IsOk());
  const auto jobs = ReadJobs(registry_);
  ASSERT_EQ(jobs->size(), 3U);
  EXPECT_EQ(jobs->at(1).Text("DestFilename"), "/b");
  EXPECT_EQ(jobs->at(2).Text("DestFilename"), "/a");
}

TEST_F(SessionStoreTest, AnOpenProgramTakesOverWhatOthersDo) {
  StoreJobs({"eins", "zwei"});
  Program open(registry_);
  const JobId second = (*open.jobs)[2].Id();
  EXPECT_FALSE(open.TakeOver());
  {
    Program other(registry_);
    other.jobs->Drop(1);
    (*other.jobs)[1].destinationName = "/ziel";
    other.Add("neu");
    other.settings.suffix = "x";
    other.settings.skinLayout = other.settings.pendingSkinLayout = SkinLayout::Windows;
    ASSERT_THAT(other.Save(), IsOk());
  }
  EXPECT_TRUE(open.TakeOver());
  EXPECT_FALSE(open.TakeOver());
  EXPECT_THAT(Titles(*open.jobs), ElementsAre("zwei", "neu"));
  EXPECT_EQ((*open.jobs)[1].destinationName, "/ziel");
  EXPECT_EQ((*open.jobs)[1].Id(), second) << "it is the same job";
  EXPECT_EQ(open.settings.suffix, "x");
  EXPECT_EQ(open.settings.skinLayout, SkinLayout::Stavora5) << "what is shown stays till the next start";
  ASSERT_THAT(open.Save(), IsOk());
  EXPECT_THAT(StoredTitles(), ElementsAre("zwei", "neu"));
}

TEST_F(SessionStoreTest, ARunningJobIsLeftAlone) {
  StoreJobs({"eins"});
  Program open(registry_);
  (*open.jobs)[1].run->state = RunState::Running;
  {
    Program other(registry_);
    (*other.jobs)[1].destinationName = "/ziel";
    ASSERT_THAT(other.Save(), IsOk());
  }
  EXPECT_FALSE(open.TakeOver());
  EXPECT_EQ((*open.jobs)[1].destinationName, "");
  (*open.jobs)[1].run->state = RunState::Idle;
  ASSERT_THAT(open.Save(), IsOk());
  EXPECT_EQ(ReadJobs(registry_)->at(1).Text("DestFilename"), "/ziel") << "not overwritten either";
}

TEST_F(SessionStoreTest, WhatOtherFiltersHoldSurvivesARestart) {
  {
    Program program(registry_);
    Job& job = (*program.jobs)[program.Add("eins")];
    static_cast<test::CopyParameters&>(*job.parameters).device = 7;
    struct : JobDialogs {
      bool Confirm(std::string_view, MessageIcon, Answer) override { return true; }
      void Tell(std::string_view, MessageIcon) override {}
    } dialogs;
    job.stored.SetText("Melody", "60 240");
    ASSERT_TRUE(program.jobs->SwitchFilter(job, FilterId::XmlConverter, dialogs));
    ASSERT_THAT(program.Save(), IsOk());
  }
  EXPECT_EQ(registry_.Read(R"(HKLM\software\qlw\Stavora-dialog\5.0\Jobs\Job 0001)")->Find("Melody"), nullptr)
      << "the key itself holds the current filter only";
  const Program again(registry_);
  EXPECT_EQ((*again.jobs)[1].stored.Text("Melody"), "60 240");
}

// The texts that programs leave: job by title, with the destination that its last change gave it.
TEST_F(SessionStoreTest, NothingIsLostWhateverTwoProgramsDo) {
  std::mt19937 random(20261125);
  for (int round = 0; round < 60; ++round) {
    registry_ = std::move(*Registry::Open(kRegistryInMemory));
    StoreJobs({"a", "b", "c", "d"});
    std::vector<std::unique_ptr<Program>> programs;
    for (int i = 0; i < 2; ++i) programs.push_back(std::make_unique<Program>(registry_));
    std::set<std::string> expected{"a", "b", "c", "d"};  // jobs that nobody deleted
    std::set<std::string> destinations;
    int number = 0;
    for (int step = 0; step < 12; ++step) {
      Program& program = *programs[random() % 2];
      const std::size_t count = program.jobs->Count();
      const std::size_t job = count == 0 ? 0 : 1 + random() % count;
      switch (random() % 6) {
        case 0: {
          const std::string title = "neu" + std::to_string(number++);
          program.Add(title);
          expected.insert(title);
          break;
        }
        case 1:
          if (job > 0 && expected.size() > 1) {
            const std::string title = (*program.jobs)[job].title;
            expected.erase(title);
            destinations.erase((*program.jobs)[job].destinationName);
            program.jobs->Drop(job);
          }
          break;
        case 2:
          ASSERT_THAT(program.Save(), IsOk());
          break;
        case 3:
          (void)program.TakeOver();
          break;
        default:
          if (job > 0) {
            Job& changed = (*program.jobs)[job];
            destinations.erase(changed.destinationName);
            changed.destinationName = "/ziel" + std::to_string(number++);
            destinations.insert(changed.destinationName);
          }
      }
    }
    for (const auto& program : programs) ASSERT_THAT(program->Save(), IsOk());
    const auto jobs = ReadJobs(registry_);
    std::set<std::string> titles;
    std::set<std::string> there;
    for (const RegistryValues& job : *jobs) {
      titles.emplace(job.Text("Title").value_or("?"));
      there.emplace(job.Text("DestFilename").value_or(""));
    }
    for (const std::string& title : expected) EXPECT_THAT(titles, Contains(title)) << round;
    for (const std::string& destination : destinations) EXPECT_THAT(there, Contains(destination)) << round;
  }
}

}  // namespace
}  // namespace ts5
