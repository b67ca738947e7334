// A large job store: 500 jobs with 1,000 files each, saved to a registry file and loaded from it.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <vector>

#include "frame/cd_tracks.h"
#include "frame/job_store.h"
#include "platform/disc/volumes.h"
#include "platform/store/registry.h"

namespace ts5 {
namespace {

constexpr int kJobs = 500;
constexpr int kFiles = 1000;

std::vector<Job> LargeJobs() {
  std::vector<Job> jobs(kJobs);
  for (int j = 0; j < kJobs; ++j) {
    Job& job = jobs[static_cast<std::size_t>(j)];
    job.title = "Job " + std::to_string(j);
    job.sourceDrive = kListModeDrive;
    for (int i = 0; i < kFiles; ++i) {
      job.files.Append({.path = "/home/anna/Musik/Chor/Sammlung " + std::to_string(j) + "/Lied Nummer " +
                                std::to_string(i) + ".mid"});
    }
  }
  return jobs;
}

const FilterModule* NoModule(FilterId) {
  return nullptr;
}

void SaveAndLoadJobs(benchmark::State& state) {
  const std::vector<Job> jobs = LargeJobs();
  std::vector<const Job*> saved;
  for (const Job& job : jobs) saved.push_back(&job);
  const auto directory = std::filesystem::temp_directory_path() / "ts5-job-store-bench";
  const JobSurroundings surroundings = JobSurroundingsOf(VolumeTable::OfThisMachine(), NoModule, FindAudioCd);
  for (auto _ : state) {
    std::filesystem::remove_all(directory);
    const std::string path = directory / "registry.sqlite";
    {
      auto registry = Registry::Open(path);
      if (!registry || Failed(SaveJobs(*registry, Job(), saved, NoModule))) state.SkipWithError("not saved");
    }
    auto registry = Registry::Open(path);
    const auto loaded = registry ? LoadJobs(*registry, surroundings) : Failure(registry.error());
    if (!loaded || loaded->saved.size() != kJobs || loaded->saved.back().files.Size() != kFiles) {
      state.SkipWithError("not loaded");
    }
  }
  std::filesystem::remove_all(directory);
  state.SetItemsProcessed(state.iterations() * kJobs * kFiles);
}
BENCHMARK(SaveAndLoadJobs)->Unit(benchmark::kMillisecond)->Iterations(3)->UseRealTime();

}  // namespace
}  // namespace ts5
