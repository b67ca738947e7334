#include "frame/job_runner.h"

#include <gtest/gtest.h>

#include "frame/texts.h"
#include "run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::CopyModule;
using test::CopyParameters;
using test::ListJob;
using test::RecordingHost;
using test::ScriptedDialogs;
using test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;

// Modules for a few filters, all of the test's own kind.
class JobRunnerTest : public testing::Test {
 protected:
  JobRunnerTest() {
    for (const FilterId id : {FilterId::MidiConverter, FilterId::MidiToWave, FilterId::MidiPlayer,
                              FilterId::CdBurner, FilterId::MidiSearch}) {
      FilterModule& module = modules_.emplace_back(CopyModule(id));
      module.stop.status = texts::Stopping;
      module.sharesMidiDevice = id != FilterId::MidiToWave;
      module.midiDevice = [](const Job& job) -> std::optional<std::int32_t> {
        const std::int32_t device = As<CopyParameters>(*job.parameters).device;
        return device < 0 ? std::nullopt : std::optional(device);
      };
    }
  }

  const FilterModule* Find(FilterId id) {
    for (const FilterModule& module : modules_) {
      if (module.id == id) return &module;
    }
    return nullptr;
  }
  FilterModule& Module(FilterId id) { return const_cast<FilterModule&>(*Find(id)); }

  // A job of one file that is at work until it is stopped.
  Job BlockingJob(FilterId id, const std::string& name, std::int32_t device = -1) {
    Job job = ListJob({place_.Write(name + ".mid", "block")}, *Find(id));
    job.destinationName = place_.File(name + ".out");
    static_cast<CopyParameters&>(*job.parameters).device = device;
    return job;
  }

  TemporaryDirectory place_;
  std::deque<FilterModule> modules_;
  ScriptedDialogs dialogs_;
  JobRunner runner_{[this](FilterId id) { return Find(id); }};
};

TEST_F(JobRunnerTest, SeveralJobsRunAtOnceAndEachEndsOnce) {
  std::vector<Job> jobs;
  std::vector<std::shared_ptr<RecordingHost>> hosts;
  for (const std::string name : {"a", "b", "c", "d"}) {
    jobs.push_back(BlockingJob(FilterId::MidiConverter, name));
    hosts.push_back(std::make_shared<RecordingHost>());
  }
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    ASSERT_TRUE(runner_.Start(jobs[i], {}, hosts[i], dialogs_));
    EXPECT_EQ(jobs[i].State(), RunState::Running);
  }
  EXPECT_FALSE(runner_.Start(jobs[0], {}, hosts[0], dialogs_)) << "runs already";

  EXPECT_EQ(runner_.Stop(jobs[2]), texts::Stopping);
  (void)runner_.Stop(jobs[2]);  // changes nothing, whether the run has ended by now or not
  ASSERT_TRUE(hosts[2]->WaitForResult());
  EXPECT_TRUE(hosts[2]->results[0].cancelled);
  EXPECT_EQ(jobs[2].State(), RunState::Idle);
  EXPECT_EQ(jobs[1].State(), RunState::Running);

  // The next run of the same job forgets the stop.
  runner_.Wait(jobs[2]);
  place_.Write("c.mid", "ok");
  ASSERT_TRUE(runner_.Start(jobs[2], {}, hosts[2], dialogs_));
  runner_.Wait(jobs[2]);
  ASSERT_EQ(hosts[2]->results.size(), 2U);
  EXPECT_EQ(hosts[2]->results[1].counts[0], 1U);
  EXPECT_EQ(runner_.Stop(jobs[2]), std::nullopt);

  EXPECT_TRUE(runner_.Shutdown());
  for (const auto& host : {hosts[0], hosts[1], hosts[3]}) {
    EXPECT_EQ(host->results.size(), 1U);
    EXPECT_THAT(host->states, ElementsAre(RunState::Idle));
  }
  EXPECT_FALSE(runner_.AnyRunning());
  EXPECT_THAT(dialogs_.told, IsEmpty());
}

