#include "frame/job_store.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <random>

#include "frame/cd_tracks.h"
#include "frame/filter_catalogue.h"
#include "platform/disc/volumes.h"
#include "platform/store/registry.h"
#include "run_support.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::string_literals;
using test::CopyModule;
using test::CopyParameters;
using test::FailsWith;
using test::IsOk;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* kRoot = R"(HKLM\software\qlw\Stavora-dialog\5.0)";

const FilterModule* FindCopyModule(FilterId id) {
  static const FilterModule converter = CopyModule(FilterId::MidiConverter);
  static const FilterModule burner = CopyModule(FilterId::CdBurner);
  if (id == FilterId::MidiConverter) return &converter;
  return id == FilterId::CdBurner ? &burner : nullptr;
}

JobSurroundings Surroundings() {
  JobSurroundings around;
  around.modules = FindCopyModule;
  around.homeDirectory = "/home/anna";
  around.audioDevices = 2;
  around.midiDevices = 3;
  around.isDirectory = [](const std::string& path) {
    return path == "/home/anna" || path == "/home/anna/Musik" || path == "/media/cd" || path == "/";
  };
  around.nativePath = [](const std::string& path) {
    return path.starts_with("C:\\") ? "/home/anna/" + path.substr(3) : path;
  };
  around.driveOf = [](const std::string& path) {
    return path.starts_with("/home") ? 0 : path == "/media/cd" ? 2 : 1;
  };
  around.onDataDisc = [](const std::string& path) { return path == "/media/cd"; };
  return around;
}

RegistryValues Values(std::initializer_list<std::pair<const char*, std::string>> texts) {
  RegistryValues values;
  for (const auto& [name, text] : texts) values.SetText(name, text);
  return values;
}

Job Loaded(std::initializer_list<std::pair<const char*, std::string>> texts, std::size_t number = 1) {
  return JobFromValues(Values(texts), number, Surroundings());
}

TEST(JobStore, TextsAndTheirLimits) {
  const Job first = Loaded({}, 0);
  EXPECT_EQ(first.title + ", " + first.description, "Default Job, Beschreibung des Default-Job");
  EXPECT_EQ(first.filter, FilterId::None);
  EXPECT_FALSE(first.parameters);
  EXPECT_EQ(Loaded({{"Title", "Zwölf Zeichen"}}, 7).title, "Job 7") << "thirteen characters";
  EXPECT_EQ(Loaded({{"Title", "Zwölf Zeiche"}}).title, "Zwölf Zeiche");
  EXPECT_EQ(Loaded({{"Title", ""}}, 2).title, "Job 2");
  EXPECT_EQ(Loaded({{"Description", std::string(80, 'x')}}, 2).description, "Beschreibung von Job 2");
  EXPECT_EQ(Loaded({{"Description", std::string(79, 'x')}}).description, std::string(79, 'x'));
  EXPECT_EQ(Loaded({{"DestFilename", std::string(300, 'x')}}).destinationName, "");
}

TEST(JobStore, SourceDirectoryFallsBack) {
  struct Case {
    const char* path;
    const char* drive;
    std::string expected;
    std::int32_t expectedDrive;
  };
  for (const Case& c : {
           Case{"/home/anna/Musik", "0", "/home/anna/Musik", 0},
           Case{"/home/anna/Musik/alt/sehr alt", "0", "/home/anna/Musik", 0},
           Case{"C:\\Musik\\weg", "0", "/home/anna/Musik", 0},
           Case{"/gone/for/good", "1", "/home/anna", 0},
           Case{"/", "1", "/", 1},
           Case{"/home/anna/Musik", "-1", "/home/anna/Musik", -1},
           Case{"/gone/for/good", "-1", "/home/anna", -1},
           Case{"/home/anna/Musik", "Unfug", "/home/anna/Musik", -1},
           Case{"", "-1", "", -1},
           Case{"/media/cd", "2", "/media/cd", 2},
       }) {
    const Job job = Loaded({{"SourcePath", c.path}, {"SourceDrive", c.drive}});
    EXPECT_EQ(job.directory.path, c.expected) << c.path;
    EXPECT_EQ(job.sourceDrive, c.expectedDrive) << c.path;
  }
  // The default job does not start on a disc of data.
  const Job job = Loaded({{"SourcePath", "/media/cd"}, {"SourceDrive", "2"}}, 0);
  EXPECT_EQ(job.directory.path, "/home/anna");
  EXPECT_EQ(job.sourceDrive, 0);
}

