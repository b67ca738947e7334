// What the tests of disc runs share: a virtual recorder and a virtual CD drive of their own, wave files,
// whole runs.
#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "frame/cd_tracks.h"
#include "frame/run_support.h"
#include "platform/disc/disc_address.h"
#include "platform/disc/recorded_disc.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"
#include "support/wave_bytes.h"

namespace ts5::disc::test {

using namespace ts5::test;  // NOLINT(google-build-using-namespace): the tests' own words

inline std::string Silence(std::size_t sectors) {
  return std::string(sectors * kAudioSectorBytes, '\0');
}
inline std::string Padded(std::string samples) {
  samples.resize((samples.size() + kAudioSectorBytes - 1) / kAudioSectorBytes * kAudioSectorBytes, '\0');
  return samples;
}

class DiscTest : public testing::Test {
 protected:
  std::string Blank(const std::string& name, int minutes = 80, bool rewritable = false) const {
    EXPECT_THAT(InsertBlankDisc(place_.File(name), minutes, rewritable), IsOk());
    return place_.File(name);
  }
  std::string WaveFile(const std::string& name, const std::string& samples) const {
    return place_.Write(name, WaveBytes(samples));
  }
  void Faults(const std::string& json) const { place_.Write("faults.json", json); }

  // A run of the module over files, with "NAME=VALUE" settings.
  struct Order {
    std::vector<std::string> files = {};
    OverwritePolicy overwrite = OverwritePolicy::Replace;
    std::vector<std::uint32_t> pauses = {};
    std::vector<std::pair<std::string, std::string>> settings = {};
    std::string directory = {};  // a drive whose tracks are taken
    std::vector<int> tracks = {};
    std::string target = {};
    std::string source = VirtualCdDirectory();
    std::size_t job = 0;
  };
  RunResult Execute(const FilterModule& module, const Order& order) {
    Job job = ListJob(order.files, module);
    for (std::size_t i = 0; i < order.pauses.size(); ++i) job.files.SetTimes(i, 0, order.pauses[i]);
    if (!order.directory.empty()) {
      job.sourceDrive = 0;
      job.directory.path = order.directory;
      for (const int track : order.tracks) {
        job.directory.names.push_back("Track 0" + std::to_string(track));
        job.directory.indices.push_back(static_cast<std::uint32_t>(track - 1));
      }
    }
    for (const auto& [name, value] : order.settings) {
      const auto field = std::ranges::find(module.fields, name, &ParameterField::name);
      EXPECT_TRUE(field != module.fields.end() && field->set(*job.parameters, value)) << name;
    }
    DestinationRules rules;
    rules.sourceDirectory = false;
    rules.directory = order.target;
    rules.overwrite = order.overwrite;
    RunSetup setup;
    setup.devices.recorder = VirtualRecorderDirectory();
    setup.devices.source = order.source;
    setup.number = order.job;
    return RunJob(job, module, rules, host_, std::move(setup));
  }
  static std::vector<std::uint32_t> Counts(const RunResult& result) {
    return {result.counts.begin(), result.counts.end()};
  }

  test::Home place_;
  std::shared_ptr<RecordingHost> host_ = std::make_shared<RecordingHost>();
};

}  // namespace ts5::disc::test