TEST_F(JobRunnerTest, RunKeepsItsOwnOptionsAndOutlivesItsJob) {
  const auto host = std::make_shared<RecordingHost>();
  {
    Job job = BlockingJob(FilterId::MidiConverter, "a");
    ASSERT_TRUE(runner_.Start(job, {}, host, dialogs_));
    const std::shared_ptr<JobRun> run = job.run.Shared();
    ASSERT_TRUE(host->WaitFor([&] { return !host->progress.empty(); }));
    job.files.Clear();
    job.parameters = {};
    job.destinationName = place_.File("elsewhere");
    run->cancelRequest = kUserStop;
  }
  ASSERT_TRUE(host->WaitForResult());
  EXPECT_EQ(host->results[0].items.at(0).source, place_.File("a.mid"));
}

TEST_F(JobRunnerTest, WhatKeepsARunFromStarting) {
  const auto host = std::make_shared<RecordingHost>();
  const auto refusal = [&](Job job, const RunRequest& request = {}) {
    dialogs_.told.clear();
    EXPECT_FALSE(runner_.Start(job, request, host, dialogs_));
    EXPECT_EQ(job.State(), RunState::Idle);
    return dialogs_.told.empty() ? std::string() : dialogs_.told.at(0);
  };
  Job job = ListJob({place_.Write("a.mid", "ok")}, *Find(FilterId::MidiConverter));
  EXPECT_EQ(refusal(job), "Legen Sie bitte einen Zieldateinamen fest.");
  job.destinationName = "  ";
  EXPECT_EQ(refusal(job), "Legen Sie bitte einen Zieldateinamen fest.");
  const RunRequest elsewhere{.destination = {.sourceDirectory = false, .directory = place_.File("none")}};
  job.destinationName = "b.out";
  EXPECT_EQ(refusal(job, elsewhere), "Das Zielverzeichnis ist ungültig.\nLegen Sie bitte ein anderes fest.");
  job.destinationName = place_.File("none/b.out");
  EXPECT_EQ(refusal(job, elsewhere), "Das Zielverzeichnis ist ungültig.\nLegen Sie bitte ein anderes fest.");
  job.files.Clear();
  EXPECT_EQ(refusal(job), "Es befinden sich keine Dateien in der freien Dateiliste.");
  job.sourceDrive = 0;
  EXPECT_EQ(refusal(job), "Es sind keine Dateien ausgewählt.");
  job.filter = FilterId::Artworker;
  EXPECT_EQ(refusal(job), "Der Filter \"Artworker\" steht in dieser Installation nicht zur Verfügung.");
  EXPECT_THAT(host->states, IsEmpty());
  EXPECT_THAT(host->results, IsEmpty());
}

TEST_F(JobRunnerTest, MidiDeviceHasOneUser) {
  std::deque<Job> jobs;
  jobs.push_back(BlockingJob(FilterId::MidiPlayer, "p", 3));
  jobs.push_back(BlockingJob(FilterId::MidiToWave, "w", 3));
  jobs.push_back(BlockingJob(FilterId::MidiToWave, "x", 4));
  jobs.push_back(BlockingJob(FilterId::MidiToWave, "y"));  // needs no device
  const auto start = [&](std::size_t i) {
    return runner_.Start(jobs[i], {}, std::make_shared<RecordingHost>(), dialogs_);
  };
  EXPECT_TRUE(start(0));
  EXPECT_FALSE(start(1));
  EXPECT_THAT(dialogs_.told, ElementsAre("Das Midi-Gerät wird bereits von einem anderen Job verwendet."));
  EXPECT_TRUE(start(2));
  EXPECT_TRUE(start(3));
  (void)runner_.Stop(jobs[0]);
  runner_.Wait(jobs[0]);
  EXPECT_TRUE(start(1));
}

TEST_F(JobRunnerTest, BurningBesideOtherRunsIsAskedAbout) {
  dialogs_ = ScriptedDialogs({false, true});
  Job other = BlockingJob(FilterId::MidiConverter, "a");
  Job burner = BlockingJob(FilterId::CdBurner, "b");
  ASSERT_TRUE(runner_.Start(other, {}, std::make_shared<RecordingHost>(), dialogs_));
  EXPECT_FALSE(runner_.Start(burner, {}, std::make_shared<RecordingHost>(), dialogs_));
  EXPECT_TRUE(runner_.Start(burner, {}, std::make_shared<RecordingHost>(), dialogs_));
  EXPECT_EQ(dialogs_.asked.size(), 2U);
  EXPECT_TRUE(runner_.Shutdown());
  EXPECT_FALSE(runner_.Start(other, {}, std::make_shared<RecordingHost>(), dialogs_)) << "after the end";
}