TEST(JobStore, ListsWithHolesAndLies) {
  const Job job = Loaded({{"SourcePath", "/home/anna"},
                          {"SourceFileNum", "3"},
                          {"SourceFile 0001", "a.mid"},
                          {"SourceFile 0003", "c.mid"},
                          {"SourceFile 0004", "beyond.mid"},
                          {"SourceFileSelNum", "2"},
                          {"SourceFileSels", "4 7 9"},
                          {"SourceFilelistNum", "4"},
                          {"SourceListFile 0001", "/x/a.mid"},
                          {"SourceListFile 0002", ""},
                          {"SourceListFile 0004", "C:\\d*1.mid"},
                          {"SourceFilelistSelNum", "9"},
                          {"SourceFilelistSels", "1 0 5 x 1"}});
  EXPECT_THAT(job.directory.names, ElementsAre("a.mid", "", "c.mid"));
  EXPECT_THAT(job.directory.indices, ElementsAre(4U, 7U));
  ASSERT_EQ(job.files.Size(), 2U);
  EXPECT_EQ(job.files[0].path, "/x/a.mid");
  EXPECT_EQ(job.files[1].path, "/home/anna/d*1.mid");
  EXPECT_THAT(job.files.Selection(), ElementsAre(0U, 1U));
  // A count that lies costs no memory.
  EXPECT_LE(Loaded({{"SourceFileNum", "4000000000"}}).directory.names.size(), 1U);
  EXPECT_THAT(Loaded({{"SourceFileNum", "-3"}}).directory.names, IsEmpty());
}

TEST(JobStore, BurnerEntriesCarryTheirTimes) {
  const Job job = Loaded({{"Filter", "11"},
                          {"SourcePath", "/home/anna"},
                          {"SourceDrive", "-1"},
                          {"SourceFilelistNum", "3"},
                          {"SourceListFile 0001", "/x/a.wav*185|2"},
                          {"SourceListFile 0002", "/x/b.wav*60|0"},
                          {"SourceListFile 0003", "PLEX CD\\Track 3*200|4"}});
  ASSERT_EQ(job.files.Size(), 3U);
  EXPECT_EQ(job.files[0], (FileListEntry{"/x/a.wav", false, 185, 2}));
  EXPECT_EQ(job.files[2], (FileListEntry{"PLEX CD\\Track 3", true, 200, 4}));
  EXPECT_EQ(job.files.Total(), 451U);
  const RegistryValues again = ValuesOfJob(job, FindCopyModule);
  EXPECT_EQ(again.Text("SourceListFile 0001"), "/x/a.wav*185|2");
  EXPECT_EQ(again.Text("SourceListFile 0003"), "PLEX CD\\Track 3*200|4");
}

TEST(JobStore, DevicesStayInTheirLists) {
  struct Case {
    FilterId filter;
    const char* stored;
    std::int32_t device;
  };
  for (const Case& c : {Case{FilterId::AudioPlayer, "1", 1}, Case{FilterId::AudioPlayer, "2", 0},
                        Case{FilterId::AudioPlayer, "-1", 0}, Case{FilterId::MidiPlayer, "1002", 1002},
                        Case{FilterId::MidiPlayer, "1003", 1000}, Case{FilterId::ScorePlayer, "1", 1001},
                        Case{FilterId::MidiConverter, "-1", -1}, Case{FilterId::CdBurner, "1004", 4},
                        Case{FilterId::MidiPlayer, "99999999999", 1000}}) {
    const Job job =
        Loaded({{"Filter", std::to_string(static_cast<int>(c.filter))}, {"DestDevice", c.stored}});
    EXPECT_EQ(job.destinationDevice, c.device) << c.stored;
  }
}

