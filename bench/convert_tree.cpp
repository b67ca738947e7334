// A tree of 5,000 real MIDI files: converting it through the run path of the program, beside copying it with
// the same staging and flushing, both through that path and one file after the other. The ratio is to stay
// below 2, the memory below 64 MB.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "frame/item_run.h"
#include "frame/run.h"
#include "midi/midi_converter.h"
#include "peak_memory.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
constexpr std::size_t kFiles = 5000;
constexpr std::size_t kFilesPerDirectory = 100;

struct SilentHost : RunHost {
  void Progress(const RunProgress&) override {}
  void TaskText(std::string_view) override {}
  void StatusText(std::string_view) override {}
  void ProtocolLine(std::string_view) override {}
  Outcome Hit(const SearchHit&) override { return Outcome::Success; }
  void Ask(std::shared_ptr<Question> question) override { question->Reply(Answer::No); }
  void Notice(std::string_view, MessageIcon) override {}
  void StateChanged(RunState) override {}
  void Finished(const RunResult& result) override { converted = result.counts[0]; }
  std::uint32_t converted = 0;
};

// The sources, made once, and a fresh directory for targets.
class Tree {
 public:
  Tree() : root_(fs::temp_directory_path() / ("ts5-bench-" + std::to_string(getpid()))) {
    std::vector<fs::path> originals;
    for (const auto& entry : fs::directory_iterator(TS5_TEST_DATA "/midi")) {
      const auto info = ReadMidiFileHeader(entry.path().string());
      if (info) originals.push_back(entry.path());
    }
    for (std::size_t i = 0; i < kFiles; ++i) {
      const fs::path& original = originals[i % originals.size()];
      const fs::path directory = root_ / "source" / std::to_string(i / kFilesPerDirectory);
      fs::create_directories(directory);
      files_.push_back((directory / (std::to_string(i) + original.extension().string())).string());
      fs::copy_file(original, files_.back());
      bytes_ += fs::file_size(original);
    }
  }
  ~Tree() {
    std::error_code ignored;
    fs::remove_all(root_, ignored);
  }
  [[nodiscard]] const std::vector<std::string>& Files() const { return files_; }
  [[nodiscard]] std::size_t Bytes() const { return bytes_; }
  [[nodiscard]] std::string FreshTarget() const {
    fs::remove_all(root_ / "target");
    fs::create_directories(root_ / "target");
    return (root_ / "target").string();
  }

 private:
  fs::path root_;
  std::vector<std::string> files_;
  std::size_t bytes_ = 0;
};

std::uint32_t RunOver(const Tree& tree, const FilterModule& module) {
  Job job;
  job.sourceDrive = kListModeDrive;
  job.filter = module.id;
  job.parameters = LoadParameters(&module, {});
  for (const std::string& file : tree.Files()) job.files.Append({.path = file});
  const DestinationRules rules{.sourceDirectory = false, .directory = tree.FreshTarget(), .useSuffix = false};
  const auto host = std::make_shared<SilentHost>();
  RunSetup setup;
  setup.job = job;
  setup.destination = rules;
  Run run(std::move(setup), module, job.run.Shared(), host);
  module.run(run);
  run.Finish();
  return host->converted;
}

// The same path with nothing to do but copying.
FilterModule CopyModule() {
  FilterModule module = MidiConverterModule();
  module.run = [](Run& run) {
    ItemFilter filter;
    filter.independent = true;
    filter.convert = [](ItemWork& work) {
      const auto file = ReadFile(work.source);
      return file ? work.target.Write(*file) : file.error();
    };
    RunItems(run, filter);
  };
  return module;
}

// Container and time base of every file change.
FilterModule ConvertModule() {
  FilterModule module = MidiConverterModule();
  module.create = [] {
    auto parameters = std::make_unique<ConverterParameters>();
    parameters->changeFormat = true;
    parameters->changeTimeBase = true;
    parameters->timeBaseIndex = 14;
    return parameters;
  };
  return module;
}

std::uint32_t CopyOneByOne(const Tree& tree) {
  const std::string target = tree.FreshTarget() + "/";
  std::uint32_t copied = 0;
  for (const std::string& source : tree.Files()) {
    const auto file = ReadFile(source);
    if (file && Succeeded(WriteFile(target + fs::path(source).filename().string(), *file))) ++copied;
  }
  return copied;
}

template <typename Work>
double Seconds(Work work, double& files) {
  const auto start = std::chrono::steady_clock::now();
  files = static_cast<double>(work());
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ConvertTree(benchmark::State& state) {
  const Tree tree;
  for (auto _ : state) {
    double files = 0;
    const double oneByOne = Seconds([&] { return CopyOneByOne(tree); }, files);
    const double copying = Seconds([&] { return RunOver(tree, CopyModule()); }, files);
    ResetPeakMemory();
    const double converting = Seconds([&] { return RunOver(tree, ConvertModule()); }, files);
    state.SetIterationTime(converting);
    state.counters["converted"] = files;
    state.counters["memory_MB"] = PeakMemory();
    state.counters["copy_s"] = copying;
    state.counters["copy_one_by_one_s"] = oneByOne;
    state.counters["ratio"] = converting / copying;
    state.counters["ratio_one_by_one"] = converting / oneByOne;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * tree.Bytes()));
}
BENCHMARK(ConvertTree)->Iterations(1)->Repetitions(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace ts5