TEST_F(JobRunnerTest, StopRuleSetsItsOwnRequest) {
  Module(FilterId::MidiToWave).stop.request = [](RunState state) {
    return state == RunState::Stopped ? kStopWhileWaiting : kUserStop;
  };
  std::atomic<std::int32_t> seen = 0;
  Module(FilterId::MidiToWave).run = [&seen](ts5::Run& run) {
    run.SetState(RunState::Stopped);
    EXPECT_FALSE(run.Sleep(1h)) << "as soon as it is stopped";
    seen = run.CancelRequest();
  };
  Job job = BlockingJob(FilterId::MidiToWave, "a");
  ASSERT_TRUE(runner_.Start(job, {}, std::make_shared<RecordingHost>(), dialogs_));
  while (job.State() != RunState::Stopped) std::this_thread::sleep_for(1ms);
  (void)runner_.Stop(job);
  runner_.Wait(job);
  EXPECT_EQ(seen, kStopWhileWaiting);
}

TEST_F(JobRunnerTest, ShutdownAnswersQuestionsAndDoesNotHang) {
  Module(FilterId::MidiConverter).run = [](ts5::Run& run) {
    // Takes stops back for as long as it can.
    while (!run.ConfirmStop("Wirklich?")) std::this_thread::sleep_for(1ms);
    EXPECT_EQ(run.Ask({.text = "Und nun?"}), Answer::Cancelled);
    run.AddCode(Outcome::Cancelled);
  };
  Job asking = BlockingJob(FilterId::MidiConverter, "a");
  const auto host = std::make_shared<RecordingHost>();
  ASSERT_TRUE(runner_.Start(asking, {}, host, dialogs_));
  (void)runner_.Stop(asking);
  ASSERT_TRUE(host->WaitForQuestion());
  EXPECT_TRUE(runner_.Shutdown());
  EXPECT_EQ(host->results.size(), 1U);

  // One that waits for a device and sees nothing else.
  struct Device {
    std::mutex mutex;
    std::condition_variable changed;
    bool ready = false;
  };
  const auto device = std::make_shared<Device>();
  const auto deafHost = std::make_shared<RecordingHost>();
  // What a worker that is left behind uses must outlive it.
  static FilterModule deaf;
  deaf = CopyModule();
  deaf.run = [device](ts5::Run&) {
    std::unique_lock lock(device->mutex);
    device->changed.wait(lock, [&] { return device->ready; });
  };
  {
    JobRunner runner([](FilterId) { return &deaf; });
    Job job = BlockingJob(FilterId::MidiConverter, "b");
    ASSERT_TRUE(runner.Start(job, {}, deafHost, dialogs_));
    EXPECT_FALSE(runner.Shutdown(100ms));
  }
  {
    const std::lock_guard lock(device->mutex);
    device->ready = true;
  }
  device->changed.notify_all();
  EXPECT_TRUE(deafHost->WaitForResult());
}

TEST_F(JobRunnerTest, FilterThatThrowsEndsAsAFailure) {
  Module(FilterId::MidiConverter).run = [](ts5::Run&) { throw std::bad_alloc(); };
  Job job = BlockingJob(FilterId::MidiConverter, "a");
  const auto host = std::make_shared<RecordingHost>();
  ASSERT_TRUE(runner_.Start(job, {}, host, dialogs_));
  runner_.Wait(job);
  EXPECT_THAT(host->results.at(0).remarks, ElementsAre("Ein Speicherfehler trat auf."));
  EXPECT_FALSE(host->results.at(0).cancelled);
}

TEST_F(JobRunnerTest, SearchOfSeveralFilesGetsANumberedResultFile) {
  Module(FilterId::MidiSearch).run = [](ts5::Run&) {};
  Job job = ListJob({place_.Write("a.mid", ""), place_.Write("b.mid", "")}, *Find(FilterId::MidiSearch));
  job.files.SelectAll();
  place_.Write("Suchergebnisse001.txt", "");
  ASSERT_TRUE(runner_.Start(job, {}, std::make_shared<RecordingHost>(), dialogs_));
  EXPECT_EQ(job.destinationName, place_.File("Suchergebnisse002.txt"));
}

}  // namespace
}  // namespace ts5