TEST(JobStore, FlagsAndWindows) {
  const std::string status = "1 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16 4294967295";
  const Job job = Loaded({{"FilterFixed", "1"},
                          {"Filterstatus", status},
                          {"SizingRect", "-4 0 800 600"},
                          {"DestScreen?", "1"},
                          {"SourceMediumFileWinMax", "1"},
                          {"SourcePath", "/home/anna"},
                          {"SourceDrive", "-1"}});
  EXPECT_TRUE(job.filterFixed);
  EXPECT_EQ(job.filterStatus[16], 0xFFFFFFFF);
  EXPECT_EQ(job.sizing, (SizingRectangle{-4, 0, 800, 600}));
  EXPECT_TRUE(job.destinationIsScreen);
  EXPECT_TRUE(job.fileWindowMaximised);
  EXPECT_FALSE(Loaded({{"FilterFixed", "1"}}, 0).filterFixed) << "never for the default job";
  EXPECT_FALSE(Loaded({{"FilterFixed", "yes"}}).filterFixed);
  EXPECT_FALSE(Loaded({{"SourceMediumFileWinMax", "1"}}).fileWindowMaximised) << "list mode only";
  EXPECT_EQ(Loaded({{"Filterstatus", "1 2 3"}}).filterStatus, NewFilterStatus());
  EXPECT_EQ(Loaded({{"SizingRect", "1 2 3"}}).sizing, SizingRectangle{});
  for (const std::string& filter : {std::to_string(kFilterCount), "-2"s, "x"s, "5000000000"s})
    EXPECT_EQ(Loaded({{"Filter", filter}}).filter, FilterId::None);
}

TEST(JobStore, OnlyTheCurrentFiltersValuesAreWritten) {
  Job job = Loaded({{"Filter", "5"}, {"Extension", "rmi"}, {"Kept", "1"}, {"SamplesPerSec", "44100"}});
  EXPECT_EQ(static_cast<CopyParameters&>(*job.parameters).extension, "rmi");
  static_cast<CopyParameters&>(*job.parameters).extension = "rdl";
  const RegistryValues values = ValuesOfJob(job, FindCopyModule);
  EXPECT_EQ(values.Text("Extension"), "rdl");
  EXPECT_EQ(values.Text("Kept"), "1");
  EXPECT_EQ(values.Find("SamplesPerSec"), nullptr);
  EXPECT_EQ(values.Find("DestFilename"), nullptr) << "no destination yet";
}

TEST(JobStore, FilterWithoutModuleKeepsItsValues) {
  RegistryValues values = Values({{"Filter", "12"},
                                  {"GrabSpeed", "3"},
                                  {"DestFilename", "/x"},
                                  {"DestFilename 0001", "Track01.wav"},
                                  {"Title", "Grabber"}});
  const std::uint8_t bytes[] = {0, 1, 255};
  values.SetBinary("Melody", bytes);
  const Job job = JobFromValues(values, 1, Surroundings());
  EXPECT_FALSE(job.parameters);
  const RegistryValues again = ValuesOfJob(Job(job), FindCopyModule);
  for (const char* const name : {"GrabSpeed", "DestFilename 0001", "DestFilename", "Title", "Melody"}) {
    ASSERT_NE(again.Find(name), nullptr) << name;
    EXPECT_EQ(*again.Find(name), *values.Find(name)) << name;
  }
}

// --- whole stores

Job RandomJob(std::mt19937& random) {
  const auto pick = [&](unsigned count) { return static_cast<unsigned>(random()) % count; };
  Job job;
  job.title = "T" + std::to_string(pick(1000)) + "ä";
  job.description = "D" + std::to_string(pick(100000)) + " \"Ü\"";
  job.directory.path = pick(2) == 0 ? "/home/anna/Musik" : "/";
  job.sourceDrive = pick(2) == 0 ? kListModeDrive : (job.directory.path == "/" ? 1 : 0);
  const FilterId filters[] = {FilterId::None, FilterId::MidiConverter, FilterId::CdBurner,
                              FilterId::MidiPlayer, FilterId::XmlConverter};
  job.filter = job.previousFilter = filters[pick(5)];
  for (unsigned i = pick(5); i > 0; --i) job.directory.names.push_back("n" + std::to_string(i) + ".mid");
  for (unsigned i = pick(5); i > 0; --i) job.directory.indices.push_back(pick(100));
  const bool burner = job.filter == FilterId::CdBurner;
  for (unsigned i = pick(6); i > 0; --i) {
    job.files.Append({.path = "/x/f " + std::to_string(pick(100)) + "*.wav",
                      .duration = burner ? pick(5000) : 0,
                      .pause = burner ? pick(10) : 0});
  }
  std::vector<std::size_t> selected;
  for (std::size_t i = 0; i < job.files.Size(); ++i) {
    if (pick(2) == 0) selected.push_back(i);
  }
  job.files.Select(selected);
  job.fileWindowMaximised = job.Mode() == SourceMode::List && pick(2) == 0;
  job.sizing = {static_cast<std::int32_t>(pick(9)) - 4, 1, 2, static_cast<std::int32_t>(pick(4000))};
  job.filterFixed = pick(2) == 0;
  for (auto& word : job.filterStatus) word = static_cast<std::uint32_t>(random());
  if (const FilterModule* const module = FindCopyModule(job.filter)) {
    RegistryValues values;
    values.SetInteger("Device", static_cast<int>(pick(90)));
    job.parameters = LoadParameters(module, values);
  } else if (job.filter == FilterId::XmlConverter) {
    job.stored.SetInteger("XMLConvProps", pick(100));
  }
  if (pick(2) == 0) job.destinationName = "/ziel/d.mid";
  job.destinationIsScreen = pick(2) == 0;
  job.destinationDevice = job.filter == FilterId::MidiPlayer ? 1000 + static_cast<std::int32_t>(pick(3)) : 7;
  return job;
}

TEST(JobStore, RoundTripOfWholeStores) {
  std::mt19937 random(4711);
  const test::TemporaryDirectory place;
  for (int round = 0; round < 20; ++round) {
    const std::string path = place.File("registry" + std::to_string(round));
    Job defaultJob = RandomJob(random);
    defaultJob.filterFixed = false;
    std::vector<Job> saved;
    for (unsigned i = static_cast<unsigned>(random()) % 6; i > 0; --i) saved.push_back(RandomJob(random));
    std::vector<const Job*> pointers;
    for (const Job& job : saved) pointers.push_back(&job);
    {
      auto registry = Registry::Open(path);
      ASSERT_TRUE(registry);
      ASSERT_THAT(SaveJobs(*registry, defaultJob, pointers, FindCopyModule), IsOk());
    }
    auto registry = Registry::Open(path);
    ASSERT_TRUE(registry);
    const auto loaded = LoadJobs(*registry, Surroundings());
    ASSERT_TRUE(loaded);
    ASSERT_EQ(loaded->saved.size(), saved.size());
    for (std::size_t i = 0; i <= saved.size(); ++i) {
      const Job& before = i == 0 ? defaultJob : saved[i - 1];
      const Job& after = i == 0 ? loaded->defaultJob : loaded->saved[i - 1];
      ASSERT_EQ(ValuesOfJob(after, FindCopyModule), ValuesOfJob(before, FindCopyModule)) << i;
      ASSERT_EQ(after.files, before.files);
      ASSERT_EQ(after.directory, before.directory);
      ASSERT_EQ(after.filterStatus, before.filterStatus);
      ASSERT_EQ(after.sizing, before.sizing);
      ASSERT_EQ(static_cast<bool>(after.parameters), static_cast<bool>(before.parameters));
    }
  }
}

// Fewer jobs leave the old keys unread; where the key with their number is lost, the jobs are not.
TEST(JobStore, TheNumberOfJobsCountsAsLongAsItIsThere) {
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  std::vector<Job> jobs(3);
  for (std::size_t i = 0; i < jobs.size(); ++i) jobs[i].title = std::string(1, static_cast<char>('a' + i));
  ASSERT_THAT(SaveJobs(*registry, Job(), {&jobs[0], &jobs[1], &jobs[2]}, FindCopyModule), IsOk());
  ASSERT_THAT(SaveJobs(*registry, Job(), {&jobs[0], &jobs[2]}, FindCopyModule), IsOk());
  const auto loaded = LoadJobs(*registry, Surroundings());
  ASSERT_EQ(loaded->saved.size(), 2U);
  EXPECT_EQ(loaded->saved[1].title, "c");
  EXPECT_EQ(registry->Read(std::string(kRoot) + R"(\Jobs\Job 0003)")->Text("Title"), "c");
  EXPECT_EQ(registry->Read(kRoot)->Text("Job Number"), "2");
  ASSERT_THAT(registry->Write(kRoot, {}), IsOk());
  EXPECT_EQ(LoadJobs(*registry, Surroundings())->saved.size(), 3U);
}

// A program that saves one generation of jobs after the other is killed; what is left is one of them, whole.
TEST(JobStore, SurvivesAKillAtAnyMoment) {
  const test::TemporaryDirectory place;
  const std::string path = place.File("registry");
  ASSERT_TRUE(Registry::Open(path));
  std::mt19937 random(99);
  for (int round = 0; round < 8; ++round) {
    const pid_t child = test::StartChild([&path] {
      auto registry = Registry::Open(path);
      for (int generation = 0; registry; ++generation) {
        std::vector<Job> jobs(static_cast<std::size_t>(5 + generation % 20));
        std::vector<const Job*> pointers;
        for (Job& job : jobs) {
          job.title = std::to_string(generation);
          for (int i = 0; i < 50; ++i) job.files.Append({.path = "/x/" + job.title});
          pointers.push_back(&job);
        }
        if (Failed(SaveJobs(*registry, jobs.front(), pointers, FindCopyModule))) return false;
      }
      return false;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + random() % 60));
    ASSERT_EQ(kill(child, SIGKILL), 0);
    ASSERT_EQ(test::WaitForChild(child), -1) << "the child failed by itself";

    const auto registry = Registry::Open(path);
    ASSERT_TRUE(registry);
    EXPECT_EQ(registry->Notice(), "");
    const auto jobs = LoadJobs(*registry, Surroundings());
    ASSERT_TRUE(jobs);
    const std::string generation = jobs->defaultJob.title;
    if (generation == "Default Job") continue;  // killed before the first save
    ASSERT_EQ(jobs->saved.size(), 5U + std::stoul(generation) % 20);
    for (const Job& job : jobs->saved) {
      ASSERT_EQ(job.title, generation);
      ASSERT_EQ(job.files.Size(), 50U);
    }
  }
}

TEST(JobStore, PathsOfTheOldSystemAreFound) {
  const test::TemporaryDirectory home;
  home.Write("Musik/Chor/Lied.mid", "x");
  const VolumeTable volumes = VolumeTable::Of(home.Path(), "", {});
  const Job job = JobFromValues(Values({{"SourcePath", R"(C:\MUSIK\chor)"},
                                        {"SourceDrive", "0"},
                                        {"SourceFilelistNum", "2"},
                                        {"SourceListFile 0001", R"(c:\musik\CHOR\LIED.MID)"},
                                        {"SourceListFile 0002", R"(Q:\gone.mid)"},
                                        {"DestFilename", R"(C:\Musik\neu.mid)"}}),
                                1, JobSurroundingsOf(volumes, FindCopyModule, FindAudioCd));
  EXPECT_EQ(job.directory.path, home.File("Musik/Chor"));
  EXPECT_EQ(job.sourceDrive, 0);
  EXPECT_EQ(job.files[0].path, home.File("Musik/Chor/Lied.mid"));
  EXPECT_EQ(job.files[1].path, R"(Q:\gone.mid)");
  EXPECT_EQ(job.destinationName, home.File("Musik/neu.mid"));
}

}  // namespace
}  // namespace ts5
